// sorrelin scan, with sheets that differ: what becomes of each, and which document it goes to.
#include <sys/resource.h>

#include <chrono>
#include <thread>

#include "tests/tools/make_fixture.h"

namespace test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using ::testing::HasSubstr;

class SheetsTest : public MakeTest {
 protected:
  SheetsTest() { fs::create_directory(Path("tmp")); }

  std::vector<std::string> Environment(std::string const& sheets) const {
    return {"SHEETS=" + sheets, "LD_LIBRARY_PATH=" SORRELIN_SHEETS, "TMPDIR=" + Path("tmp"),
            "SOURCE_DATE_EPOCH=86400"};
  }
  // sorrelin scan NAME OPTION...
  ProgramResult Scan(std::string const& sheets, std::string const& name,
                     std::vector<std::string> const& options = {},
                     std::vector<std::string> const& more = {}) const {
    std::vector<std::string> all = {SORRELIN_TOOL, "scan", Path(name)};
    all.insert(all.end(), options.begin(), options.end());
    std::vector<std::string> environment = Environment(sheets);
    environment.insert(environment.end(), more.begin(), more.end());
    return RunProgram(all, {}, environment);
  }
  // 0 if there is no such document.
  long Pages(std::string const& name) const {
    if (!fs::exists(Path(name))) return 0;
    ProgramResult const result = RunProgram({"qpdf", "--show-npages", Path(name)});
    return result.exit_code == 0 ? std::stol(result.out) : -1;
  }
  static std::string Named(std::string const& stem, bool is_bilevel) {
    return stem + (is_bilevel ? "-bilevel.pdf" : "-grey.pdf");
  }
  void ExpectNothingIsLeft() const { EXPECT_TRUE(fs::is_empty(Path("tmp"))); }
};

TEST_F(SheetsTest, BlankSheetsBeginDocuments) {
  ProgramResult const result =
      Scan("text text blank text blank blank text", "post-%d.pdf", {"--separate", "blank"});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_EQ(Pages("post-1.pdf"), 2);
  EXPECT_EQ(Pages("post-2.pdf"), 1);
  EXPECT_EQ(Pages("post-3.pdf"), 1);
  EXPECT_EQ(Pages("post-4.pdf"), 0);
  EXPECT_THAT(result.err, HasSubstr("scan 3: is blank and left out\n"));
  EXPECT_THAT(result.err, HasSubstr("post-1.pdf: 2 pages scanned\n"));
  ExpectNothingIsLeft();
}

TEST_F(SheetsTest, BlankSheetsAtBothEndsMakeNoDocument) {
  EXPECT_EQ(Scan("blank text blank", "post-%d.pdf", {"--separate", "blank"}).exit_code, 0);
  EXPECT_EQ(Pages("post-1.pdf"), 1);
  EXPECT_EQ(Pages("post-2.pdf"), 0);
}

TEST_F(SheetsTest, NumberOfPagesBeginsDocuments) {
  EXPECT_EQ(Scan("text text text text text", "p%03d.pdf", {"--separate", "2"}).exit_code, 0);
  EXPECT_EQ(Pages("p001.pdf"), 2);
  EXPECT_EQ(Pages("p002.pdf"), 2);
  EXPECT_EQ(Pages("p003.pdf"), 1);
}

TEST_F(SheetsTest, PatternIsTheFirstNumberWithoutAFile) {
  WriteAll(Path("p2.pdf"), {'x'});
  fs::create_symlink("nowhere", Path("p3.pdf"));
  for (long run = 0; run < 2; ++run) EXPECT_EQ(Scan("text text", "p%d.pdf").exit_code, 0);
  EXPECT_EQ(Pages("p1.pdf"), 2);
  EXPECT_EQ(Pages("p4.pdf"), 2);
  EXPECT_EQ(ReadAll(Path("p2.pdf")).size(), 1u);
}

