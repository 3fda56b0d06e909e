// libjpeg's way out of a failure: a jump back to where the work began, and nothing printed.
#ifndef TOOLS_FORMATS_JPEG_JPEG_ERRORS_H_
#define TOOLS_FORMATS_JPEG_JPEG_ERRORS_H_

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
    state_.damage = "";
    jpeg_std_error(&state_.manager);
    state_.manager.error_exit = [](j_common_ptr info) {
      Keep(info);
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

  // What is wrong with the data, by libjpeg's first message; empty if they are whole.
  char const* damage() const { return state_.damage; }

 private:
  struct State {
    jpeg_error_mgr manager;
    std::jmp_buf jump;
    char const* damage;
  };

  static char const* DamageOf(int code) {
    switch (code) {
      case JWRN_HIT_MARKER:
      case JWRN_JPEG_EOF:
      case JERR_INPUT_EOF:
      case JERR_INPUT_EMPTY:
        return "the data end before the picture does";
      case JWRN_EXTRANEOUS_DATA:
        return "there are data that belong to no part of the picture";
      case JWRN_MUST_RESYNC:
        return "a part of the data is missing";
      case JWRN_BOGUS_PROGRESSION:
        return "its scans do not go together";
      case JWRN_TOO_MUCH_DATA:
        return "the data go on after the end of the picture";
      case JERR_OUT_OF_MEMORY:
        return "its coefficients do not fit into memory";
      default:
        return "its coded data cannot be decoded";
    }
  }

  static void Keep(j_common_ptr info) {
    State& state = *reinterpret_cast<State*>(info->err);
    if (*state.damage == '\0') state.damage = DamageOf(state.manager.msg_code);
  }

  // Counts a warning unless it is about the header only.
  static void CountWarning(j_common_ptr info, int level) {
    int const code = info->err->msg_code;
    bool const harmless = code == JWRN_JFIF_MAJOR || code == JWRN_ADOBE_XFORM;
    if (level >= 0 || harmless) return;
    ++info->err->num_warnings;
    Keep(info);
  }

  State state_{};
};

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_JPEG_JPEG_ERRORS_H_
