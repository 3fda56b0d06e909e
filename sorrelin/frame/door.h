// What every method of the session does around its work: a failed allocation ends here, and the
// outcome of a component becomes the last error and the method's result.
#ifndef SORRELIN_FRAME_DOOR_H_
#define SORRELIN_FRAME_DOOR_H_

#include <sorrelin/frame/session_state.h>
#include <sorrelin/writer/draft.h>
#include <sorrelin/writer/object_writer.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <span>
#include <stdexcept>

namespace sorrelin {

// Runs a method's work on the state. Where memory is short, or a size passes what addresses count,
// the result is the method's failure, a value of 0, with code 10.
template <typename Work>
auto Door(SessionState* state, Work work) -> decltype(work(*state)) {
  if (state != nullptr) {
    try {
      return work(*state);
    } catch (std::bad_alloc const&) {
    } catch (std::length_error const&) {
    }
    state->DropNote();
    state->m_nLastError = PDF_ERROR_MEMORY;
  }
  return decltype(work(*state))();
}

// The same for work that puts bytes through an ObjectWriter. Its result counts unless a write
// failed.
template <typename Work>
DWORD WriterDoor(SessionState* state, Work work) {
  return Door(state, [&](SessionState& open) {
    ObjectWriter out = open.Document().Writer();
    DWORD const result = work(out);
    return open.Take(out.Outcome(result));
  });
}

// The bytes that a caller passes. None has more than there are addresses.
inline std::span<BYTE> CallersBytes(BYTE* data, uint64_t size) {
  return {data, static_cast<size_t>(std::min<uint64_t>(size, SIZE_MAX))};
}

}  // namespace sorrelin

#endif  // SORRELIN_FRAME_DOOR_H_