TEST_F(SheetsTest, SeparateNeedsAPattern) {
  for (std::string const kind : {"blank", "2"}) {
    ProgramResult const result = Scan("text", "p.pdf", {"--separate", kind});
    EXPECT_EQ(result.exit_code, 2);
    EXPECT_THAT(result.err, HasSubstr("--separate: needs a name with a number"));
  }
  for (std::string const kind : {"0", "-1", "2x", "", "white", "100001"}) {
    EXPECT_EQ(Scan("text", "p%d.pdf", {"--separate", kind}).exit_code, 2) << kind;
  }
}

TEST_F(SheetsTest, BlankSheetsCanBeLeftOutWhereverTheyAre) {
  ProgramResult const result = Scan("blank text blank text blank", "p.pdf", {"--skip-blank"});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_EQ(Pages("p.pdf"), 2);
  EXPECT_THAT(result.err, HasSubstr("scan 5: is blank and left out\n"));
  EXPECT_EQ(Scan("blank text", "all.pdf").exit_code, 0);
  EXPECT_EQ(Pages("all.pdf"), 2);
}

TEST_F(SheetsTest, BilevelSheetsAreLookedAtForInkToo) {
  EXPECT_EQ(Scan("blank text", "p.pdf", {"--skip-blank"}, {"SHEETS_DEPTH=1"}).exit_code, 0);
  EXPECT_EQ(Pages("p.pdf"), 1);
}

TEST_F(SheetsTest, JamLeavesThePagesBefore) {
  ProgramResult const result = Scan("text text jam text", "p.pdf");
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("sheets: has stopped: Document feeder jammed ("));
  EXPECT_THAT(result.err, HasSubstr("p.pdf: 2 pages scanned\n"));
  EXPECT_EQ(Pages("p.pdf"), 2);
  ExpectNothingIsLeft();
}

TEST_F(SheetsTest, ScannerThatSendsNothingIsGivenUp) {
  for (std::string const kind : {"silent", "stuck"}) {
    ProgramResult const result = Scan("text " + kind, kind + ".pdf", {"--wait", "1"});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.err, HasSubstr("sheets: has sent nothing for 1 seconds ("));
    EXPECT_THAT(result.err, HasSubstr(".pdf: 1 page scanned\n"));
    EXPECT_EQ(Pages(kind + ".pdf"), 1);
    ExpectNothingIsLeft();
  }
}

TEST_F(SheetsTest, ScannerThatIsNotClosedIsLeft) {
  ProgramResult const result = Scan("text held", "p.pdf");
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_EQ(Pages("p.pdf"), 2);
  ExpectNothingIsLeft();
}

// Before a sheet is pulled in for nothing.
TEST_F(SheetsTest, LanguageThatIsNotThereEndsTheRunBeforeTheFirstSheet) {
  ProgramResult const result = Scan("stuck", "p.pdf", {"--ocr", "xyz"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("--ocr: "));
  EXPECT_FALSE(fs::exists(Path("p.pdf")));
}

TEST_F(SheetsTest, CodingThatDoesNotSuitEndsTheRunBeforeTheFirstSheet) {
  ProgramResult const jpeg = Scan("stuck", "p.pdf", {"--compression", "jpeg"}, {"SHEETS_DEPTH=1"});
  EXPECT_EQ(jpeg.exit_code, 1);
  EXPECT_THAT(jpeg.err, HasSubstr("sheets: scans black and white, and JPEG codes"));
  ProgramResult const g4 = Scan("stuck", "p.pdf", {"--compression", "g4"});
  EXPECT_EQ(g4.exit_code, 1);
  EXPECT_THAT(g4.err, HasSubstr("and Group 4 codes no more (--mode bilevel)"));
}

TEST_F(SheetsTest, ShortPageIsKeptAndNoted) {
  for (std::string const coding : {"auto", "jpeg"}) {
    fs::remove(Out());
    ProgramResult const result = Scan("short", "out.pdf", {"--compression", coding});
    EXPECT_EQ(result.exit_code, 0) << result.err;
    EXPECT_THAT(result.err, HasSubstr("scan 1: the scanner sent fewer lines than it had"));
    EXPECT_TRUE(DocumentHas(coding == "jpeg" ? "/Height 400\n" : "/Height 200\n")) << coding;
  }
}

// What is passed as it is was coded while the sheet moved.
TEST_F(SheetsTest, LinesAreCodedAsTheyCome) {
  Scan("text", "g4.pdf", {}, {"SHEETS_DEPTH=1"});
  EXPECT_EQ(Scan("text", "g4.pdf", {"--json"}, {"SHEETS_DEPTH=1"}).exit_code, 0);
  ProgramResult const g4 = Scan("text", "g4.pdf", {"--json"}, {"SHEETS_DEPTH=1"});
  EXPECT_THAT(g4.out, HasSubstr("\"coding\": \"g4\",\n      \"data\": \"passed\""));
  ProgramResult const jpeg = Scan("text", "jpeg.pdf", {"--json", "--compression", "jpeg"});
  EXPECT_THAT(jpeg.out, HasSubstr("\"coding\": \"jpeg\",\n      \"data\": \"passed\""));
  ProgramResult const flate =
      Scan("text", "flate.pdf", {"--json", "--compression", "flate"}, {"SHEETS_DEPTH=1"});
  EXPECT_THAT(flate.out, HasSubstr("\"coding\": \"flate\",\n      \"data\": \"coded\""));
}

// The most that any program so far has held in memory.
long PeakKib() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  return usage.ru_maxrss;
}

