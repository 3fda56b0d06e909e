// The file of a document, beside libqpdf's own reader of files.
#include "tools/documents/document_source.h"

#include <gtest/gtest.h>

#include <qpdf/FileInputSource.hh>
#include <qpdf/QPDFExc.hh>
#include <random>
#include <stdexcept>

#include "tests/support/temp_dir.h"

namespace sorrelin::tool {
namespace {

class DocumentSourceTest : public ::testing::Test {
 protected:
  // Short lines and long ones, across the ends of windows.
  void SetUp() override {
    std::minstd_rand random(3);
    std::vector<BYTE> bytes(100'000);
    for (BYTE& byte : bytes) byte = random() % 3000 == 0 ? '\r' : random() % 2000 == 0 ? '\n' : 'x';
    for (size_t i = 70'000; i < 70'050; ++i) bytes[i] = i % 2 == 0 ? '\r' : '\n';
    test::WriteAll(directory_ / "a", bytes);
  }
  std::string Name() const { return (directory_ / "a").string(); }

  test::TempDir directory_;
};

TEST_F(DocumentSourceTest, ReadsAsLibqpdfsOwnDoes) {
  DocumentSource ours(Name());
  FileInputSource theirs(Name().c_str());
  std::minstd_rand random(5);
  for (int i = 0; i < 3000; ++i) {
    auto const place = static_cast<qpdf_offset_t>(random() % 100'200);
    switch (random() % 4) {
      case 0:
        ours.seek(place, SEEK_SET);
        theirs.seek(place, SEEK_SET);
        break;
      case 1:
        ours.seek(-place % 100'001, SEEK_END);
        theirs.seek(-place % 100'001, SEEK_END);
        break;
      case 2:
        EXPECT_EQ(ours.findAndSkipNextEOL(), theirs.findAndSkipNextEOL()) << i;
        break;
      default: {
        std::string a(random() % 40'000, '\0'), b = a;
        EXPECT_EQ(ours.read(a.data(), a.size()), theirs.read(b.data(), b.size())) << i;
        EXPECT_EQ(a, b);
        EXPECT_EQ(ours.getLastOffset(), theirs.getLastOffset()) << i;
      }
    }
    ASSERT_EQ(ours.tell(), theirs.tell()) << i;
  }
}

TEST_F(DocumentSourceTest, LastByteCanBePutBack) {
  DocumentSource source(Name());
  source.seek(16'384, SEEK_SET);
  char byte = 0;
  EXPECT_EQ(source.read(&byte, 1), 1u);
  source.unreadCh(byte);
  EXPECT_EQ(source.tell(), 16'384);
}

TEST_F(DocumentSourceTest, WhatIsOutsideThrows) {
  EXPECT_THROW(DocumentSource((directory_ / "none").string()), QPDFExc);
  DocumentSource source(Name());
  EXPECT_THROW(source.seek(-1, SEEK_SET), std::runtime_error);
  EXPECT_THROW(source.seek(-100'001, SEEK_END), std::runtime_error);
  std::filesystem::resize_file(Name(), 10);
  char byte = 0;
  source.seek(50'000, SEEK_SET);
  EXPECT_THROW(source.read(&byte, 1), QPDFExc);
}

}  // namespace
}  // namespace sorrelin::tool
