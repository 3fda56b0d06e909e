// libjpeg's error manager.
#include <jerror.h>
#include <siblings/rennick/jpeg_failure.h>

#include <type_traits>

namespace sorrelin::rennick {
namespace {

// Warnings that leave every pixel as it was coded.
bool IsHarmless(int message) {
  switch (message) {
    case JWRN_ADOBE_XFORM:
    case JWRN_BOGUS_ICC:
    case JWRN_EXTRANEOUS_DATA:
    case JWRN_JFIF_MAJOR:
    case JWRN_NOT_SEQUENTIAL:
      return true;
    default:
      return false;
  }
}

}  // namespace

JpegFailure::JpegFailure() : manager_{}, jump_{} {
  static_assert(std::is_standard_layout_v<JpegFailure>);
  jpeg_std_error(&manager_);
  manager_.error_exit = Exit;
  manager_.emit_message = Emit;
  manager_.output_message = Print;
}

bool JpegFailure::Attempt(void (*work)(void*), void* argument) {
  if (setjmp(jump_) != 0) return false;
  work(argument);
  return true;
}

bool JpegFailure::OutOfMemory() const { return manager_.msg_code == JERR_OUT_OF_MEMORY; }

void JpegFailure::Exit(j_common_ptr coder) {
  std::longjmp(reinterpret_cast<JpegFailure*>(coder->err)->jump_, 1);
}

void JpegFailure::Emit(j_common_ptr coder, int level) {
  bool const warning = level < 0;
  if (warning && !IsHarmless(coder->err->msg_code)) Exit(coder);
}

}  // namespace sorrelin::rennick
