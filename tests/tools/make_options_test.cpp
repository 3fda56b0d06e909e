// The command line of sorrelin make: what its options do, and what it says of wrong ones.
#include <png.h>
#include <tiffio.h>

#include <chrono>
#include <sstream>
#include <thread>

#include "tests/tools/make_fixture.h"

namespace test {
namespace {

using ::testing::HasSubstr;

constexpr int kWidth = 72;
constexpr int kHeight = 36;

unsigned ToneAt(int x, int y) { return static_cast<unsigned>(3 * x + 5 * y) & 0xFF; }
DWORD GreyAt(int x, int y) { return ToneAt(x, y) * 0x010101; }
bool InkAt(int x, int y) { return (x * x + 3 * y) % 7 < 2; }
DWORD InkColour(int x, int y) { return InkAt(x, y) ? 0x000000 : 0xFFFFFF; }

class MakeOptions : public MakeTest {
 protected:
  void WriteBilevel() {
    PngForm form;
    form.bits = 1;
    form.x_per_metre = form.y_per_metre = 2835;
    WritePng(Path("a.png"), form, [](int x, int y, int) { return InkAt(x, y) ? 0u : 1u; });
  }
  void WriteGrey() {
    PngForm form;
    form.x_per_metre = form.y_per_metre = 2835;
    WritePng(Path("a.png"), form, [](int x, int y, int) { return ToneAt(x, y); });
  }
  void WriteColour() {
    PngForm form;
    form.type = PNG_COLOR_TYPE_RGB;
    form.x_per_metre = form.y_per_metre = 2835;
    WritePng(Path("a.png"), form,
             [](int x, int y, int s) { return Motley(x, y) >> (16 - 8 * s) & 0xFF; });
  }
  // The run must fail, name the file and write nothing.
  void ExpectRefused(std::vector<std::string> const& options, std::string const& reason) {
    std::vector<std::string> arguments = {Out(), Path("a.png")};
    arguments.insert(arguments.end(), options.begin(), options.end());
    ProgramResult const result = Make(arguments);
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.err, HasSubstr("sorrelin: " + Path("a.png") + ": " + reason));
    EXPECT_FALSE(std::filesystem::exists(Out()));
  }
  // The command line must be refused, before anything is written.
  void ExpectUsage(std::vector<std::string> const& arguments, std::string const& reason) {
    ProgramResult const result = Make(arguments);
    EXPECT_EQ(result.exit_code, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr(reason));
    EXPECT_FALSE(std::filesystem::exists(Out()));
  }
};

TEST_F(MakeOptions, DpiIsOneNumberOrTwo) {
  WriteGrey();
  MakeFrom("a.png", {"--dpi", "144"});
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 36 18]"));
  MakeFrom("a.png", {"--force", "--dpi", "36x72"});
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 144 36]"));
}

TEST_F(MakeOptions, ResolutionOfThePictureIsKeptByAxis) {
  PngForm form;
  form.x_per_metre = 5669;  // 144 dots per inch
  form.y_per_metre = 1417;  // 36
  WritePng(Path("a.png"), form, [](int x, int y, int) { return ToneAt(x, y); });
  MakeFrom("a.png");
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 36 72]"));
}

TEST_F(MakeOptions, PictureWithoutResolutionHas96DotsPerInch) {
  WritePng(Path("a.png"), {}, [](int x, int y, int) { return ToneAt(x, y); });
  MakeFrom("a.png");
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 54 27]"));
}

TEST_F(MakeOptions, WrongDpiIsAUsageError) {
  WriteGrey();
  for (std::string const dpi : {"0", "-5", "100001", "abc", "72x", "x72", "72x72x72", "72.5", ""}) {
    ExpectUsage({Out(), Path("a.png"), "--dpi", dpi}, "--dpi");
  }
}

