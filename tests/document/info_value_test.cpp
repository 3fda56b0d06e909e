// Text string values of a dictionary as UTF-16.
#include <gtest/gtest.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/platform/text.h>
#include <tests/support/scan_buffer.h>
#include <tests/support/session_probe.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

using test::ScanBuffer;

constexpr uint64_t kUnset = 77;

class InfoValue : public testing::Test {
 protected:
  std::unique_ptr<CCreatePDF> const session_ = std::make_unique<CCreatePDF>();

  void SetUp() override { session_->PDF_SetLastError(PDF_ERROR_NONE); }

  // The first `count` units of the value's array.
  std::vector<unsigned> Units(std::string const& value, size_t count) {
    ScanBuffer buffer("<</Title " + value + " >>");
    WCHAR* out = nullptr;
    uint64_t length = kUnset;
    EXPECT_EQ(session_->GetStringValue2W(buffer.data(), buffer.size(), "/Title", &out, &length), 1);
    EXPECT_EQ(length, kUnset);
    if (out == nullptr) return {};
    std::vector<unsigned> const units(out, out + count);
    std::free(out);
    return units;
  }
};

using Expected = std::vector<unsigned>;

TEST_F(InfoValue, PlainText) {
  EXPECT_EQ(Units("(AB)", 3), (Expected{'A', 'B', 0}));
  EXPECT_EQ(Units("()", 1), (Expected{0}));
  EXPECT_EQ(Units("<4142>", 3), (Expected{'A', 'B', 0}));
  EXPECT_EQ(Units("(A\\)\\102)", 4), (Expected{'A', ')', 'B', 0}));
}

TEST_F(InfoValue, BigEndianText) {
  EXPECT_EQ(Units("<FEFF00410042>", 6), (Expected{'A', 'B', 0, 0, 0, 0}));
  EXPECT_EQ(Units("(\\376\\377\\000A\\040\\254)", 3), (Expected{'A', 0x20AC, 0}));
}

TEST_F(InfoValue, OddBigEndianTextTakesTheByteBehind) {
  EXPECT_EQ(Units("<FEFF004142>", 3), (Expected{'A', 0x4200, 0}));
  EXPECT_EQ(Units("<FEFF41>", 2), (Expected{0x4100, 0}));
}

TEST_F(InfoValue, BigEndianTextGoesOnBehindAZeroUnit) {
  EXPECT_EQ(Units("<FEFF004100000042>", 4), (Expected{'A', 0, 'B', 0}));
}

TEST_F(InfoValue, LittleEndianTextEndsAtAZeroUnit) {
  EXPECT_EQ(Units("<FFFE41004200>", 3), (Expected{'A', 'B', 0}));
  EXPECT_EQ(Units("<FFFE410000004200>", 4), (Expected{'A', 0, 0, 0}));
  EXPECT_EQ(Units("<FFFE410042>", 3), (Expected{'A', 'B', 0}));
}

TEST_F(InfoValue, MarkAloneIsPlainText) {
  EXPECT_EQ(Units("<FEFF>", 3), (Expected{0xFE, 0xFF, 0}));
  EXPECT_EQ(Units("<FFFE>", 3), (Expected{0xFF, 0xFE, 0}));
}

TEST_F(InfoValue, Utf8MarkStaysInTheText) {
  EXPECT_EQ(Units("<EFBBBFC3A9>", 3), (Expected{0xFEFF, 0xE9, 0}));
  EXPECT_EQ(Units("<EFBBBF>", 2), (Expected{0xFEFF, 0}));
}

// Bytes that are no UTF-8 are windows-1252 characters, as many as the UTF-8 reading has.
TEST_F(InfoValue, MarkedTextIsReadInTheSystemsCodePageAndCut) {
  std::string const bytes = "\xEF\xBB\xBF\xF0\x9F\x98";
  int const size = static_cast<int>(bytes.size());
  size_t const length =
      static_cast<size_t>(MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, nullptr, 0));
  Expected expected{0xFEFF, 0xF0, 0x178, 0x2DC};
  ASSERT_LE(length, expected.size());
  expected.resize(length);
  expected.push_back(0);
  EXPECT_EQ(Units("<EFBBBFF09F98>", length + 1), expected);
}

TEST_F(InfoValue, MissingKeyAndMissingArgumentsGiveZero) {
  ScanBuffer b("<</Title (AB) >>");
  WCHAR* out = nullptr;
  uint64_t length = 0;
  CCreatePDF& s = *session_;
  EXPECT_EQ(s.GetStringValue2W(b.data(), b.size(), "/Author", &out, &length), 0);
  EXPECT_EQ(s.GetStringValue2W(nullptr, b.size(), "/Title", &out, &length), 0);
  EXPECT_EQ(s.GetStringValue2W(b.data(), 0, "/Title", &out, &length), 0);
  EXPECT_EQ(s.GetStringValue2W(b.data(), b.size(), nullptr, &out, &length), 0);
  EXPECT_EQ(s.GetStringValue2W(b.data(), b.size(), "/Title", nullptr, &length), 0);
  EXPECT_EQ(s.GetStringValue2W(b.data(), b.size(), "/Title", &out, nullptr), 0);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(s.PDF_GetLastError(), DWORD{PDF_ERROR_NONE});
}

TEST_F(InfoValue, NeedsTheSideRecord) {
  ScanBuffer b("<</Title (AB) >>");
  WCHAR* out = nullptr;
  uint64_t length = 0;
  auto const reader = SessionProbe::ReaderPointer(*session_);
  SessionProbe::ReaderPointer(*session_) = nullptr;
  EXPECT_EQ(session_->GetStringValue2W(b.data(), b.size(), "/Title", &out, &length), 0);
  SessionProbe::ReaderPointer(*session_) = reader;
}

TEST_F(InfoValue, NarrowFormIsAlwaysEmpty) {
  for (std::string const value : {"(AB)", "<FEFF00410042>", "()"}) {
    ScanBuffer buffer("<</Title " + value + " >>");
    char* out = nullptr;
    uint64_t length = kUnset;
    EXPECT_EQ(session_->GetStringValue2A(buffer.data(), buffer.size(), "/Title", &out, &length), 1);
    EXPECT_STREQ(out, "");
    EXPECT_EQ(length, kUnset);
    std::free(out);
  }
}

TEST_F(InfoValue, NarrowFormFailsWhereTheWideOneDoes) {
  ScanBuffer b("<</Title (AB) >>");
  char* out = nullptr;
  uint64_t length = 0;
  EXPECT_EQ(session_->GetStringValue2A(b.data(), b.size(), "/Author", &out, &length), 0);
  EXPECT_EQ(session_->GetStringValue2A(b.data(), b.size(), "/Title", nullptr, &length), 0);
  EXPECT_EQ(session_->GetStringValue2A(b.data(), b.size(), "/Title", &out, nullptr), 0);
  EXPECT_EQ(out, nullptr);
}

}  // namespace
