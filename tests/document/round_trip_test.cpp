// What the library wrote comes back: pixels, colours, resolution and strings, from files and from
// memory.
#include <gtest/gtest.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/platform/wide_string.h>
#include <tests/support/dib_content.h>
#include <tests/support/temp_dir.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace test {
namespace {

using sorrelin::ToWide;
using sorrelin::WideString;

enum class Target { kMemory, kFile };

WCHAR const* LibraryFor(DWORD compression) {
  return compression == PDF_COMPRESSION_JPEG ? SORRELIN_TEXT("Rennick.dll")
                                             : SORRELIN_TEXT("Cadwick.dll");
}

// A document that is written by one session and read by another.
class RoundTrip {
 public:
  explicit RoundTrip(Target target = Target::kMemory) : target_(target) {
    if (target_ == Target::kFile) file_.emplace();
  }
  ~RoundTrip() {
    reader_->ClosePDFFile();
    writer_->ClosePDFFile();
    pdf_FreePDFInMemory(reinterpret_cast<void*>(data_));
  }
  RoundTrip(RoundTrip const&) = delete;
  RoundTrip& operator=(RoundTrip const&) = delete;

  CCreatePDF& writer() { return *writer_; }
  CCreatePDF& reader() { return *reader_; }

  void Create() {
    EXPECT_EQ(target_ == Target::kFile ? writer_->CreatePDFW(Path().c_str())
                                       : writer_->CreatePDFInMemory(0, 0),
              1);
  }
  void Add(Block const& dib, DWORD compression, int quality = 90) {
    EXPECT_EQ(writer_->SaveDIBAsColorPDFPageW(dib, LibraryFor(compression), compression, quality),
              1)
        << writer_->PDF_GetLastError();
  }
  void FinishAndOpen() {
    if (target_ == Target::kFile) {
      EXPECT_EQ(writer_->FinishPDF(), 1);
      EXPECT_EQ(reader_->OpenPDFFileW(Path().c_str()), 1);
    } else {
      DWORD size = 0;
      EXPECT_EQ(writer_->FinishPDFInMemory(&data_, &size), 1);
      EXPECT_EQ(reader_->OpenPDFFileInMemory(data_, size), 1);
    }
  }
  DibContent Load(DWORD page = 0) { return ReadDib(Block(reader_->LoadImageFromPDF(page))); }

 private:
  WideString Path() const { return (*file_ / "document.pdf").string<WCHAR>(); }