TEST_F(MakeOptions, EachCompressionShowsTheSamePixelsOfEachDepth) {
  struct Case {
    char const* kind;
    char const* filter;
    bool bilevel, grey, colour;
  };
  Case const cases[] = {{"g4", "/Filter /CCITTFaxDecode", true, false, false},
                        {"flate", "/Filter /FlateDecode", true, true, true},
                        {"runlength", "/Filter /RunLengthDecode", false, true, false},
                        {"none", "/Subtype /Image", true, true, true}};
  for (Case const& row : cases) {
    std::vector<std::string> const options = {"--force", "--compression", row.kind};
    if (row.bilevel) {
      WriteBilevel();
      MakeFrom("a.png", options);
      EXPECT_TRUE(DocumentHas(row.filter));
      ExpectPage(kWidth, kHeight, InkColour);
    }
    if (row.grey) {
      WriteGrey();
      MakeFrom("a.png", options);
      EXPECT_TRUE(DocumentHas(row.filter));
      ExpectPage(kWidth, kHeight, GreyAt);
    }
    if (row.colour) {
      WriteColour();
      MakeFrom("a.png", options);
      EXPECT_TRUE(DocumentHas(row.filter));
      ExpectPage(kWidth, kHeight, Motley);
    }
  }
}

TEST_F(MakeOptions, NoCompressionWritesNoFilter) {
  WriteColour();
  MakeFrom("a.png", {"--compression", "none"});
  EXPECT_FALSE(DocumentHas("/Filter"));
}

TEST_F(MakeOptions, JpegOfAColourPaletteCodesItsColours) {
  PngForm form;
  form.type = PNG_COLOR_TYPE_PALETTE;
  form.x_per_metre = form.y_per_metre = 2835;
  form.palette = {0x2060A0, 0xE0D0B0};
  WritePng(Path("a.png"), form, [](int x, int, int) { return x < 36 ? 0u : 1u; });
  MakeFrom("a.png", {"--compression", "jpeg", "--quality", "95"});
  EXPECT_TRUE(DocumentHas("/Filter /DCTDecode"));
  EXPECT_TRUE(DocumentHas("/ColorSpace /DeviceRGB"));
  PixPtr const pix = Render(kWidth, kHeight);
  l_uint32 left = 0, right = 0;
  pixGetPixel(pix.get(), 8, 8, &left);
  pixGetPixel(pix.get(), 64, 8, &right);
  EXPECT_NEAR(static_cast<int>(left >> 24), 0x20, 6);
  EXPECT_NEAR(static_cast<int>(right >> 24), 0xE0, 6);
}

TEST_F(MakeOptions, JpegOfGreyHasOneComponent) {
  PngForm form;
  form.bits = 4;
  form.x_per_metre = form.y_per_metre = 2835;
  WritePng(Path("a.png"), form, [](int x, int, int) { return static_cast<unsigned>(x / 8); });
  MakeFrom("a.png", {"--compression", "jpeg", "--quality", "100"});
  EXPECT_TRUE(DocumentHas("/ColorSpace /DeviceGray"));
  ExpectPage(
      kWidth, kHeight, [](int x, int) { return static_cast<DWORD>(x / 8 * 17) * 0x010101; }, 6);
}

TEST_F(MakeOptions, LowerQualityIsSmaller) {
  WriteColour();
  MakeFrom("a.png", {"--compression", "jpeg", "--quality", "95"});
  size_t const fine = Document().size();
  MakeFrom("a.png", {"--force", "--compression", "jpeg", "--quality", "20"});
  EXPECT_LT(Document().size(), fine);
}

TEST_F(MakeOptions, CompressionThatDoesNotSuitThePictureNamesIt) {
  WriteBilevel();
  ExpectRefused({"--compression", "jpeg"}, "is black and white");
  ExpectRefused({"--compression", "runlength"}, "is black and white");
  WriteGrey();
  ExpectRefused({"--compression", "g4"}, "is of 8 bits");
  WriteColour();
  ExpectRefused({"--compression", "g4"}, "is of 24 bits");
  ExpectRefused({"--compression", "runlength"}, "is of 24 bits");
}

TEST_F(MakeOptions, InformationStringsAreWritten) {
  WriteGrey();
  MakeFrom("a.png", {"--title", "T\xC3\xA4g", "--author", "A", "--subject", "S", "--keywords",
                     "K \xF0\x9F\x98\x80"});
  EXPECT_TRUE(DocumentHas("/Title <FEFF005400E40067>"));
  EXPECT_TRUE(DocumentHas("/Author <FEFF0041>"));
  EXPECT_TRUE(DocumentHas("/Subject <FEFF0053>"));
  EXPECT_TRUE(DocumentHas("/Keywords <FEFF004B0020D83DDE00>"));
}

