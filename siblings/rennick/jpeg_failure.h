// The error manager of libjpeg: a jump out of the coder, never an exit or a line on standard
// error. Frames between Attempt's and libjpeg's hold no object with a destructor.
#ifndef SIBLINGS_RENNICK_JPEG_FAILURE_H_
#define SIBLINGS_RENNICK_JPEG_FAILURE_H_

#include <csetjmp>
#include <cstddef>
#include <cstdio>

// libjpeg's headers need the two above before them.
#include <jpeglib.h>

namespace sorrelin::rennick {

class JpegFailure {
 public:
  JpegFailure();
  JpegFailure(JpegFailure const&) = delete;
  JpegFailure& operator=(JpegFailure const&) = delete;

  // For the `err` member of a coder.
  jpeg_error_mgr* manager() { return &manager_; }

  // Calls work(argument). False if libjpeg failed in it, or warned of damage.
  bool Attempt(void (*work)(void*), void* argument);

  bool OutOfMemory() const;

 private:
  [[noreturn]] static void Exit(j_common_ptr coder);
  static void Emit(j_common_ptr coder, int level);
  static void Print(j_common_ptr) {}

  jpeg_error_mgr manager_;  // first: libjpeg hands its address back
  std::jmp_buf jump_;
};

}  // namespace sorrelin::rennick

#endif  // SIBLINGS_RENNICK_JPEG_FAILURE_H_
