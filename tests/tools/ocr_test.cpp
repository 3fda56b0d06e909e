// Invisible text on pages: of make and append, and of documents that are there.
#include <signal.h>

#include <chrono>
#include <cstdlib>
#include <iterator>
#include <random>
#include <set>

#include "tests/tools/ocr_fixture.h"

namespace test {
namespace {

using ::testing::AnyOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class Ocr : public OcrTest {
 protected:
  // A document whose page has a word that no picture shows.
  void WriteTypedPage(std::string const& name) const {
    std::ofstream(Path("text.ps")) << "/Helvetica findfont 12 scalefont setfont 72 60 moveto "
                                      "(Typed) show showpage\n";
    OutputOf({GHOSTSCRIPT, "-q", "-dNOPAUSE", "-dBATCH", "-sDEVICE=pdfwrite",
              "-sOutputFile=" + Path(name), Path("text.ps")});
  }
};

TEST_F(Ocr, MadePagesHaveWordsWhereTheyAreSeenAndTheirPicturesAsTheyWere) {
  WritePix("page.png", Lines());
  RunQuietly({"make", Path("plain.pdf"), Path("page.png")});
  RunQuietly({"make", Out(), Path("page.png"), "--ocr", "eng"});
  ExpectWords("out.pdf");
  EXPECT_THAT(TextOf("out.pdf"),
              StartsWith("The old harbour lies behind a long stone wall that keeps the winter\n"
                         "storms away from the fishing boats."));
  EXPECT_EQ(PicturesOf("out.pdf"), PicturesOf("plain.pdf"));
  EXPECT_TRUE(AreEqual(Shown("out.pdf"), Shown("plain.pdf")));
  EXPECT_LT(Document().size(), ReadAll(Path("plain.pdf")).size() + (12 << 10));
}

// A photograph of a tilted page under a lamp, and two sheets from a feeder.
TEST_F(Ocr, PhotographAndFedSheetsAreFoundByThreeViewers) {
  PixPtr const photograph(pixConvertTo32(TiltedLines(3).get()));
  for (int y = 0; y < pixGetHeight(photograph.get()); ++y) {
    for (int x = 0; x < pixGetWidth(photograph.get()); ++x) {
      l_int32 red = 0, green = 0, blue = 0;
      pixGetRGBPixel(photograph.get(), x, y, &red, &green, &blue);
      auto const lit = [&](int tone) { return tone * (8000 - x - y) / 8000; };
      pixSetRGBPixel(photograph.get(), x, y, lit(red), lit(green), lit(blue) * 9 / 10);
    }
  }
  pixSetResolution(photograph.get(), kPageDpi, kPageDpi);
  pixWriteJpeg(Path("phone.jpg").c_str(), photograph.get(), 85, 0);
  PixPtr const sheet(pixConvertTo1(Lines().get(), 128));
  pixSetResolution(sheet.get(), kPageDpi, kPageDpi);
  for (char const* mode : {"w", "a"}) {
    pixWriteTiff(Path("feeder.tif").c_str(), sheet.get(), IFF_TIFF_G4, mode);
  }
  RunQuietly({"make", Out(), Path("phone.jpg"), Path("feeder.tif"), "--ocr", "eng"});
  std::vector<std::vector<std::string>> const kViewers = {
      {"pdftotext", Out(), "-"},
      {"mutool", "draw", "-q", "-F", "text", Out()},
      {GHOSTSCRIPT, "-q", "-dNOPAUSE", "-dBATCH", "-sDEVICE=txtwrite", "-sOutputFile=-", Out()}};
  for (auto const& viewer : kViewers) {
    std::istringstream text(OutputOf(viewer));
    std::multiset<std::string> const words{std::istream_iterator<std::string>(text), {}};
    for (FoundWord const& word : ExpectedWords()) {
      EXPECT_GE(words.count(word.text), 3u) << viewer[0] << ": " << word.text;
    }
  }
}

// Documents with text keep the form that the library reads and updates.
TEST_F(Ocr, DocumentsWithTextTakeFurtherPagesAndComeOutAgain) {
  WritePix("page.png", Lines());
  RunQuietly({"make", Out(), Path("page.png"), "--ocr", "eng"});
  RunQuietly({"append", Out(), Path("page.png")});
  EXPECT_EQ(CountPages(), "2\n");
  ExtractAll({"--output", Path("back%d.png")});
  EXPECT_TRUE(Shows("back1.png", Lines()));
  ExpectWords("out.pdf");
}

TEST_F(Ocr, AppendLaysTextOnNewPagesOnly) {
  WritePix("page.png", Lines());
  RunQuietly({"make", Out(), Path("page.png")});
  RunQuietly({"append", Out(), Path("page.png"), "--ocr", "eng"});
  EXPECT_EQ(CountPages(), "2\n");
  EXPECT_THAT(TextOf("out.pdf"), StartsWith("\fThe old harbour"));
}

TEST_F(Ocr, VerbLaysTextOnceAndRedoReplacesIt) {
  WritePix("page.png", Lines());
  RunQuietly({"make", Out(), Path("page.png")});
  auto const shown = Shown("out.pdf");
  auto const pictures = PicturesOf("out.pdf");
  RunQuietly({"ocr", Out()});
  ExpectWords("out.pdf");
  EXPECT_TRUE(AreEqual(Shown("out.pdf"), shown));
  EXPECT_EQ(PicturesOf("out.pdf"), pictures);
  Bytes const once = Document();
  RunQuietly({"ocr", Out()});
  EXPECT_EQ(Document(), once);
  RunQuietly({"ocr", Out(), "--redo", "-o", Path("again.pdf")});
  EXPECT_EQ(Document(), once);
  EXPECT_EQ(WordsOf("again.pdf").size(), WordsOf("out.pdf").size());
}

TEST_F(Ocr, PagesWithOtherTextAreLeftAlone) {
  WriteTypedPage("out.pdf");
  Bytes const before = Document();
  RunQuietly({"ocr", Out(), "--redo"});
  EXPECT_EQ(Document(), before);
  RunQuietly({"ocr", Out(), "--redo", "--output", Path("copy.pdf")});
  EXPECT_EQ(ReadAll(Path("copy.pdf")), before);
}

// A page with text of another program besides the layer is one with other text.
TEST_F(Ocr, RedoLeavesTextOfOthersBesideTheLayer) {
  WritePix("page.png", Lines());
  RunQuietly({"make", Path("plain.pdf"), Path("page.png"), "--ocr", "eng"});
  WriteTypedPage("typed.pdf");
  OutputOf({"qpdf", Path("plain.pdf"), "--overlay", Path("typed.pdf"), "--", Out()});
  auto const count = WordsOf("out.pdf").size();
  RunQuietly({"ocr", Out(), "--redo"});
  EXPECT_THAT(TextOf("out.pdf"), HasSubstr("Typed"));
  EXPECT_EQ(WordsOf("out.pdf").size(), count);
  ExpectWords("out.pdf");
}

TEST_F(Ocr, TurnedPagesAreShownUprightAndHaveTheirWords) {
  WritePix("page.png", Lines(1));
  RunQuietly({"make", Out(), Path("page.png"), "--ocr", "eng", "--orientation", "auto"});
  ExpectWords("out.pdf");
  EXPECT_TRUE(DocumentHas("/Rotate 270"));
  ExtractAll({"--output", Path("back.png")});
}

TEST_F(Ocr, VerbShowsPagesUprightThatAreUpsideDown) {
  WritePix("page.png", Lines(2));
  RunQuietly({"make", Out(), Path("page.png")});
  auto const pictures = PicturesOf("out.pdf");
  RunQuietly({"ocr", Out(), "--orientation", "auto"});
  ExpectWords("out.pdf");
  EXPECT_TRUE(DocumentHas("/Rotate 180"));
  EXPECT_EQ(PicturesOf("out.pdf"), pictures);
}

TEST_F(Ocr, WordsOfTiltedPagesAreWhereTheyAreSeen) {
  for (double const degrees : {-2.0, 2.0, 5.0}) {
    PixPtr const page = TiltedLines(degrees);
    WritePix("page.png", page);
    RunQuietly({"make", Out(), Path("page.png"), "--ocr", "eng", "--force"});
    ExpectWords("out.pdf", TiltedWords(degrees, page));
    ExtractAll({"--output", Path("back.png"), "--force"});
    EXPECT_TRUE(Shows("back.png", page));
  }
}

TEST_F(Ocr, WordsReadFromTheRightAreWholeAndComeInTheirOrder) {
  std::string const text =
      "\u05db\u05dc \u05d1\u05e0\u05d9 \u05d4\u05d0\u05d3\u05dd "
      "\u05e0\u05d5\u05dc\u05d3\u05d5 \u05d1\u05e0\u05d9 \u05d7\u05d5\u05e8\u05d9\u05df";
  auto const expected = RenderText("hebrew", text, {});
  ASSERT_EQ(expected.size(), 6u);
  RunQuietly({"make", Out(), Path("hebrew.tif"), "--ocr", "heb"});
  auto const found = WordsOf("out.pdf");
  for (FoundWord const& word : expected) {
    EXPECT_TRUE(std::any_of(found.begin(), found.end(), [&](FoundWord const& other) {
      return other.text == word.text && Overlap(word, other) > 0.5;
    })) << word.text;
  }
  EXPECT_THAT(TextOf("out.pdf"), HasSubstr(text));
  EXPECT_THAT(OutputOf({"mutool", "draw", "-q", "-F", "text", Out()}), HasSubstr(text));
}

// Words of Japanese have no blanks between them, so that whole sentences can be found.
TEST_F(Ocr, VerticalTextIsWholeAndComesInItsOrder) {
  std::string const text = "\u65e5\u672c\u56fd\u6c11\u306f\u6b63\u5f53\u306b\u9078\u6319";
  std::string page = text;
  for (int i = 1; i < 8; ++i) page += "\n" + text;
  RenderText("vertical", page, {"VL Gothic", "vertical-upright", 1400});
  RunQuietly({"make", Out(), Path("vertical.tif"), "--ocr", "jpn_vert"});
  auto const found = WordsOf("out.pdf");
  ASSERT_GE(found.size(), 8u);
  EXPECT_EQ(found[0].text, text);
  EXPECT_GT(found[0].bottom - found[0].top, 8 * (found[0].right - found[0].left));
  EXPECT_GT(found[0].left, found[1].right);
  EXPECT_THAT(OutputOf({"mutool", "draw", "-q", "-F", "text", Out()}), HasSubstr(text));
}

TEST_F(Ocr, MissingLanguageIsNamedAndNothingWritten) {
  WritePix("page.png", Blank());
  ProgramResult const result = Make({Out(), Path("page.png"), "--ocr", "eng+chi_xxx"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("\"chi_xxx\" are not installed ("));
  EXPECT_FALSE(std::filesystem::exists(Out()));
}

TEST_F(Ocr, LocaleChoosesTheLanguage) {
  WritePix("page.png", Blank());
  ProgramResult const result =
      Make({Out(), Path("page.png"), "--ocr", "auto"}, {}, {"LANGUAGE=", "LC_ALL=yo_NG.UTF-8"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("\"yor\" are not installed ("));
}

TEST_F(Ocr, DamagedLanguageDataAreNamed) {
  WritePix("page.png", Blank());
  WriteAll(Path("eng.traineddata"), Bytes(5000, 0x41));
  ProgramResult const result = Make({Out(), Path("page.png"), "--ocr", "eng"}, {},
                                    {"TESSDATA_PREFIX=" + directory_.path().string()});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("\"eng\" cannot be loaded: they are damaged"));
  EXPECT_FALSE(std::filesystem::exists(Out()));
}

TEST_F(Ocr, PagesWithoutWordsAreKeptAndNamed) {
  WritePix("blank.png", Blank());
  WritePix("page.png", Lines());
  ProgramResult const result =
      Make({Out(), Path("blank.png"), Path("page.png"), "--ocr", "eng", "--jobs", "2"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("page 1: shows no words"));
  EXPECT_EQ(CountPages(), "2\n");
  EXPECT_THAT(TextOf("out.pdf"), StartsWith("\fThe old harbour"));
}

// Noise keeps the search for lines busy, which cannot be stopped from inside.
TEST_F(Ocr, PageThatTakesTooLongIsKeptAndNamed) {
  WritePix("noise.png", Noise(2400, 3200, 1));
  ProgramResult const result = Make({Out(), Path("noise.png"), "--ocr", "eng", "--timeout", "1"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("page 1: is not recognised within the time"));
  EXPECT_EQ(CountPages(), "1\n");
  EXPECT_EQ(TextOf("out.pdf"), "\f");
}

// A sheet of many colours without a sharp edge, as of a photograph.
TEST_F(Ocr, PhotographIsKeptAndNamed) {
  PixPtr const photograph(pixCreate(900, 600, 32));
  for (int y = 0; y < 600; ++y) {
    for (int x = 0; x < 900; ++x) {
      auto const tone = [&](double step) {
        return static_cast<l_int32>(127 + 100 * std::sin(x / step) * std::cos(y / (step + 20)));
      };
      pixSetRGBPixel(photograph.get(), x, y, tone(150), tone(190), tone(110));
    }
  }
  WritePix("photograph.png", photograph);
  ProgramResult const result = Make({Out(), Path("photograph.png"), "--ocr", "eng"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("page 1: shows no words"));
  EXPECT_EQ(CountPages(), "1\n");
}

// Its pixels are not even decoded: they take 900 million bytes.
TEST_F(Ocr, HugePageIsKeptAndNamed) {
  PixPtr page(pixCreate(30000, 30000, 1));
  pixWrite(Path("huge.tif").c_str(), page.get(), IFF_TIFF_G4);
  page.reset();
  ProgramResult const result = Make({Out(), Path("huge.tif"), "--ocr", "eng"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("page 1: is too large to be recognised: 30000 x 30000 pixels"));
  EXPECT_EQ(CountPages(), "1\n");
  EXPECT_THAT(Run({"words", Path("huge.tif")}).err, HasSubstr("is too large to be recognised"));
}

// Wherever the run is when it ends, the document is the old one or the new one.
class KilledOcr : public Ocr, public ::testing::WithParamInterface<char const*> {};

INSTANTIATE_TEST_SUITE_P(Verbs, KilledOcr, ::testing::Values("make", "append", "ocr"));

TEST_P(KilledOcr, LeavesTheOldDocumentOrTheNewOne) {
  std::string const verb = GetParam();
  WritePix("page.png", Lines());
  RunQuietly({"make", Out(), Path("page.png")});
  Bytes const old = Document();
  std::vector<std::string> run = {SORRELIN_TOOL, verb, Out()};
  if (verb != "ocr") run.insert(run.end(), {Path("page.png"), "--ocr", "eng"});
  if (verb == "make") run.push_back("--force");
  std::vector<std::string> const date = {"SOURCE_DATE_EPOCH=1"};
  auto const begin = std::chrono::steady_clock::now();
  ASSERT_EQ(RunProgram(run, {}, date).exit_code, 0);
  std::chrono::duration<double> const length = std::chrono::steady_clock::now() - begin;
  Bytes const whole = Document();
  EXPECT_THAT(TextOf("out.pdf"), HasSubstr("harbour"));
  std::minstd_rand random(7);
  std::uniform_real_distribution<double> share(0.1, 1.0);
  for (int i = 0; i < 5; ++i) {
    WriteAll(Out(), old);
    std::vector<std::string> killed = {"timeout", "-s", "KILL",
                                       std::to_string(length.count() * share(random))};
    killed.insert(killed.end(), run.begin(), run.end());
    RunProgram(killed, {}, date);
    EXPECT_TRUE(Document() == old || Document() == whole) << "run " << i;
  }
}

TEST_F(Ocr, EncryptedSignedAndDamagedDocumentsAreLeftAlone) {
  WritePix("page.png", Blank());
  RunQuietly({"make", Path("plain.pdf"), Path("page.png")});
  OutputOf({"qpdf", "--encrypt", "", "owner", "256", "--modify=none", "--", Path("plain.pdf"),
            Path("locked.pdf")});
  OutputOf(
      {"qpdf", "--encrypt", "user", "owner", "256", "--", Path("plain.pdf"), Path("closed.pdf")});
  std::string const plain =
      OutputOf({"qpdf", "--qdf", "--object-streams=disable", Path("plain.pdf"), "-"});
  std::string with_field = plain;
  with_field.insert(with_field.find("/Type /Catalog"),
                    "/AcroForm <</SigFlags 3 /Fields [<</FT /Sig /T (s) /V <</Type /Sig>> >>]>>\n");
  WriteAll(Path("raw.pdf"), ToBytes(with_field));
  RunProgram({"qpdf", Path("raw.pdf"), Path("signed.pdf")});
  WriteAll(Path("damaged.pdf"), ToBytes("%PDF-1.4\nthis is no document"));
  for (auto const& [name, reason] : std::vector<std::pair<std::string, std::string>>{
           {"locked.pdf", "is encrypted"},
           {"closed.pdf", "is encrypted"},
           {"signed.pdf", "is signed"},
           {"damaged.pdf", "cannot be read as a document"}}) {
    Bytes const before = ReadAll(Path(name));
    auto const names = Names();
    ProgramResult const result = Run({"ocr", Path(name)});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.err, HasSubstr("sorrelin: " + Path(name) + ": " + reason));
    EXPECT_EQ(ReadAll(Path(name)), before);
    EXPECT_EQ(Names(), names);
  }
}

TEST_F(Ocr, ReadOnlyDocumentIsLeftAlone) {
  WritePix("page.png", Blank());
  RunQuietly({"make", Out(), Path("page.png")});
  std::filesystem::permissions(Out(), std::filesystem::perms::owner_read);
  Bytes const before = Document();
  std::vector<std::string> arguments = {SORRELIN_TOOL, "ocr", Out()};
  if (geteuid() == 0) {
    arguments.insert(arguments.begin(), {"setpriv", "--bounding-set=-all", "--inh-caps=-all"});
  }
  ProgramResult const result = RunProgram(arguments);
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr(Out() + ": cannot be changed: Permission denied"));
  EXPECT_EQ(Document(), before);
}

TEST_F(Ocr, DocumentIsAsItWasWhereLanguageDataAreDamagedOrMissing) {
  WritePix("page.png", Lines());
  RunQuietly({"make", Out(), Path("page.png")});
  Bytes const before = Document();
  WriteAll(Path("eng.traineddata"), Bytes(5000, 0x41));
  ProgramResult const result = RunProgram({SORRELIN_TOOL, "ocr", Out()}, {},
                                          {"TESSDATA_PREFIX=" + directory_.path().string()});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr(Out() + ": Tesseract's data for \"eng\" cannot be loaded"));
  EXPECT_EQ(Document(), before);
  auto const names = Names();
  ProgramResult const missing = Run({"ocr", Out(), "--language", "chi_xxx", "--jobs", "2"});
  EXPECT_EQ(missing.exit_code, 1);
  EXPECT_THAT(missing.err, StartsWith("sorrelin: " + Out() +
                                      ": Tesseract's data for \"chi_xxx\" are not installed ("));
  EXPECT_EQ(std::count(missing.err.begin(), missing.err.end(), '\n'), 1);
  EXPECT_EQ(Document(), before);
  EXPECT_EQ(Names(), names);
}

TEST_F(Ocr, WordsOfDocumentsAndTurnedPicturesComeInEveryForm) {
  WritePix("page.png", Lines(2));
  RunQuietly({"make", Out(), Path("page.png")});
  ProgramResult const json = Run({"words", Out()});
  EXPECT_EQ(json.exit_code, 0);
  EXPECT_EQ(json.err, "");
  EXPECT_THAT(json.out, StartsWith("{\"file\": \"" + Out() + "\", \"page\": 1, \"text\": \"The\""));
  // The first word is in the last corner of the picture that is upside down.
  int left = 0, top = 0, right = 0, bottom = 0;
  std::sscanf(json.out.c_str() + json.out.find("\"box\""), "\"box\": [%d, %d, %d, %d]", &left, &top,
              &right, &bottom);
  EXPECT_NEAR(right, kPageWidth - ExpectedWords()[0].left * kPageDpi / 72, 8);
  EXPECT_GT(top, kTop / 2 - 50);
  EXPECT_EQ(Run({"words", Path("page.png"), "--format", "text"}).out,
            Run({"words", Out(), "--text"}).out);
  EXPECT_THAT(Run({"words", Out(), "--format", "tsv"}).out,
              ::testing::AllOf(StartsWith("level\tpage_num\t"), HasSubstr("\tharbour\n")));
}

TEST_F(Ocr, WordsOfTiltedPicturesAreBoxedWhereTheyAreSeen) {
  for (double const degrees : {-5.0, 4.0}) {
    PixPtr const page = TiltedLines(degrees);
    WritePix("page.png", page);
    RunQuietly({"make", Out(), Path("page.png"), "--force"});
    for (char const* name : {"page.png", "out.pdf"}) {
      ExpectWords(PrintedWords(name), TiltedWords(degrees, page));
    }
  }
}

TEST_F(Ocr, WordsAreTheSameFromOneJobAndFromTwo) {
  for (int page = 0; page < 3; ++page) {
    WritePix("page" + std::to_string(page) + ".png", page == 1 ? TiltedLines(3) : Lines(page));
  }
  RunQuietly({"make", Out(), Path("page0.png"), Path("page1.png"), Path("page2.png")});
  ProgramResult const one = Run({"words", Out(), "--jobs", "1"});
  ProgramResult const two = Run({"words", Out(), "--jobs", "2"});
  EXPECT_EQ(one.exit_code, 0);
  EXPECT_EQ(one.out, two.out);
  for (char const* page : {"1", "2", "3"}) {
    EXPECT_THAT(one.out, HasSubstr(std::string("\"page\": ") + page + ", \"text\": \"harbour\""));
  }
}

TEST_F(Ocr, WordsOfPictureFilesComeInTheirOrderFromAnyNumberOfJobs) {
  WritePix("first.png", Lines());
  for (char const* mode : {"w", "a", "a"}) {
    pixWriteTiff(Path("pages.tif").c_str(), Lines().get(), IFF_TIFF_LZW, mode);
  }
  WriteAll(Path("bad.png"), ToBytes("this is no picture at all, but it is long enough"));
  std::vector<std::string> run = {
      "words", Path("first.png"), Path("bad.png"), Path("pages.tif"), "--format", "tsv", "--jobs",
      "1"};
  ProgramResult const one = Run(run);
  run.back() = "3";
  ProgramResult const three = Run(run);
  EXPECT_EQ(one.exit_code, 1);
  EXPECT_THAT(one.err, HasSubstr(Path("bad.png") + ": is not a picture"));
  EXPECT_EQ(one.out, three.out);
  EXPECT_EQ(one.err, three.err);
  std::vector<size_t> places;
  for (char const* page : {"1\t1\t", "1\t2\t", "1\t3\t", "1\t4\t"}) {
    places.push_back(one.out.find(std::string("\n") + page));
  }
  EXPECT_NE(places.back(), std::string::npos);
  EXPECT_TRUE(std::is_sorted(places.begin(), places.end()));
}

TEST_F(Ocr, WordsOfSeveralPicturesInAPipeAreRead) {
  PixPtr const page = Lines();
  pixWrite(Path("page.pnm").c_str(), page.get(), IFF_PNM);
  ProgramResult const result = RunProgram(
      {"sh", "-c", "cat \"$1\" \"$1\" | \"$0\" words --jobs 2 -", SORRELIN_TOOL, Path("page.pnm")});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_THAT(result.out, StartsWith("{\"file\": \"-\", \"page\": 1, \"text\": \"The\""));
  EXPECT_THAT(result.out, HasSubstr("\"page\": 2, \"text\": \"harbour\""));
}

TEST_F(Ocr, PictureThatTakesTooLongIsNamedAndTheNextOneRead) {
  WritePix("noise.png", Noise(7200, 9600, 1));  // minutes of work
  WritePix("page.png", Lines());
  ProgramResult const result =
      Run({"words", Path("noise.png"), Path("page.png"), "--timeout", "6", "--format", "text"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr(Path("noise.png") + ": is not recognised within the time"));
  EXPECT_THAT(result.err, Not(HasSubstr("page.png")));
  EXPECT_THAT(result.out, StartsWith("The old harbour"));
}

TEST_F(Ocr, PictureOnStandardInputThatTakesTooLongIsNamedAndTheNextOneRead) {
  pixWrite(Path("noise.pnm").c_str(), Noise(7200, 9600, 1).get(), IFF_PNM);  // minutes of work
  pixWrite(Path("page.pnm").c_str(), Lines().get(), IFF_PNM);
  ProgramResult const result =
      RunProgram({"sh", "-c", "cat \"$1\" \"$2\" | \"$0\" words --timeout 6 --format text -",
                  SORRELIN_TOOL, Path("noise.pnm"), Path("page.pnm")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("standard input: page 1: is not recognised within the time"));
  EXPECT_THAT(result.err, Not(HasSubstr("page 2")));
  EXPECT_THAT(result.out, StartsWith("The old harbour"));
}

TEST_F(Ocr, PageOnStandardInputThatTakesTooLongIsNamedAndTheNextOneRead) {
  std::string const name = Path("in.tif");
  pixWriteTiff(name.c_str(), Lines().get(), IFF_TIFF_LZW, "w");
  pixWriteTiff(name.c_str(), Noise(7200, 9600, 1).get(), IFF_TIFF_G4, "a");  // minutes of work
  pixWriteTiff(name.c_str(), Lines().get(), IFF_TIFF_LZW, "a");
  ProgramResult const result = RunProgram(
      {"sh", "-c", "\"$0\" words --timeout 6 --format text - < \"$1\"", SORRELIN_TOOL, name});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("standard input: page 2: is not recognised within the time"));
  EXPECT_THAT(result.err, Not(AnyOf(HasSubstr("page 1"), HasSubstr("page 3"))));
  size_t const first = result.out.find("The old harbour");
  ASSERT_NE(first, std::string::npos);
  EXPECT_NE(result.out.find("The old harbour", first + 1), std::string::npos);
}

TEST_F(Ocr, PagesOfATiffOnStandardInputKeepTheirOrder) {
  PixPtr const large(pixCreate(6000, 6000, 8));  // two are more than a child is sent at once
  pixSetAll(large.get());
  for (int page = 0; page < 6; ++page) {
    PixPtr const lines = Lines();
    Pix* const pix = page == 1 || page == 2 ? large.get() : lines.get();
    pixWriteTiff(Path("in.tif").c_str(), pix, IFF_TIFF_LZW, page == 0 ? "w" : "a");
  }
  ProgramResult const result =
      RunProgram({"sh", "-c", "\"$0\" words - < \"$1\"", SORRELIN_TOOL, Path("in.tif")});
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.exit_code, 0);
  for (int page = 1; page <= 6; ++page) {
    std::string const entry = "\"page\": " + std::to_string(page) + ", \"text\": \"harbour\"";
    EXPECT_EQ(result.out.find(entry) != std::string::npos, page != 2 && page != 3) << page;
  }
}

TEST_F(Ocr, MarkupOfWordsIsWellFormed) {
  WritePix("page.png", Lines());
  for (std::string const form : {"hocr", "alto"}) {
    ProgramResult const result = Run({"words", Path("page.png"), Path("page.png"), "--format", form,
                                      "--orientation", "keep", "--psm", "6"});
    EXPECT_EQ(result.exit_code, 0);
    WriteAll(Path("out.xml"), ToBytes(result.out));
    OutputOf({"python3", "-c", "import sys, xml.dom.minidom as m; m.parse(sys.argv[1])",
              Path("out.xml")});
    EXPECT_THAT(result.out, HasSubstr(form == "hocr" ? "id='page_2'" : "ID=\"page_1\""));
    EXPECT_THAT(result.out, HasSubstr("harbour"));
  }
}

TEST_F(Ocr, ScannedPagesAreStraightenedAndBlankOnesLeftOut) {
  PixPtr const lines = Lines();
  PixPtr const tilted(pixRotate(lines.get(), 0.035F, L_ROTATE_AREA_MAP, L_BRING_IN_WHITE, 0, 0));
  for (int i = 0; i < 4; ++i) pixSetPixel(tilted.get(), kPageWidth / 2 + i % 2, 8 + i / 2, 0);
  WritePix("tilted.png", tilted);
  WritePix("blank.png", Blank());
  RunQuietly({"make", Path("plain.pdf"), Path("tilted.png"), Path("blank.png")});
  ProgramResult const result =
      Make({Out(), Path("tilted.png"), Path("blank.png"), "--deskew", "--clean", "--skip-blank"});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_THAT(result.err,
              HasSubstr("blank.png: is blank and left out: 0.000 percent ink (limit 0.05)"));
  EXPECT_THAT(result.err, HasSubstr("straightened: page 1"));
  EXPECT_THAT(result.err, HasSubstr("specks removed: page 1"));
  EXPECT_EQ(CountPages("plain.pdf"), "2\n");
  EXPECT_EQ(CountPages(), "1\n");
}

TEST_F(Ocr, CommandLineIsChecked) {
  WritePix("page.png", Blank());
  RunQuietly({"make", Out(), Path("page.png")});
  std::vector<std::vector<std::string>> const kWrong = {
      {"append", Out(), Path("page.png"), "--ocr", "eng", "--in-place"},
      {"make", Path("new.pdf"), Path("page.png"), "--ocr", ""},
      {"make", Path("new.pdf"), Path("page.png"), "--orientation", "left"},
      {"make", Path("new.pdf"), Path("page.png"), "--timeout", "-1"},
      {"ocr", Out(), "--psm", "2"},
      {"ocr", Out(), "--output", "-"},
      {"words", Out(), "--format", "xml"},
      {"ocr"}};
  for (auto const& arguments : kWrong) EXPECT_EQ(Run(arguments).exit_code, 2) << arguments.back();
  EXPECT_EQ(Run({"ocr", Path("missing.pdf")}).exit_code, 1);
  EXPECT_FALSE(std::filesystem::exists(Path("new.pdf")));
}

}  // namespace
}  // namespace test