TEST_F(MakeOptions, InformationStringsOfTheGreatestLengthAreWritten) {
  WriteGrey();
  MakeFrom("a.png", {"--title", std::string(252, 't'), "--author", std::string(252, 'a'),
                     "--subject", std::string(252, 's'), "--keywords", std::string(251, 'k')});
  std::string keywords = "/Keywords <FEFF";
  for (int i = 0; i < 251; ++i) keywords += "006B";
  EXPECT_TRUE(DocumentHas(keywords + ">"));
}

TEST_F(MakeOptions, LongerInformationStringsAreUsageErrors) {
  WriteGrey();
  for (std::string const option : {"--title", "--author", "--subject"}) {
    ExpectUsage({Out(), Path("a.png"), option, std::string(253, 'x')},
                option + ": has 253 characters");
  }
  ExpectUsage({Out(), Path("a.png"), "--keywords", std::string(252, 'x')},
              "--keywords: has 252 characters");
}

TEST_F(MakeOptions, ArgumentsThatAreNotUtf8AreUsageErrors) {
  WriteGrey();
  ExpectUsage({Out(), Path("a.png"), "--title", "\xFF\xFE"}, "--title: is not valid UTF-8");
  ExpectUsage({Path("\xFF.pdf"), Path("a.png")}, "not valid UTF-8");
}

TEST_F(MakeOptions, WrongCommandLinesAreUsageErrors) {
  WriteGrey();
  ExpectUsage({}, "OUT is required");
  ExpectUsage({Out()}, "IMAGE is required");
  ExpectUsage({Out(), Path("a.png"), "--bogus"}, "--bogus");
  ExpectUsage({Out(), Path("a.png"), "--compression", "zip"}, "not zip");
  ExpectUsage({Out(), Path("a.png"), "--quality", "0"}, "--quality");
  ExpectUsage({Out(), Path("a.png"), "--quality", "101"}, "--quality");
  ExpectUsage({Out(), "-", "-"}, "is named more than once");
  ExpectUsage({"", Path("a.png")}, "the name is empty");
}

TEST_F(MakeOptions, DocumentThatIsAnImageOfItsOwnIsAUsageError) {
  WriteGrey();
  std::vector<BYTE> const before = ReadAll(Path("a.png"));
  ExpectUsage({Path("a.png"), Path("a.png"), "--force"}, "is one of the images");
  EXPECT_EQ(ReadAll(Path("a.png")), before);
}

TEST_F(MakeOptions, ProgramWithoutOrWithAnUnknownVerbIsAUsageError) {
  ProgramResult const none = RunProgram({SORRELIN_TOOL});
  EXPECT_EQ(none.exit_code, 2);
  EXPECT_THAT(none.err, HasSubstr("A verb is required"));
  ProgramResult const unknown = RunProgram({SORRELIN_TOOL, "bake", "x"});
  EXPECT_EQ(unknown.exit_code, 2);
  EXPECT_THAT(unknown.err, HasSubstr("bake"));
}

TEST_F(MakeOptions, VersionGoesToStandardOutput) {
  ProgramResult const result = RunProgram({SORRELIN_TOOL, "--version"});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(result.out, "sorrelin 13.1.0\n");
  EXPECT_EQ(result.err, "");
}

TEST_F(MakeOptions, HelpFits80ColumnsAndNamesEveryOption) {
  ProgramResult const general = RunProgram({SORRELIN_TOOL, "--help"});
  ProgramResult const make = Make({"--help"});
  EXPECT_EQ(general.exit_code, 0);
  EXPECT_EQ(make.exit_code, 0);
  EXPECT_THAT(general.out, HasSubstr("make "));
  for (char const* const option :
       {"--title", "--author", "--subject", "--keywords", "--dpi", "--default-dpi", "--page",
        "--fit", "--compression", "--quality", "--plain", "--sort", "--jobs", "--json", "--force",
        "--quiet", "--help"}) {
    EXPECT_THAT(make.out, HasSubstr(option));
  }
  std::istringstream lines(general.out + make.out);
  for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 80u) << line;
}