// 640 x 30,000 grey pixels are 19 MB, and 640 x 240,000 bilevel ones as many.
TEST_F(SheetsTest, CodedPagesNeedNoMemoryForAllTheirPixels) {
  for (bool const is_bilevel : {false, true}) {
    std::vector<std::string> const options = {"--compression", is_bilevel ? "g4" : "jpeg", "--page",
                                              "a4"};
    std::string const depth = is_bilevel ? "SHEETS_DEPTH=1" : "SHEETS_DEPTH=8";
    EXPECT_EQ(Scan("text", Named("a", is_bilevel), options, {depth}).exit_code, 0);
    long const before = PeakKib();
    ProgramResult const result =
        Scan("text", Named("b", is_bilevel), options,
             {depth, is_bilevel ? "SHEETS_LINES=240000" : "SHEETS_LINES=30000"});
    EXPECT_EQ(result.exit_code, 0) << result.err;
    EXPECT_LT(PeakKib() - before, 8 * 1024) << depth;
  }
}

TEST_F(SheetsTest, PagesThatAreStraightenedAreCodedAfterIt) {
  ProgramResult const result =
      Scan("text", "p.pdf", {"--json", "--compression", "jpeg", "--deskew"});
  EXPECT_THAT(result.out, HasSubstr("\"coding\": \"jpeg\",\n      \"data\": \"coded\""));
}

TEST_F(SheetsTest, MissingLibraryIsNamedWithItsPackage) {
  WriteAll(Path("libsane.so.1"), {'n', 'o', 'n', 'e'});
  ProgramResult const result = RunProgram({SORRELIN_TOOL, "scan", Path("p.pdf")}, {},
                                          {"LD_LIBRARY_PATH=" + directory_.path().string()});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("libsane is missing (install the package libsane1)"));
}

TEST_F(SheetsTest, JpegPagesAreThoseOfMake) {
  for (std::string const quality : {"30", "75", "95"}) {
    fs::remove(Out());
    Scan("text", "out.pdf", {"--compression", "jpeg", "--quality", quality});
    RunProgram({SORRELIN_TOOL, "extract", Out(), "--output", Path("a.pnm"), "--force"});
    fs::remove(Path("p.pdf"));
    Scan("text", "p.pdf", {});
    RunProgram({SORRELIN_TOOL, "extract", Path("p.pdf"), "--output", Path("b.pnm"), "--force"});
    Make({Out(), Path("b.pnm"), "--compression", "jpeg", "--quality", quality, "--force"});
    RunProgram({SORRELIN_TOOL, "extract", Out(), "--output", Path("b.pnm"), "--force"});
    EXPECT_EQ(ReadAll(Path("a.pnm")), ReadAll(Path("b.pnm"))) << quality;
  }
}

