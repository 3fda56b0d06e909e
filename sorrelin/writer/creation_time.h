// The creation date of a document. Not exported from the shared library.
#ifndef SORRELIN_WRITER_CREATION_TIME_H_
#define SORRELIN_WRITER_CREATION_TIME_H_

#include <sorrelin/platform/process.h>

class CCreatePDF;

namespace sorrelin {

// The session's next document has this creation date instead of the time of its creation. Call it
// before the create call, which writes it.
void SetCreationTime(CCreatePDF& session, SYSTEMTIME const& time);

}  // namespace sorrelin

#endif  // SORRELIN_WRITER_CREATION_TIME_H_
