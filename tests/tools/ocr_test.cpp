// Invisible text on pages: of make and append, and of documents that are there.
#include <signal.h>

#include <cstdlib>

#include "tests/tools/ocr_fixture.h"

namespace test {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class Ocr : public OcrTest {};

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

TEST_F(Ocr, OtherViewersFindTheWords) {
  WritePix("page.png", Lines());
  RunQuietly({"make", Out(), Path("page.png"), "--ocr", "eng"});
  EXPECT_THAT(OutputOf({"mutool", "draw", "-q", "-F", "text", Out()}),
              HasSubstr("The old harbour lies behind a long"));
  EXPECT_THAT(OutputOf({GHOSTSCRIPT, "-q", "-dNOPAUSE", "-dBATCH", "-sDEVICE=txtwrite",
                        "-sOutputFile=-", Out()}),
              HasSubstr("The  old  harbour  lies  behind  a  long"));
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
  std::ofstream(Path("text.ps")) << "/Helvetica findfont 12 scalefont setfont 72 700 moveto "
                                    "(Typed) show showpage\n";
  OutputOf({GHOSTSCRIPT, "-q", "-dNOPAUSE", "-dBATCH", "-sDEVICE=pdfwrite", "-sOutputFile=" + Out(),
            Path("text.ps")});
  Bytes const before = Document();
  RunQuietly({"ocr", Out(), "--redo"});
  EXPECT_EQ(Document(), before);
  RunQuietly({"ocr", Out(), "--redo", "--output", Path("copy.pdf")});
  EXPECT_EQ(ReadAll(Path("copy.pdf")), before);
}

TEST_F(Ocr, TurnedPagesAreShownUprightAndHaveTheirWords) {
  for (int quarters : {1, 2}) {
    WritePix("page.png", Lines(quarters));
    RunQuietly(
        {"make", Out(), Path("page.png"), "--force", "--ocr", "eng", "--orientation", "auto"});
    ExpectWords("out.pdf");
    ExtractAll({"--output", Path("back.png"), "--force"});
    EXPECT_TRUE(DocumentHas(quarters == 1 ? "/Rotate 270" : "/Rotate 180"));
  }
}

TEST_F(Ocr, MissingLanguageNamesThePackageAndWritesNothing) {
  WritePix("page.png", Blank());
  ProgramResult const result = Make({Out(), Path("page.png"), "--ocr", "eng+chi_xxx"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("\"chi_xxx\" are not installed (apt install "
                                    "tesseract-ocr-chi-xxx)"));
  EXPECT_FALSE(std::filesystem::exists(Out()));
}

TEST_F(Ocr, LocaleChoosesTheLanguage) {
  WritePix("page.png", Blank());
  ProgramResult const result =
      Make({Out(), Path("page.png"), "--ocr", "auto"}, {}, {"LANGUAGE=", "LC_ALL=yo_NG.UTF-8"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("apt install tesseract-ocr-yor"));
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
}

TEST_F(Ocr, EncryptedSignedAndDamagedDocumentsAreLeftAlone) {
  WritePix("page.png", Blank());
  RunQuietly({"make", Path("plain.pdf"), Path("page.png")});
  OutputOf({"qpdf", "--encrypt", "", "owner", "256", "--", Path("plain.pdf"), Path("locked.pdf")});
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
      {"ocr"}};
  for (auto const& arguments : kWrong) EXPECT_EQ(Run(arguments).exit_code, 2) << arguments.back();
  EXPECT_EQ(Run({"ocr", Path("missing.pdf")}).exit_code, 1);
  EXPECT_FALSE(std::filesystem::exists(Path("new.pdf")));
}

}  // namespace
}  // namespace test
