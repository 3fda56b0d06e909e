// Objects that are written to a file which takes only so many bytes.
#ifndef TESTS_SUPPORT_SHORT_FILE_H_
#define TESTS_SUPPORT_SHORT_FILE_H_

#include <gtest/gtest.h>
#include <sorrelin/frame/session.h>

#include <filesystem>
#include <memory>

#include "tests/support/environment.h"
#include "tests/support/temp_dir.h"

namespace test {

// Writes an object, or a few, and returns the result of that.
using Create = DWORD (*)(CCreatePDF&);

// What `create` gives at the start of a file of at most `bytes` bytes; number 1 is reserved for the
// pages root.
class ObjectInAShortFile {
 public:
  explicit ObjectInAShortFile(Create create, size_t bytes = 4096) {
    session_->CreatePDFFile((dir_ / "a.pdf").string().c_str());
    session_->ReservePagesRootObject();
    session_->PDF_SetLastError(PDF_ERROR_NONE);
    FileSizeLimit const limit(bytes);
    result_ = create(*session_);
  }
  ~ObjectInAShortFile() { session_->ClosePDFFile(); }
  ObjectInAShortFile(ObjectInAShortFile const&) = delete;
  ObjectInAShortFile& operator=(ObjectInAShortFile const&) = delete;

  DWORD result() const { return result_; }
  DWORD error() const { return session_->PDF_GetLastError(); }
  size_t Size() const { return std::filesystem::file_size(dir_ / "a.pdf"); }

 private:
  TempDir dir_;
  std::unique_ptr<CCreatePDF> session_ = std::make_unique<CCreatePDF>();
  DWORD result_ = 0;
};

// Wherever the file ends, the result is 0 with code 1.
inline void ExpectEveryWriteToCount(Create create) {
  ObjectInAShortFile const whole(create);
  ASSERT_NE(whole.result(), 0u);
  for (size_t bytes = 0; bytes < whole.Size(); ++bytes) {
    ObjectInAShortFile const cut(create, bytes);
    ASSERT_EQ(cut.result(), 0u) << bytes;
    ASSERT_EQ(cut.error(), 1u) << bytes;
  }
}

}  // namespace test

#endif  // TESTS_SUPPORT_SHORT_FILE_H_