  Target target_;
  std::optional<TempDir> file_;
  int64_t data_ = 0;
  std::unique_ptr<CCreatePDF> writer_ = std::make_unique<CCreatePDF>();
  std::unique_ptr<CCreatePDF> reader_ = std::make_unique<CCreatePDF>();
};

// 0xRRGGBB of a pixel, through the colour table where there is one.
DWORD ColourAt(DibContent const& dib, size_t x, size_t y) {
  DWORD const value = dib.Pixel(x, y);
  if (dib.header.biBitCount == 24) return value;
  BYTE const* const entry = &dib.table[4 * value];
  return static_cast<DWORD>(entry[2] << 16 | entry[1] << 8 | entry[0]);
}

void ExpectSameColours(DibContent const& actual, DibContent const& expected) {
  ASSERT_EQ(actual.header.biBitCount, expected.header.biBitCount);
  ASSERT_EQ(actual.header.biWidth, expected.header.biWidth);
  ASSERT_EQ(actual.header.biHeight, expected.header.biHeight);
  for (size_t y = 0; y < expected.rows.size(); ++y) {
    for (size_t x = 0; x < static_cast<size_t>(expected.header.biWidth); ++x) {
      ASSERT_EQ(ColourAt(actual, x, y), ColourAt(expected, x, y)) << x << ' ' << y;
    }
  }
}

std::vector<RGBQUAD> Rainbow() {
  std::vector<RGBQUAD> palette;
  for (int i = 0; i < 256; ++i) {
    palette.push_back(
        {static_cast<BYTE>(i * 5), static_cast<BYTE>(255 - i), static_cast<BYTE>(i * 3 + 1), 0});
  }
  return palette;
}

// A pattern whose first pixel begins with no delimiter in any depth: a raw stream that begins with
// one would lose it.
Block Pattern(LONG width, LONG height, WORD bits, std::vector<RGBQUAD> palette = {},
              LONG per_metre = 2835) {
  DibSpec const spec{.width = width,
                     .height = height,
                     .bits = bits,
                     .x_per_metre = per_metre,
                     .y_per_metre = per_metre,
                     .palette = std::move(palette)};
  return MakeDib(spec, [bits](LONG x, LONG y) -> DWORD {
    DWORD const n = static_cast<DWORD>(x * 31 + y * 17);
    if (bits == 1) return (x == 0 && y == 0) || n % 7 < 3;
    if (bits == 8) return x == 0 && y == 0 ? 200 : n * 7 / 3 % 256;
    return x == 0 && y == 0 ? 0xC80102 : n * 2654435761u >> 8;
  });
}

struct Coding {
  WORD bits;
  DWORD compression;
  char const* name;
};

class RoundTripOf : public testing::TestWithParam<Coding> {};

// Kept: data that begin with a delimiter lose it. Only the coder decides that for CCITT data; all
// other patterns begin with something else.
bool BeginsWithDelimiter(CCreatePDF& session, Block const& dib, Coding const& coding) {
  DWORD size = 0;
  Block const data(session.ConvertDIB2PDFImageW(dib, size, coding.compression,
                                                LibraryFor(coding.compression), -1));
  return session.IsDelimiter(static_cast<char>(data.Content(1)[0])) != 0;
}

// Widths 1 to 70, a page each.
TEST_P(RoundTripOf, EveryWidthKeepsItsPixels) {
  Coding const& coding = GetParam();
  for (LONG const height : {1, 3, 17}) {
    RoundTrip document;
    document.Create();
    for (LONG width = 1; width <= 70; ++width) {
      document.Add(Pattern(width, height, coding.bits), coding.compression);
    }
    document.FinishAndOpen();
    ASSERT_EQ(document.reader().GetNumberOfPages(), 70u);
    for (LONG width = 1; width <= 70; ++width) {
      SCOPED_TRACE(testing::Message() << width << " x " << height);
      Block const original = Pattern(width, height, coding.bits);
      if (BeginsWithDelimiter(document.writer(), original, coding)) {
        EXPECT_TRUE(coding.compression == PDF_COMPRESSION_CCITT && width == 3);
        continue;
      }
      ExpectSameColours(document.Load(static_cast<DWORD>(width - 1)), ReadDib(original));
    }
  }
}

TEST_P(RoundTripOf, FileKeepsItsPixelsLikeMemory) {
  Coding const& coding = GetParam();
  for (Target const target : {Target::kMemory, Target::kFile}) {
    RoundTrip document(target);
    document.Create();
    document.Add(Pattern(333, 211, coding.bits), coding.compression);
    document.Add(Pattern(50, 60, coding.bits), coding.compression);
    document.FinishAndOpen();
    ExpectSameColours(document.Load(1), ReadDib(Pattern(50, 60, coding.bits)));
    ExpectSameColours(document.Load(0), ReadDib(Pattern(333, 211, coding.bits)));
  }
}

INSTANTIATE_TEST_SUITE_P(Exact, RoundTripOf,
                         testing::Values(Coding{1, PDF_COMPRESSION_NONE, "RawBilevel"},
                                         Coding{1, PDF_COMPRESSION_FLATE, "FlateBilevel"},
                                         Coding{1, PDF_COMPRESSION_CCITT, "CcittBilevel"},
                                         Coding{8, PDF_COMPRESSION_NONE, "RawIndexed"},
                                         Coding{8, PDF_COMPRESSION_FLATE, "FlateIndexed"},
                                         Coding{8, PDF_COMPRESSION_RUN_LENGTH, "RunLengthIndexed"},
                                         Coding{24, PDF_COMPRESSION_NONE, "RawColour"},
                                         Coding{24, PDF_COMPRESSION_FLATE, "FlateColour"}),
                         [](auto const& coding) { return std::string(coding.param.name); });

TEST(RoundTripColours, BilevelPictureKeepsItsColoursInEitherOrder) {
  for (DWORD const compression :
       {PDF_COMPRESSION_NONE, PDF_COMPRESSION_FLATE, PDF_COMPRESSION_CCITT}) {
    for (auto const& palette : {std::vector{kBlack, kWhite}, std::vector{kWhite, kBlack}}) {
      Block const original = Pattern(50, 40, 1, palette);
      RoundTrip document;
      document.Create();
      document.Add(original, compression);
      document.FinishAndOpen();
      ExpectSameColours(document.Load(), ReadDib(original));
    }
  }
}

TEST(RoundTripColours, RawAndFlateKeepTheBitsToo) {
  for (DWORD const compression : {PDF_COMPRESSION_NONE, PDF_COMPRESSION_FLATE}) {
    Block const original = Pattern(50, 40, 1, {kWhite, kBlack});
    RoundTrip document;
    document.Create();
    document.Add(original, compression);
    document.FinishAndOpen();
    EXPECT_EQ(document.Load().rows, ReadDib(original).rows);
  }
}

TEST(RoundTripColours, IndexedPictureKeepsItsPalette) {
  for (DWORD const compression :
       {PDF_COMPRESSION_NONE, PDF_COMPRESSION_FLATE, PDF_COMPRESSION_RUN_LENGTH}) {
    Block const original = Pattern(60, 50, 8, Rainbow());
    RoundTrip document;
    document.Create();
    document.Add(original, compression);
    document.FinishAndOpen();
    DibContent const dib = document.Load();
    EXPECT_EQ(dib.table, ReadDib(original).table);
    ExpectSameColours(dib, ReadDib(original));
  }
}

// The rows come after 16 colours, and the lookup stream has 48 bytes.
TEST(RoundTripColours, PaletteOf16ColoursIsKeptAsFarAsItGoes) {
  std::vector<RGBQUAD> palette = Rainbow();
  palette.resize(16);
  DibSpec const spec{.width = 9, .height = 5, .bits = 8, .palette = palette, .colors_used = 16};
  Block const original =
      MakeDib(spec, [](LONG x, LONG y) -> DWORD { return static_cast<DWORD>(3 + x + y) % 10; });
  RoundTrip document;
  document.Create();
  document.Add(original, PDF_COMPRESSION_FLATE);
  document.FinishAndOpen();
  DibContent const dib = document.Load();
  for (size_t y = 0; y < 5; ++y) {
    for (size_t x = 0; x < 9; ++x) {
      RGBQUAD const& colour = palette[(3 + x + y) % 10];
      EXPECT_EQ(ColourAt(dib, x, y),
                static_cast<DWORD>(colour.rgbRed << 16 | colour.rgbGreen << 8 | colour.rgbBlue));
    }
  }
}

Block Gradient(WORD bits) {
  return MakeDib({.width = 64, .height = 48, .bits = bits}, [bits](LONG x, LONG y) -> DWORD {
    DWORD const across = static_cast<DWORD>(x * 3);
    DWORD const down = static_cast<DWORD>(y * 4);
    return bits == 8 ? (across + down) / 2 : across << 16 | down << 8 | 90;
  });
}

TEST(RoundTripJpeg, ColourPictureComesBackWithinTheLoss) {
  RoundTrip document;
  document.Create();
  document.Add(Gradient(24), PDF_COMPRESSION_JPEG, 95);
  document.FinishAndOpen();
  DibContent const dib = document.Load();
  DibContent const original = ReadDib(Gradient(24));
  ASSERT_EQ(dib.header.biBitCount, 24);
  for (size_t y = 0; y < 48; ++y) {
    for (size_t i = 0; i < size_t{64} * 3; ++i) {
      EXPECT_LE(std::abs(dib.rows[y][i] - original.rows[y][i]), 8) << i << ' ' << y;
    }
  }
}

// The sibling codes the indices and gives them back as greys; the palette is not in the file.
TEST(RoundTripJpeg, IndexedPictureComesBackAsItsIndices) {
  RoundTrip document;
  document.Create();
  document.Add(Gradient(8), PDF_COMPRESSION_JPEG, 95);
  document.FinishAndOpen();
  DibContent const dib = document.Load();
  DibContent const original = ReadDib(Gradient(8));
  ASSERT_EQ(dib.header.biBitCount, 8);
  for (size_t y = 0; y < 48; ++y) {
    for (size_t x = 0; x < 64; ++x) {
      EXPECT_LE(std::abs(dib.rows[y][x] - original.rows[y][x]), 8) << x << ' ' << y;
    }
  }
}

// Sizes in points are whole, and a metre has 2834 of them: points = pixels * 72 / dpi + 0.5 cut to
// a whole number, result = pixels * 2834 / points cut to a whole number.
TEST(RoundTripResolution, ComesBackWithinTheRoundingOfThePage) {
  struct {
    LONG width, height, x_per_metre, y_per_metre, x_back, y_back;
  } const cases[] = {
      {1700, 2200, 7874, 7874, 7872, 7872},  // 200 dpi: 612 by 792 points
      {100, 100, 2835, 2835, 2834, 2834},    // 72 dpi: 100 points
      {300, 150, 11811, 5906, 11808, 5904},  // 300 and 150 dpi: 72 points
      {77, 33, 3937, 3937, 3967, 3896},      // 100 dpi: 55 and 24 points
      {96, 96, 0, 0, 3778, 3778},            // none is 96 dpi: 72 points
      {96, 96, 0, 3780, 3778, 3778},         // one counts for both
  };
  for (auto const& c : cases) {
    DibSpec const spec{.width = c.width,
                       .height = c.height,
                       .bits = 1,
                       .x_per_metre = c.x_per_metre,
                       .y_per_metre = c.y_per_metre};
    RoundTrip document;
    document.Create();
    document.Add(MakeDib(spec, [](LONG, LONG) { return 1; }), PDF_COMPRESSION_FLATE);
    document.FinishAndOpen();
    DibContent const dib = document.Load();
    EXPECT_EQ(dib.header.biXPelsPerMeter, c.x_back) << c.width;
    EXPECT_EQ(dib.header.biYPelsPerMeter, c.y_back) << c.width;
  }
}

// Kept: leading delimiters of the data are taken for the end of the keyword's line.
TEST(RoundTripLoss, RawPictureThatBeginsWithABlankIsShiftedByAByte) {
  Block const original = MakeDib({.width = 4, .height = 2, .bits = 8}, [](LONG x, LONG y) {
    return x == 0 && y == 0 ? DWORD{' '} : static_cast<DWORD>(100 + x + 10 * y);
  });
  RoundTrip document;
  document.Create();
  document.Add(original, PDF_COMPRESSION_NONE);
  document.FinishAndOpen();
  DibContent const dib = document.Load();
  EXPECT_EQ(dib.rows[0], (Bytes{101, 102, 103, 110}));
  EXPECT_EQ(dib.rows[1], (Bytes{111, 112, 113, '>'}));  // the byte that the writer puts after data
}

// A first row of 29 white pixels is coded as 001 00000010: the first byte is a blank.
TEST(RoundTripLoss, Group4PictureWhoseDataBeginWithABlankLosesThatByte) {
  Block const original = MakeDib({.width = 40, .height = 3, .bits = 1}, [](LONG x, LONG y) {
    return static_cast<DWORD>(y > 0 || x < 29);
  });
  RoundTrip document;
  document.Create();
  document.Add(original, PDF_COMPRESSION_CCITT);
  document.FinishAndOpen();

  DWORD size = 0;
  Block const coded(document.writer().ConvertDIB2CcittPDFImageW(original, size,
                                                                LibraryFor(PDF_COMPRESSION_CCITT)));
  Bytes data = coded.Content(size);
  ASSERT_EQ(data[0], ' ');
  for (char const behind : {'>', '\n', 'e'}) data.push_back(static_cast<BYTE>(behind));
  data.erase(data.begin());
  Block const stripped(document.reader().CreateDIBFromCCITTData(MakeBlock(data), 40, 3));
  Block const loaded(document.reader().LoadImageFromPDF(0));
  ASSERT_EQ(loaded.get() == nullptr, stripped.get() == nullptr);
  if (loaded.get() != nullptr) {
    EXPECT_EQ(ReadDib(loaded).rows, ReadDib(stripped).rows);
    EXPECT_NE(ReadDib(loaded).rows, ReadDib(original).rows);
  }
}

WideString Text(int (CCreatePDF::*get)(WCHAR*, DWORD*), CCreatePDF& session) {
  WCHAR buffer[256] = {};
  DWORD size = 256;
  EXPECT_EQ((session.*get)(buffer, &size), 1);
  return buffer;
}

TEST(RoundTripStrings, InformationStringsComeBack) {
  for (Target const target : {Target::kMemory, Target::kFile}) {
    RoundTrip document(target);
    document.writer().SetTitleW(SORRELIN_TEXT("A (round) trip \\ \x00E4\x20AC"));
    document.writer().SetAuthorW(SORRELIN_TEXT("Author"));
    document.writer().SetSubjectW(SORRELIN_TEXT("\x0416\x0436"));
    document.writer().SetKeywordsW(SORRELIN_TEXT("one, two"));
    document.Create();
    document.Add(Pattern(5, 5, 1), PDF_COMPRESSION_FLATE);
    document.FinishAndOpen();
    CCreatePDF& reader = document.reader();
    EXPECT_EQ(Text(&CCreatePDF::GetTitleW, reader),
              SORRELIN_TEXT("A (round) trip \\ \x00E4\x20AC"));
    EXPECT_EQ(Text(&CCreatePDF::GetAuthorW, reader), SORRELIN_TEXT("Author"));
    EXPECT_EQ(Text(&CCreatePDF::GetSubjectW, reader), SORRELIN_TEXT("\x0416\x0436"));
    EXPECT_EQ(Text(&CCreatePDF::GetKeywordsW, reader), SORRELIN_TEXT("one, two"));
  }
}

}  // namespace
}  // namespace test