TEST_F(MakeOptions, SourceDateIsTheDocumentsWhateverTheZone) {
  WriteGrey();
  for (char const* const zone : {"TZ=UTC", "TZ=Asia/Tokyo", "TZ=EST5EDT"}) {
    ProgramResult const result =
        Make({Out(), Path("a.png"), "--force"}, {}, {"SOURCE_DATE_EPOCH=951782399", zone});
    EXPECT_EQ(result.exit_code, 0) << result.err;
    EXPECT_TRUE(DocumentHas("/CreationDate (D:20000228235959)"));
  }
}

TEST_F(MakeOptions, EmptySourceDateIsNone) {
  WriteGrey();
  EXPECT_EQ(Make({Out(), Path("a.png")}, {}, {"SOURCE_DATE_EPOCH="}).exit_code, 0);
  EXPECT_TRUE(DocumentHas("/CreationDate (D:2"));
}

TEST_F(MakeOptions, WrongSourceDateIsAUsageError) {
  WriteGrey();
  ProgramResult const result = Make({Out(), Path("a.png")}, {}, {"SOURCE_DATE_EPOCH=yesterday"});
  EXPECT_EQ(result.exit_code, 2);
  EXPECT_THAT(result.err, HasSubstr("SOURCE_DATE_EPOCH: must be a number of seconds"));
  EXPECT_FALSE(std::filesystem::exists(Out()));
}

// A second apart, so that a date of the clock would show.
TEST_F(MakeOptions, SamePicturesGiveTheSameBytesWithASourceDate) {
  WriteBilevel();
  std::vector<std::string> const environment = {"SOURCE_DATE_EPOCH=1"};
  std::vector<std::string> const arguments = {Out(), Path("a.png"), "--force"};
  EXPECT_EQ(Make(arguments, {}, environment).exit_code, 0);
  std::vector<BYTE> const first = Document();
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));
  EXPECT_EQ(Make(arguments, {}, environment).exit_code, 0);
  EXPECT_EQ(Document(), first);
}

TEST_F(MakeOptions, StandardOutputStaysEmpty) {
  WriteGrey();
  EXPECT_EQ(Make({Out(), Path("a.png")}).out, "");
}

TEST_F(MakeOptions, RotationTurnsThePictureClockwise) {
  WriteAll(Path("a.pgm"), {'P', '5', ' ', '2', ' ', '1', ' ', '2', '5', '5', '\n', 0, 255});
  auto const black_at = [this](std::string const& degrees, int black_x, int black_y) {
    MakeFrom("a.pgm", {"--dpi", "72", "--force", "--rotate", degrees});
    bool const upright = degrees == "90" || degrees == "270";
    ExpectPage(upright ? 1 : 2, upright ? 2 : 1,
               [=](int x, int y) { return x == black_x && y == black_y ? 0u : 0xFFFFFFu; });
  };
  black_at("auto", 0, 0);
  black_at("90", 0, 0);
  black_at("180", 1, 0);
  black_at("270", 0, 1);
}

TEST_F(MakeOptions, BorderIsSpaceAroundThePicture) {
  WriteAll(Path("a.pgm"), {'P', '5', ' ', '2', ' ', '1', ' ', '2', '5', '5', '\n', 0, 0});
  MakeFrom("a.pgm", {"--dpi", "72", "--border", "3pt"});
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 8 7]"));
  ExpectPage(8, 7, [](int x, int y) { return y == 3 && (x == 3 || x == 4) ? 0u : 0xFFFFFFu; });
}

TEST_F(MakeOptions, WrongBordersAndRotationsAreUsageErrors) {
  for (std::vector<std::string> const& options :
       {std::vector<std::string>{"--rotate", "45"},
        {"--border", "5"},
        {"--border", "-1mm"},
        {"--page", "a4", "--border", "105mm"},
        {"--page", "a4", "--fit", "fill", "--border", "1mm"}}) {
    std::vector<std::string> arguments = {Out(), Path("a.png")};
    arguments.insert(arguments.end(), options.begin(), options.end());
    ProgramResult const result = Make(arguments);
    EXPECT_EQ(result.exit_code, 2) << options[1];
    EXPECT_THAT(result.err, ::testing::HasSubstr("help make says more"));
  }
}

}  // namespace
}  // namespace test
