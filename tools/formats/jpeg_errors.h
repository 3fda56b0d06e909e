// libjpeg's way out of a failure: a jump back to where the work began, and nothing printed.
#ifndef TOOLS_FORMATS_JPEG_ERRORS_H_
#define TOOLS_FORMATS_JPEG_ERRORS_H_

// jpeglib.h needs size_t and FILE declared before it.
#include <cstdio>

#include <jerror.h>
#include <jpeglib.h>

#include <csetjmp>

namespace sorrelin::tool {

// The error manager of the decompressors and compressors that take part in one piece of work.
class JpegErrors {
 public:
  JpegErrors() {
    jpeg_std_error(&state_.manager);
    state_.manager.error_exit = [](j_common_ptr info) {
      std::longjmp(reinterpret_cast<State*>(info->err)->jump, 1);
    };
    state_.manager.emit_message = CountWarning;
  }
  JpegErrors(JpegErrors const&) = delete;
  JpegErrors& operator=(JpegErrors const&) = delete;

  // Runs `work`; false if libjpeg gave up. What runs inside has no destructors of its own.
  template <typename Work>
  bool Try(Work work) {
    if (setjmp(state_.jump) != 0) return false;
    work();
    return true;
  }

  jpeg_error_mgr* manager() { return &state_.manager; }

  // Whether data were found damaged.
  bool warned() const { return state_.manager.num_warnings != 0; }

 private:
  struct State {
    jpeg_error_mgr manager;
    std::jmp_buf jump;
  };

  // Counts a warning unless the picture is whole in spite of it.
  static void CountWarning(j_common_ptr info, int level) {
    int const code = info->err->msg_code;
    bool const harmless =
        code == JWRN_EXTRANEOUS_DATA || code == JWRN_JFIF_MAJOR || code == JWRN_ADOBE_XFORM;
    if (level < 0 && !harmless) ++info->err->num_warnings;
  }

  State state_{};
};

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_JPEG_ERRORS_H_
