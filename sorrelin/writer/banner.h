// The texts by which the library names itself in a document.
#ifndef SORRELIN_WRITER_BANNER_H_
#define SORRELIN_WRITER_BANNER_H_

#include <sorrelin/platform/types.h>

namespace sorrelin {

inline constexpr char kNarrowBanner[] = "Sorrelin 13.1";
inline constexpr char kNarrowCreator[] = "PDF Printer Driver, Sorrelin 13.1";
inline constexpr WCHAR kWideCreator[] = SORRELIN_TEXT("PDF Printer Driver, Sorrelin 13.1");
inline constexpr char kProducerVersion[] = "13, 1, 0, 972";

}  // namespace sorrelin

#endif  // SORRELIN_WRITER_BANNER_H_
