// Documents that promise more than they hold, or are damaged: memory stays small, and nothing is
// touched outside a block, which the sanitizers watch.
#include <gtest/gtest.h>
#include <sorrelin/platform/block.h>
#include <tests/support/environment.h>
#include <tests/support/page_document.h>
#include <tests/support/temp_dir.h>

#include <algorithm>
#include <chrono>
#include <string>

namespace test {
namespace {

// The sanitizers keep a shadow of every block, which is no part of the matter.
#if defined(SORRELIN_SANITIZED)
constexpr bool kMemoryCounts = false;
#else
constexpr bool kMemoryCounts = true;
#endif

void ExpectSmall(size_t peak_before, size_t document_bytes) {
  if (kMemoryCounts) {
    EXPECT_LT(PeakBytes() - peak_before, (size_t{64} << 20) + 4 * document_bytes);
  }
}

struct Hostile {
  char const* name;
  std::string keys;
  std::string data;
  std::string length = {};
};

std::string Shape(std::string const& width, std::string const& height, int bits) {
  return "/Subtype/Image /Width " + width + " /Height " + height + " /BitsPerComponent " +
         std::to_string(bits) + " ";
}

// Data of an "A" and 29,999 blanks, directly before the next object. A search for a key that is not
// there makes the object's last byte a NUL.
TEST(DamagedImage, BlanksAtTheEndOfAnObjectWithoutItsEndAreData) {
  PdfBuilder pdf = OnePage{}.Build();
  size_t const offset = pdf.Size();
  pdf.Text("4 0 obj\n<<" + Shape("100", "100", 8) + "/Length 30000 >>\nstream\nA" +
           std::string(29'999, ' '));
  pdf.Row(4, {1, offset, 0});
  pdf.Object(6, "x");
  PageDocument document(pdf);
  Block const bitmap = document.Load();
  sorrelin::LockedBlock const lock(bitmap.get());
  EXPECT_EQ(std::count(lock.bytes().begin(), lock.bytes().end(), BYTE{' '}), 29'998);
}

class HostileImage : public testing::TestWithParam<Hostile> {};

TEST_P(HostileImage, TakesLittleMemoryAndTime) {
  Hostile const& hostile = GetParam();
  PdfBuilder pdf =
      OnePage{.image = hostile.keys, .data = hostile.data, .length = hostile.length}.Build();
  PageDocument document(pdf);
  size_t const before = PeakBytes();
  auto const start = std::chrono::steady_clock::now();
  Block const bitmap = document.Load();
  ExpectSmall(before, hostile.data.size());
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

INSTANTIATE_TEST_SUITE_P(
    Document, HostileImage,
    testing::Values(
        Hostile{"RawOfAGigabyte", Shape("30000", "30000", 8), "abc"},
        Hostile{"RawBilevelOf4GiB", Shape("180000", "180000", 1), "abc"},
        Hostile{"RawPast4GiB", Shape("2147483647", "2147483647", 8), "abc"},
        Hostile{"LengthOf4GB", Shape("8", "8", 1), "abc", "4000000000"},
        Hostile{"LengthOf4GBOfFlate", Shape("8", "8", 1) + "/Filter/FlateDecode", Deflate("abc"),
                "4000000000"},
        Hostile{"LengthOf4GBOfCcitt", Shape("8", "8", 1) + "/Filter/CCITTFaxDecode", "abc",
                "4000000000"},
        Hostile{"LengthOf4GBOfJpeg", Shape("8", "8", 8) + "/Filter/DCTDecode",
                "\xFF\xD8\xFF\xE0\x7F\xFF", "4000000000"},
        Hostile{"FlateOfAGigabyte", Shape("30000", "30000", 8) + "/Filter/FlateDecode",
                Deflate("abc")},
        Hostile{"FlateBombBehindASmallPicture", Shape("10", "10", 8) + "/Filter/FlateDecode",
                Deflate(std::string(20000000, 'x'))},
        Hostile{"RunLengthOfAGigabyte", Shape("30000", "30000", 8) + "/Filter/RunLengthDecode",
                "\x81z"},
        Hostile{"RunLengthThatIsNeverExhausted",
                Shape("30000", "30000", 1) + "/Filter/RunLengthDecode", "\x05z"},
        Hostile{"CcittOfAGigabyte", Shape("30000", "250000", 1) + "/Filter/CCITTFaxDecode", "abc"},
        Hostile{"CcittOfManyRows", Shape("8", "500000000", 1) + "/Filter/CCITTFaxDecode", "abc"},
        Hostile{"PaletteOfAGigabyte",
                Shape("8", "8", 8) + "/ColorSpace [/Indexed /DeviceRGB 268435454 4 0 R ]", "abc"}),
    [](auto const& hostile) { return std::string(hostile.param.name); });

TEST(HostileContent, BombIsNotUnpackedInMemory) {
  OnePage page;
  page.page += " /Contents 7 0 R";
  PdfBuilder pdf = page.Build();
  std::string text;
  while (text.size() < 30000000) text += "q 1 0 0 1 0 0 cm\n";
  std::string packed = Deflate(text);
  // The text is read up to ten times what is coded: the rest of the data are garbage after it.
  packed += std::string(3000000, '%');
  pdf.Stream(7, "/Filter/FlateDecode", packed);
  PageDocument document(pdf);
  size_t const before = PeakBytes();
  EXPECT_NE(document.Load().get(), nullptr);
  ExpectSmall(before, packed.size());
}

TEST(HostileContent, EachByteOfAnImageIsReadFromTheFileAtMostTwice) {
  size_t const bytes = 4000000;
  PdfBuilder pdf =
      OnePage{.image = Shape("4000", "1000", 8), .data = std::string(bytes, 'x')}.Build();
  pdf.Classic();
  TempDir temp;
  WriteAll(temp / "a.pdf", pdf.Document());
  auto const session = std::make_unique<CCreatePDF>();
  ASSERT_EQ(session->OpenPDFFile((temp / "a.pdf").string().c_str()), 1);
  uint64_t const before = BytesRead();
  Block const bitmap(session->LoadImageFromPDF(0));
  EXPECT_LE(BytesRead() - before, 2 * bytes + 200000);
  session->ClosePDFFile();
}

}  // namespace
}  // namespace test
