// Documents that were updated, before outside witnesses.
#include <gtest/gtest.h>
#include <sorrelin/frame/pdf.h>

#include <string>
#include <vector>

#include "tests/support/dib.h"
#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"

namespace {

test::Block Picture() {
  return test::MakeDib({.width = 2, .height = 2, .bits = 24}, [](LONG, LONG) { return 0x010203u; });
}

DWORD Save(std::string const& name) {
  return pdf_SaveDIBToPDF(name.c_str(), Picture(), "", PDF_COMPRESSION_NONE, 0);
}

TEST(UpdatedDocument, WitnessesFindEveryPage) {
  test::TempDir const dir;
  std::string const name = (dir / "a.pdf").string();
  for (int page = 0; page < 5; ++page) ASSERT_EQ(Save(name), 0u);
  test::ProgramResult const check = test::RunProgram({"qpdf", "--check", name});
  EXPECT_EQ(check.exit_code, 0) << check.out << check.err;
  test::ProgramResult const mutool = test::RunProgram({"mutool", "pages", name});
  EXPECT_NE(mutool.out.find("pagenum=\"5\""), std::string::npos) << mutool.out;
}

TEST(UpdatedDocument, ObjectStreamsOfAnotherProgramAre25AndTheFileStays) {
  test::TempDir const dir;
  std::string const plain = (dir / "plain.pdf").string();
  std::string const name = (dir / "streams.pdf").string();
  ASSERT_EQ(Save(plain), 0u);
  test::RunProgram({"qpdf", "--object-streams=generate", plain, name});
  std::vector<BYTE> const before = test::ReadAll(name);
  ASSERT_NE(std::string(before.begin(), before.end()).find("/ObjStm"), std::string::npos);
  EXPECT_EQ(Save(name), 25u);
  EXPECT_EQ(test::ReadAll(name), before);
}

}  // namespace