TEST_F(SheetsTest, TitleIsThatOfNewDocuments) {
  EXPECT_EQ(Scan("text text", "p%d.pdf", {"--separate", "1", "--title", "Post", "--author", "A"})
                .exit_code,
            0);
  for (char const* const name : {"p1.pdf", "p2.pdf"}) {
    ProgramResult const info = RunProgram({"pdfinfo", Path(name)});
    EXPECT_THAT(info.out, HasSubstr("Post\n"));
    EXPECT_THAT(info.out, HasSubstr("Jan  2 "));
  }
  ProgramResult const result = Scan("text", "p1.pdf", {"--title", "Other"});
  EXPECT_EQ(result.exit_code, 2);
  EXPECT_THAT(result.err, HasSubstr("exists, and keeps its title"));
}

TEST_F(SheetsTest, SameSheetsGiveTheSameBytes) {
  Scan("text text text", "a.pdf");
  Scan("text text text", "b.pdf");
  EXPECT_EQ(Pages("a.pdf"), 3);
  EXPECT_EQ(ReadAll(Path("a.pdf")), ReadAll(Path("b.pdf")));
}

TEST_F(SheetsTest, StyleOfPagesIsThatOfMake) {
  Scan("text", "out.pdf", {"--dpi", "100", "--rotate", "90", "--border", "1in"});
  ProgramResult const info = RunProgram({"pdfinfo", Out()});
  // 6.4 x 4 inches, turned, and a border around.
  EXPECT_THAT(info.out, HasSubstr("432 x 605 pts"));
}

TEST_F(SheetsTest, ReportComesAfterEachPage) {
  ProgramResult const result = Scan("text text jam", "p.pdf", {"--json", "--quiet"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.out, HasSubstr("\"pages\": 1,"));
  EXPECT_THAT(result.out, HasSubstr("\"pages\": 2,"));
  EXPECT_THAT(result.out, HasSubstr("\"file\": \"scan 2\""));
}

TEST_F(SheetsTest, FullDiskLeavesThePagesBefore) {
  // 256,000 bytes a page; the limit is 512 or 1,024 bytes times 1,100, as the shell counts.
  std::vector<std::string> const all = {"sh",
                                        "-c",
                                        "ulimit -f 1100; exec \"$0\" \"$@\"",
                                        SORRELIN_TOOL,
                                        "scan",
                                        Out(),
                                        "--compression",
                                        "none"};
  ProgramResult const result =
      RunProgram(all, {}, Environment("text text text text text text text text"));
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("out.pdf: "));
  long const pages = Pages("out.pdf");
  EXPECT_TRUE(pages == 2 || pages == 4) << pages;
  EXPECT_EQ(RunProgram({"qpdf", "--check", Out()}).exit_code, 0);
  ExpectNothingIsLeft();
}

// A page that was reported is in the document, whatever happens then.
TEST_F(SheetsTest, KilledRunKeepsEveryPageThatWasReported) {
  std::vector<std::string> const all = {
      "sh",   "-c", "out=$1; shift; exec \"$0\" \"$@\" --json >$out", SORRELIN_TOOL, Path("report"),
      "scan", Out()};
  int const null = open("/dev/null", O_RDONLY | O_CLOEXEC);
  for (size_t after = 1; after <= 4; ++after) {
    fs::remove(Out());
    fs::remove(Path("report"));
    RunningProgram run(all, Environment("text text text text text text text text"), null);
    auto const reported = [&] {
      auto const bytes = fs::exists(Path("report")) ? ReadAll(Path("report")) : std::vector<BYTE>{};
      std::string const text(bytes.begin(), bytes.end());
      size_t count = 0;
      for (size_t at = 0; (at = text.find("\"written\": true", at)) != text.npos; ++at) ++count;
      return count;
    };
    for (int i = 0; i < 6000 && reported() < after; ++i) std::this_thread::sleep_for(5ms);
    run.Signal(SIGKILL);
    run.Wait();
    long const seen = static_cast<long>(reported());
    EXPECT_GE(seen, static_cast<long>(after));
    EXPECT_GE(Pages("out.pdf"), seen);
    EXPECT_LE(Pages("out.pdf"), seen + 1);
  }
  close(null);
}

}  // namespace
}  // namespace test
