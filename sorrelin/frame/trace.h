// Trace points: the vocabulary of a diagnostic build. The texts carry format fields, and no values
// are passed with them. Nothing is traced.
#ifndef SORRELIN_FRAME_TRACE_H_
#define SORRELIN_FRAME_TRACE_H_

#include <sorrelin/platform/types.h>

namespace sorrelin {

inline void Trace(WCHAR const*) {}

}  // namespace sorrelin

#endif  // SORRELIN_FRAME_TRACE_H_
