// Pages of one picture, by program and kind of picture: each comes back as pdfimages gives it, or
// as the library's rules make it, and the program never writes what is not the picture.
#include "tests/foreign/foreign_fixture.h"
#include "tests/support/random_ids.h"

namespace test {
namespace {

using ::testing::HasSubstr;

// What the library makes of a page.
enum class Kind {
  kRight,    // the picture
  kStored,   // rows of the stream's bytes as they inflate: it looks neither at colour spaces nor at
             // predictors, and takes 8 bits without a palette for colour
  kOther,    // another picture of the same size
  kNull,     // none, with an error code or without
  kUnopened  // the document is refused, with an error code
};

struct ByLibrary {
  Kind kind;
  DWORD value;  // bits per pixel, or the error code
};

constexpr ByLibrary Right(DWORD bits) { return {Kind::kRight, bits}; }
constexpr ByLibrary Stored(DWORD bits) { return {Kind::kStored, bits}; }
constexpr ByLibrary Other(DWORD bits) { return {Kind::kOther, bits}; }
constexpr ByLibrary Null(DWORD error) { return {Kind::kNull, error}; }
constexpr ByLibrary Unopened(DWORD error) { return {Kind::kUnopened, error}; }

constexpr char kIsRight[] = "";

struct Row {
  char const* name;
  char const* picture;  // that the document is made of
  char const* command;  // makes out.pdf of the picture $p
  ByLibrary of_library;
  char const* tool;      // why the program refuses the page, or kIsRight
  bool recoded = false;  // the other program has changed the pixels
  int tolerance = 0;     // of the program's pixels, beside that of JPEG
};

void PrintTo(Row const& row, std::ostream* out) { *out << row.command; }

#define IMG2PDF "img2pdf $p -o a.pdf"
#define GS "gs -q -dBATCH -dNOPAUSE -sDEVICE="
#define GS_FLATE                                                                                 \
  GS "pdfwrite -dAutoFilterGrayImages=false -dAutoFilterColorImages=false "                      \
     "-dMaxInlineImageSize=0 -dGrayImageFilter=/FlateEncode -dColorImageFilter=/FlateEncode -o " \
     "out.pdf a.pdf"

constexpr char kSeveral[] = "is made of several pictures";

constexpr Row kImg2pdf[] = {
    {"Group4", "g4.tif", "img2pdf $p -o out.pdf", Right(1), kIsRight},
    {"Strips", "strips.tif", "img2pdf $p -o out.pdf", Right(1), kIsRight},
    // PNG files go in as they are, with their prediction.
    {"Bits", "bits.png", "img2pdf $p -o out.pdf", Stored(1), kIsRight},
    {"Grey", "grey.png", "img2pdf $p -o out.pdf", Stored(24), kIsRight},
    {"Colour", "colour.png", "img2pdf $p -o out.pdf", Stored(24), kIsRight},
    // Rows of 600 bytes have no room for the tags.
    {"EvenColour", "even.png", "img2pdf $p -o out.pdf", Null(27), kIsRight},
    // The palette is a string; the number after it is taken for that of a palette stream.
    {"Palette", "palette.png", "img2pdf $p -o out.pdf", Stored(8), kIsRight},
    {"Palette4", "palette4.png", "img2pdf $p -o out.pdf", Null(0), kIsRight},
    {"Grey16", "grey16.png", "img2pdf $p -o out.pdf", Stored(24), kIsRight, true},
    {"JpegGrey", "grey.jpg", "img2pdf $p -o out.pdf", Right(8), kIsRight},
    {"JpegColour", "colour.jpg", "img2pdf $p -o out.pdf", Right(24), kIsRight},
    {"JpegInks", "inks.jpg", "img2pdf $p -o out.pdf", Other(24), kIsRight, true, 2},
};

constexpr Row kTiff2pdf[] = {
    {"Group4", "g4.tif", "tiff2pdf -o out.pdf $p", Right(1), kIsRight},
    {"Group3", "g3.tif", "tiff2pdf -o out.pdf $p", Right(1), kIsRight},
    {"Strips", "strips.tif", "tiff2pdf -o out.pdf $p", Right(1), kIsRight},
    {"Bits", "bits.tif", "tiff2pdf -n -o out.pdf $p", Right(1), kIsRight},
    {"Grey", "grey.tif", "tiff2pdf -n -o out.pdf $p", Stored(24), kIsRight},
    {"GreyFlate", "grey.tif", "tiff2pdf -z -o out.pdf $p", Stored(24), kIsRight},
    {"GreyJpeg", "grey.tif", "tiff2pdf -j -q 90 -o out.pdf $p", Right(8), kIsRight, true},
    {"Palette", "palette.tif", "tiff2pdf -n -o out.pdf $p", Right(8), kIsRight},
    {"PaletteFlate", "palette.tif", "tiff2pdf -z -o out.pdf $p", Right(8), kIsRight},
    {"Colour", "colour.tif", "tiff2pdf -n -o out.pdf $p", Right(24), kIsRight},
    {"ColourFlate", "colour.tif", "tiff2pdf -z -o out.pdf $p", Right(24), kIsRight},
    {"ColourJpeg", "colour.tif", "tiff2pdf -j -q 90 -o out.pdf $p", Right(24), kIsRight, true},
    // The library gives the first of several.
    {"ColourTiles", "colour.tif", "tiffcp -t -w 64 -l 64 $p t.tif && tiff2pdf -o out.pdf t.tif",
     Right(24), kSeveral, true},
};

constexpr Row kGraphicsMagick[] = {
    {"Group4", "bits.png", "gm convert $p -compress fax out.pdf", Right(1), kIsRight},
    {"Bits", "bits.png", "gm convert $p -compress zip out.pdf", Stored(24), kIsRight},
    {"Grey", "grey.png", "gm convert $p -compress zip out.pdf", Stored(24), kIsRight},
    // The colour space is an object of its own.
    {"Palette", "palette.png", "gm convert $p -compress zip out.pdf", Stored(24), kIsRight},
    {"Colour", "colour.png", "gm convert $p -compress zip out.pdf", Right(24), kIsRight},
    {"JpegGrey", "grey.png", "gm convert $p -compress jpeg out.pdf", Right(8), kIsRight, true},
    {"JpegColour", "colour.jpg", "gm convert $p -compress jpeg out.pdf", Right(24), kIsRight, true},
    {"RunLengthGrey", "grey.png", "gm convert $p -compress rle out.pdf", Other(24), kIsRight},
    {"RunLengthColour", "colour.png", "gm convert $p -compress rle out.pdf", Other(24), kIsRight},
    {"Lzw", "colour.png", "gm convert $p -compress lzw out.pdf", Null(29), kIsRight},
    {"Ascii85", "colour.png", "gm convert $p -compress none out.pdf", Null(29), kIsRight},
};

constexpr Row kGhostscript[] = {
    {"Group4", "g4.tif", IMG2PDF " && " GS_FLATE, Right(1), kIsRight},
    {"Bits", "bits.png", IMG2PDF " && " GS_FLATE, Right(1), kIsRight},
    // A small picture is inside the content that draws it.
    {"InlineBits", "bits.png", IMG2PDF " && " GS "pdfwrite -o out.pdf a.pdf", Null(0), kIsRight},
    {"Grey", "grey.png", IMG2PDF " && " GS_FLATE, Stored(24), kIsRight},
    {"Palette", "palette.png", IMG2PDF " && " GS_FLATE, Stored(24), kIsRight},
    {"Colour", "colour.png", IMG2PDF " && " GS_FLATE, Stored(24), kIsRight},
    {"JpegGrey", "grey.jpg", IMG2PDF " && " GS_FLATE, Right(8), kIsRight},
    {"JpegColour", "colour.jpg", IMG2PDF " && " GS_FLATE, Right(24), kIsRight},
    {"RecodedColour", "colour.png",
     IMG2PDF
     " && " GS
     "pdfwrite -dAutoFilterColorImages=false -dColorImageFilter=/DCTEncode -o out.pdf a.pdf",
     Right(24), kIsRight, true},
    {"PageAsGrey", "colour.png", IMG2PDF " && " GS "pdfimage8 -r72 -o out.pdf a.pdf", Stored(24),
     kIsRight, true},
    {"PageAsColour", "colour.png", IMG2PDF " && " GS "pdfimage24 -r72 -o out.pdf a.pdf", Right(24),
     kIsRight, true},
    {"PageAsInks", "colour.png", IMG2PDF " && " GS "pdfimage32 -r72 -o out.pdf a.pdf", Null(27),
     kIsRight, true, 2},
    {"PageInBands", "colour.png", IMG2PDF " && " GS "pclm -r72 -o out.pdf a.pdf", Right(24),
     kIsRight, true},
};

#define OBJECT_STREAMS IMG2PDF " && qpdf --object-streams=generate a.pdf out.pdf"
#define LINEARISED IMG2PDF " && qpdf --linearize a.pdf out.pdf"
#define BOTH IMG2PDF " && qpdf --object-streams=generate --linearize a.pdf out.pdf"
#define QDF IMG2PDF " && qpdf --qdf a.pdf out.pdf"

constexpr Row kQpdf[] = {
    {"ObjectStreamsGroup4", "g4.tif", OBJECT_STREAMS, Right(1), kIsRight},
    {"ObjectStreamsGrey", "grey.png", OBJECT_STREAMS, Stored(24), kIsRight},
    {"ObjectStreamsPalette", "palette.png", OBJECT_STREAMS, Stored(8), kIsRight},
    {"ObjectStreamsJpegGrey", "grey.jpg", OBJECT_STREAMS, Right(8), kIsRight},
    {"ObjectStreamsJpegColour", "colour.jpg", OBJECT_STREAMS, Right(24), kIsRight},
    {"LinearisedGroup4", "g4.tif", LINEARISED, Right(1), kIsRight},
    {"LinearisedColour", "colour.png", LINEARISED, Stored(24), kIsRight},
    {"LinearisedPalette", "palette.png", LINEARISED, Stored(8), kIsRight},
    {"LinearisedJpegColour", "colour.jpg", LINEARISED, Right(24), kIsRight},
    {"BothGroup4", "g4.tif", BOTH, Right(1), kIsRight},
    {"BothGrey", "grey.png", BOTH, Stored(24), kIsRight},
    {"BothJpegColour", "colour.jpg", BOTH, Right(24), kIsRight},
    // Streams are inflated and their prediction undone.
    {"QdfGroup4", "g4.tif", QDF, Right(1), kIsRight},
    {"QdfBits", "bits.png", QDF, Right(1), kIsRight},
    {"QdfGrey", "grey.png", QDF, Stored(24), kIsRight},
    {"QdfPalette", "palette.png", QDF, Null(0), kIsRight},
    {"QdfColour", "colour.png", QDF, Right(24), kIsRight},
    // The palette stream is deflated now.
    {"DeflatedPalette", "palette.tif", "tiff2pdf -n -o a.pdf $p && qpdf a.pdf out.pdf", Other(8),
     kIsRight},
    {"Version20", "g4.tif", IMG2PDF " && qpdf --force-version=2.0 a.pdf out.pdf", Unopened(25),
     kIsRight},
};

#define MUTOOL_CREATE                                                         \
  "printf '%%%%MediaBox 0 0 203 57\\n%%%%Image Im0 %s\\nq 203 0 0 57 0 0 cm " \
  "/Im0 Do Q\\n' $p >page.txt && mutool create -o out.pdf page.txt"

constexpr Row kMutool[] = {
    {"CreatedBits", "bits.png", MUTOOL_CREATE, Right(1), kIsRight},
    {"CreatedGrey", "grey.png", MUTOOL_CREATE, Stored(24), kIsRight},
    {"CreatedColour", "colour.png", MUTOOL_CREATE, Right(24), kIsRight},
    {"CreatedJpeg", "colour.jpg", MUTOOL_CREATE, Right(24), kIsRight},
    {"ConvertedGroup4", "g4.tif", "mutool convert -o out.pdf $p", Right(1), kIsRight},
    {"ConvertedPalette", "palette.png", "mutool convert -o out.pdf $p", Right(24), kIsRight},
    {"CleanedGroup4", "g4.tif", IMG2PDF " && mutool clean -gggg -z a.pdf out.pdf", Right(1),
     kIsRight},
    {"CleanedGrey", "grey.png", IMG2PDF " && mutool clean -gggg -z a.pdf out.pdf", Stored(24),
     kIsRight},
    {"ExpandedGroup4", "g4.tif", IMG2PDF " && mutool clean -d a.pdf out.pdf", Right(1), kIsRight},
    {"ExpandedGrey", "grey.png", IMG2PDF " && mutool clean -d a.pdf out.pdf", Stored(24), kIsRight},
    {"ExpandedColour", "colour.png", IMG2PDF " && mutool clean -d a.pdf out.pdf", Right(24),
     kIsRight},
    {"ExpandedJpeg", "colour.jpg", IMG2PDF " && mutool clean -d a.pdf out.pdf", Right(24),
     kIsRight},
};

#define SEPARATE UNTIL_IDENTIFIER_IS_PLAIN("pdfseparate a.pdf")

constexpr Row kPoppler[] = {
    {"CairoGroup4", "g4.tif", IMG2PDF " && pdftocairo -pdf a.pdf out.pdf", Right(1), kIsRight},
    {"CairoBits", "bits.png", IMG2PDF " && pdftocairo -pdf a.pdf out.pdf", Right(1), kIsRight},
    {"CairoGrey", "grey.png", IMG2PDF " && pdftocairo -pdf a.pdf out.pdf", Stored(24), kIsRight},
    {"CairoPalette", "palette.png", IMG2PDF " && pdftocairo -pdf a.pdf out.pdf", Right(24),
     kIsRight},
    {"CairoJpegColour", "colour.jpg", IMG2PDF " && pdftocairo -pdf a.pdf out.pdf", Right(24),
     kIsRight},
    {"SeparatedGroup4", "g4.tif", IMG2PDF " && " SEPARATE, Right(1), kIsRight},
    {"SeparatedJpegGrey", "grey.jpg", IMG2PDF " && " SEPARATE, Right(8), kIsRight},
    // The word "stream" ends with CR LF, and the palette is read from the LF on.
    {"SeparatedPalette", "palette.tif", "tiff2pdf -n -o a.pdf $p && " SEPARATE, Other(8), kIsRight},
};

class OnePicture : public ForeignTest, public ::testing::WithParamInterface<Row> {
 protected:
  // Whether the bitmap's rows hold the bytes, one row after the other without padding.
  static bool Holds(DibContent const& bitmap, std::string const& bytes) {
    size_t const row_bytes =
        (static_cast<size_t>(bitmap.header.biWidth) * bitmap.header.biBitCount + 7) / 8;
    for (size_t y = 0; y < bitmap.rows.size(); ++y) {
      Bytes row = bitmap.Row(y, row_bytes);
      for (size_t i = 0; bitmap.header.biBitCount == 24 && i + 2 < row_bytes; i += 3) {
        std::swap(row[i], row[i + 2]);
      }
      for (size_t i = 0; i < row_bytes; ++i) {
        size_t const at = y * row_bytes + i;
        if (row[i] != static_cast<BYTE>(at < bytes.size() ? bytes[at] : 0)) return false;
      }
    }
    return true;
  }

