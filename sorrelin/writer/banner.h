// The texts by which the library names itself in a document.
#ifndef SORRELIN_WRITER_BANNER_H_
#define SORRELIN_WRITER_BANNER_H_

#include <sorrelin/platform/types.h>
#include <sorrelin/version.h>

namespace sorrelin {

// The build number of the documents' producer, which has no part in the version.
#define SORRELIN_PRODUCER_BUILD 972

#define SORRELIN_TEXT_OF_NUMBER(number) #number
#define SORRELIN_NUMBER(number) SORRELIN_TEXT_OF_NUMBER(number)

#define SORRELIN_CREATOR "PDF Printer Driver, Sorrelin " SORRELIN_SHORT_VERSION

inline constexpr char kNarrowCreator[] = SORRELIN_CREATOR;
inline constexpr char kProducerVersion[] =
    SORRELIN_NUMBER(SORRELIN_VERSION_MAJOR) ", " SORRELIN_NUMBER(
        SORRELIN_VERSION_MINOR) ", " SORRELIN_NUMBER(SORRELIN_VERSION_PATCH) ", " SORRELIN_NUMBER(SORRELIN_PRODUCER_BUILD);

#undef SORRELIN_CREATOR
#undef SORRELIN_NUMBER
#undef SORRELIN_TEXT_OF_NUMBER
#undef SORRELIN_PRODUCER_BUILD

}  // namespace sorrelin

#endif  // SORRELIN_WRITER_BANNER_H_
