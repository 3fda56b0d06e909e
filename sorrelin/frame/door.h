// What every method of the session does around its work: a failed allocation ends here.
#ifndef SORRELIN_FRAME_DOOR_H_
#define SORRELIN_FRAME_DOOR_H_

#include <sorrelin/frame/session_state.h>

#include <new>

namespace sorrelin {

// Runs a method's work on the state. Where memory is short the result is the method's failure, a
// value of 0, with code 10.
template <typename Work>
auto Door(SessionState* state, Work work) -> decltype(work(*state)) {
  if (state != nullptr) {
    try {
      return work(*state);
    } catch (std::bad_alloc const&) {
      state->PDF_SetLastError(PDF_ERROR_MEMORY);
    }
  }
  return decltype(work(*state))();
}

}  // namespace sorrelin

#endif  // SORRELIN_FRAME_DOOR_H_