  void ExpectOfLibrary(ByLibrary expected, Pixels const& witness, int tolerance) const {
    LoadedPage const page = Load("out.pdf", 0);
    ASSERT_EQ(page.opened, expected.kind != Kind::kUnopened);
    ASSERT_EQ(page.loaded, expected.kind < Kind::kNull);
    if (!page.loaded) {
      EXPECT_EQ(page.error, expected.value);
      return;
    }
    EXPECT_EQ(page.bitmap.header.biBitCount, expected.value);
    int const difference = Difference(page.pixels, witness);
    EXPECT_EQ(difference <= tolerance, expected.kind == Kind::kRight) << difference;
    EXPECT_NE(difference, kOtherSize);
    EXPECT_TRUE(expected.kind != Kind::kStored || Holds(page.bitmap, StreamBytes()));
  }

  void ExpectOfTool(std::string const& problem, Pixels const& witness, int tolerance) const {
    ProgramResult const result = Tool({"extract", Path("out.pdf"), "--output", Path("t%d.pnm")});
    ProgramResult const info = Tool({"info", Path("out.pdf")});
    if (problem != kIsRight) {
      EXPECT_EQ(result.exit_code, 1);
      EXPECT_THAT(result.err, HasSubstr(problem));
      EXPECT_THAT(info.out + info.err, HasSubstr(problem));
      EXPECT_FALSE(std::filesystem::exists(Path("t1.pnm")));
      return;
    }
    EXPECT_EQ(result.exit_code, 0) << result.err;
    EXPECT_LE(Difference(Extracted("t1.pnm"), witness), tolerance);
    EXPECT_THAT(info.out,
                HasSubstr(std::to_string(witness.width) + "x" + std::to_string(witness.height)));
    EXPECT_EQ(Tool({"count", Path("out.pdf")}).out, PagesByPdfinfo("out.pdf") + "\n");
  }
};

TEST_P(OnePicture, ComesBackOrIsNamed) {
  Row const& row = GetParam();
  Shell(std::string("p=") + row.picture + " && " + row.command);
  auto const pictures = Witness();
  ASSERT_FALSE(pictures.empty());
  // JPEG data are decoded by three builds of the same decoder.
  int const tolerance = Listed(9) == "jpeg" ? 2 : 0;
  if (!row.recoded) {
    EXPECT_LE(Difference(pictures[0], Source(row.picture)), tolerance);
  }
  // The library gives the first of several bands, the program all of them as one picture.
  ExpectOfLibrary(row.of_library, pictures[0], tolerance);
  ExpectOfTool(row.tool, Stacked(pictures), tolerance + row.tolerance);
}

std::string NameOf(::testing::TestParamInfo<Row> const& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Img2pdf, OnePicture, ::testing::ValuesIn(kImg2pdf), NameOf);
INSTANTIATE_TEST_SUITE_P(Tiff2pdf, OnePicture, ::testing::ValuesIn(kTiff2pdf), NameOf);
INSTANTIATE_TEST_SUITE_P(GraphicsMagick, OnePicture, ::testing::ValuesIn(kGraphicsMagick), NameOf);
INSTANTIATE_TEST_SUITE_P(Ghostscript, OnePicture, ::testing::ValuesIn(kGhostscript), NameOf);
INSTANTIATE_TEST_SUITE_P(Qpdf, OnePicture, ::testing::ValuesIn(kQpdf), NameOf);
INSTANTIATE_TEST_SUITE_P(Mutool, OnePicture, ::testing::ValuesIn(kMutool), NameOf);
INSTANTIATE_TEST_SUITE_P(Poppler, OnePicture, ::testing::ValuesIn(kPoppler), NameOf);

}  // namespace
}  // namespace test
