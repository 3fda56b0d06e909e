// sorrelin scan, with the scanner that SANE has for tests; scanimage is the witness.
#include <chrono>
#include <functional>
#include <memory>
#include <thread>

#include "tests/tools/make_fixture.h"

namespace test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class ScanTest : public MakeTest {
 protected:
  ScanTest() {
    for (char const* const folder : {"etc", "tmp"}) fs::create_directory(Path(folder));
    WriteText("etc/dll.conf", "test\n");
    WriteText("etc/test.conf", "number_of_devices 1\nmode \"Gray\"\ndepth 8\nresolution 50\n");
    null_ = open("/dev/null", O_RDONLY | O_CLOEXEC);
  }
  ~ScanTest() override { close(null_); }

  void WriteText(std::string const& name, std::string const& text) const {
    WriteAll(Path(name), {text.begin(), text.end()});
  }
  std::vector<std::string> Environment() const {
    return {"SANE_CONFIG_DIR=" + Path("etc"), "TMPDIR=" + Path("tmp")};
  }
  std::vector<std::string> Arguments(std::vector<std::string> const& options) const {
    std::vector<std::string> all = {SORRELIN_TOOL, "scan", Out()};
    all.insert(all.end(), options.begin(), options.end());
    return all;
  }
  ProgramResult Scan(std::vector<std::string> const& options,
                     std::vector<BYTE> const& input = {}) const {
    return RunProgram(Arguments(options), input, Environment());
  }
  std::unique_ptr<RunningProgram> Start(std::vector<std::string> const& options) const {
    return std::make_unique<RunningProgram>(Arguments(options), Environment(), null_);
  }
  long Pages() const {
    ProgramResult const result = RunProgram({"qpdf", "--show-npages", Out()});
    return result.exit_code == 0 ? std::stol(result.out) : -1;
  }
  std::vector<std::string> TemporaryNames() const {
    std::vector<std::string> names;
    for (auto const& entry : fs::directory_iterator(Path("tmp"))) names.push_back(entry.path());
    return names;
  }

  // The picture of the only page of a document.
  std::vector<BYTE> Picture(std::string const& document) const {
    ProgramResult const result = RunProgram(
        {SORRELIN_TOOL, "extract", document, "--output", Path("page.pnm"), "--force", "--quiet"});
    EXPECT_EQ(result.exit_code, 0) << result.err;
    return ReadAll(Path("page.pnm"));
  }
  std::vector<BYTE> Scanned() const { return Picture(Out()); }

  // What scanimage gives for its own options.
  std::vector<BYTE> Expected(std::vector<std::string> const& options) const {
    std::vector<std::string> all = {"scanimage",    "-d", "test:0",
                                    "--format=pnm", "-o", Path("w.pnm")};
    all.insert(all.end(), options.begin(), options.end());
    ProgramResult const result = RunProgram(all, {}, Environment());
    EXPECT_EQ(result.exit_code, 0) << result.err;
    Make({Path("w.pdf"), Path("w.pnm"), "--dpi", "50", "--force"});
    return Picture(Path("w.pdf"));
  }

 private:
  int null_ = -1;
};

TEST_F(ScanTest, ListHasTheScannerAndWhatItTakes) {
  ProgramResult const result = RunProgram({SORRELIN_TOOL, "scan", "--list"}, {}, Environment());
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_THAT(result.out, HasSubstr("test:0: Noname frontend-tester virtual device\n"));
  EXPECT_THAT(result.out, HasSubstr("\n  mode=Gray  Gray|Color\n"));
  EXPECT_THAT(result.out, HasSubstr("\n  resolution=50  1..1200\n"));
}

struct Kind {
  char const* name;
  char const* mode;  // of scanimage
  char const* depth;
};

TEST_F(ScanTest, PagesOfEveryModeAndDepthAreThoseOfScanimage) {
  for (Kind const& kind :
       {Kind{"bilevel", "Gray", "1"}, Kind{"grey", "Gray", "8"}, Kind{"grey", "Gray", "16"},
        Kind{"colour", "Color", "8"}, Kind{"colour", "Color", "16"}}) {
    fs::remove(Out());
    // An odd width, so that lines end within a byte.
    EXPECT_EQ(Scan({"--mode", kind.name, "--option", std::string("depth=") + kind.depth, "--option",
                    "test-picture=Grid", "--option", "br-x=37"})
                  .exit_code,
              0);
    EXPECT_EQ(Scanned(), Expected({"--mode", kind.mode, "--depth", kind.depth, "--test-picture",
                                   "Grid", "-x", "37"}))
        << kind.name << " " << kind.depth;
  }
}

TEST_F(ScanTest, HandScannerOfUnknownLengthGivesThePageThatCame) {
  EXPECT_EQ(Scan({"--option", "hand-scanner=yes", "--option", "test-picture=Grid"}).exit_code, 0);
  EXPECT_EQ(Scanned(), Expected({"--hand-scanner=yes", "--test-picture", "Grid"}));
}

// JPEG data begin with the height, so they are made when it is known.
TEST_F(ScanTest, UnknownLengthIsNoObstacleToACoding) {
  std::vector<std::string> const hand = {"--option", "hand-scanner=yes", "--option",
                                         "test-picture=Grid"};
  auto with = [&](std::vector<std::string> more) {
    more.insert(more.end(), hand.begin(), hand.end());
    return Scan(more).exit_code;
  };
  EXPECT_EQ(with({"--mode", "bilevel"}), 0);
  EXPECT_EQ(Scanned(), Expected({"--hand-scanner=yes", "--depth", "1", "--test-picture", "Grid"}));
  fs::remove(Out());
  EXPECT_EQ(with({"--compression", "jpeg"}), 0);
  auto const ours = Scanned();
  auto const theirs = Expected({"--hand-scanner=yes", "--test-picture", "Grid"});
  EXPECT_EQ(ours.size(), theirs.size());
  EXPECT_TRUE(DocumentHas("/DCTDecode"));
}

TEST_F(ScanTest, SlowAndFuzzyScannersGiveTheSamePage) {
  Scan({"--option", "read-limit=yes", "--option", "read-limit-size=7", "--option",
        "fuzzy-parameters=yes", "--option", "test-picture=Color pattern"});
  EXPECT_EQ(Scanned(), Expected({"--test-picture", "Color pattern"}));
}

TEST_F(ScanTest, FeederIsEmptiedAndPagesAreAdded) {
  EXPECT_THAT(Scan({"--source", "adf"}).err, HasSubstr("out.pdf: 10 pages scanned\n"));
  EXPECT_EQ(Pages(), 10);
  EXPECT_THAT(Scan({"--source", "flatbed"}).err, HasSubstr("out.pdf: 1 page scanned\n"));
  EXPECT_EQ(Pages(), 11);
}

TEST_F(ScanTest, BlankPagesAreLeftOutAndTheFeederIsEmptied) {
  std::vector<std::string> const white = {"--source", "adf", "--skip-blank", "--option",
                                          "test-picture=Solid white"};
  for (int const pages : {0, 1}) {
    ProgramResult const result = Scan(white);
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_THAT(result.err, HasSubstr("sorrelin: scan 1: is blank and left out\n"));
    EXPECT_THAT(result.err, HasSubstr("sorrelin: scan 10: is blank and left out\n"));
    EXPECT_EQ(fs::exists(Out()), pages == 1);
    if (pages == 0) Scan({});
  }
  EXPECT_EQ(Pages(), 1);
}

TEST_F(ScanTest, ResolutionIsTheScannersAndThePages) {
  Scan({"--resolution", "100", "--option", "br-x=25.4", "--option", "br-y=50.8", "--mode", "grey"});
  ProgramResult const info = RunProgram({"pdfinfo", Out()});
  EXPECT_THAT(info.out, ::testing::ContainsRegex("Page size: +7[12](\\.[0-9]*)? x 14[34]"));
}

TEST_F(ScanTest, OtherResolutionThanWasAskedForIsSaid) {
  EXPECT_THAT(Scan({"--resolution", "5000", "--option", "br-x=9", "--option", "br-y=9"}).err,
              HasSubstr("test:0: scans at 1200 dots per inch in place of 5000\n"));
}

TEST_F(ScanTest, PageIsTheAreaToo) {
  Scan({"--page", "100x50mm", "--resolution", "127"});
  EXPECT_TRUE(DocumentHas("/Width 500\n") || DocumentHas("/Width 499\n"));
  EXPECT_TRUE(DocumentHas("/Height 250\n") || DocumentHas("/Height 249\n"));
}

TEST_F(ScanTest, PromptAsksBeforeEachPage) {
  ProgramResult const result = Scan({"--prompt"}, {'\n', '\n', 'q', '\n'});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_THAT(result.err, HasSubstr("page 3: put it in and press Enter"));
  EXPECT_EQ(Pages(), 2);
}

TEST_F(ScanTest, ScannerThatStopsIsNamedAndThePagesBeforeStay) {
  Scan({});
  for (std::string const error :
       {"SANE_STATUS_JAMMED", "SANE_STATUS_NO_DOCS", "SANE_STATUS_IO_ERROR",
        "SANE_STATUS_COVER_OPEN", "SANE_STATUS_NO_MEM", "SANE_STATUS_ACCESS_DENIED",
        "SANE_STATUS_EOF"}) {
    ProgramResult const result =
        Scan({"--source", "adf", "--option", "read-return-value=" + error});
    EXPECT_EQ(result.exit_code, 1) << error;
    EXPECT_THAT(result.err, HasSubstr("test:0: has ")) << error;
    EXPECT_EQ(Pages(), 1) << error;
    EXPECT_THAT(TemporaryNames(), IsEmpty());
  }
}

TEST_F(ScanTest, FormsThatAreNotReadAreNamed) {
  EXPECT_THAT(Scan({"--mode", "colour", "--option", "three-pass=yes"}).err,
              HasSubstr("sends colours one after the other ("));
  EXPECT_THAT(Scan({"--mode", "colour", "--option", "depth=1"}).err,
              HasSubstr("sends lines of a form that is not known ("));
  EXPECT_FALSE(fs::exists(Out()));
}

TEST_F(ScanTest, WhatTheScannerDoesNotHaveIsNamed) {
  EXPECT_THAT(Scan({"--device", "nowhere:1"}).err, HasSubstr("nowhere:1: cannot be opened: "));
  EXPECT_THAT(Scan({"--source", "duplex"}).err,
              HasSubstr("has no source duplex (it has Flatbed|Automatic Document Feeder)"));
  EXPECT_THAT(Scan({"--option", "nonsense=1"}).err, HasSubstr("has no option nonsense ("));
  EXPECT_THAT(Scan({"--option", "resolution=many"}).err,
              HasSubstr("resolution takes 1..1200, not many ("));
  EXPECT_THAT(Scan({"--option", "depth=8.5"}).err, HasSubstr("depth takes 1|8|16, not 8.5 ("));
  EXPECT_EQ(Scan({"--option", "nonsense"}).exit_code, 2);
  WriteText("etc/dll.conf", "");
  EXPECT_THAT(Scan({}).err, HasSubstr("scanner: there is none ("));
  EXPECT_THAT(RunProgram({SORRELIN_TOOL, "scan", "--list"}, {}, Environment()).err,
              HasSubstr("scanner: there is none ("));
  EXPECT_THAT(RunProgram({SORRELIN_TOOL, "scan"}).err, HasSubstr("DOC: is missing: "));
}

TEST_F(ScanTest, DocumentThatTakesNoPagesEndsTheRun) {
  WriteText("out.pdf", "no document");
  EXPECT_EQ(Scan({"--source", "adf"}).exit_code, 1);
  EXPECT_EQ(ReadAll(Out()).size(), 11u);
}

// At any moment the document is whole, and has the pages that were scanned.
TEST_F(ScanTest, KilledRunLeavesAWholeDocument) {
  Scan({});
  long before = 1;
  for (auto delay = 100ms; delay < 900ms; delay += 150ms) {
    auto const run = Start({"--source", "adf"});
    std::this_thread::sleep_for(delay);
    run->Signal(SIGKILL);
    run->Wait();
    long const pages = Pages();
    EXPECT_GE(pages, before);
    EXPECT_LE(pages, before + 10);
    before = pages;
    EXPECT_EQ(RunProgram({"qpdf", "--check", Out()}).exit_code, 0);
  }
}

TEST_F(ScanTest, ScannerThatHangsCanBeInterrupted) {
  auto const run = Start({"--option", "read-delay=yes", "--option", "read-delay-duration=200000",
                          "--option", "read-limit=yes", "--option", "read-limit-size=1"});
  for (int i = 0; i < 1000 && TemporaryNames().empty(); ++i) std::this_thread::sleep_for(5ms);
  run->Signal(SIGINT);
  EXPECT_EQ(run->Wait().signal, SIGINT);
  EXPECT_THAT(TemporaryNames(), IsEmpty());
  EXPECT_FALSE(fs::exists(Out()));
}

// The daemon has one port for all.
TEST_F(ScanTest, ScannerOfAnotherMachineGivesTheSamePage) {
  fs::create_directory(Path("server"));
  fs::copy(Path("etc/test.conf"), Path("server/test.conf"));
  WriteText("server/dll.conf", "test\n");
  WriteText("server/saned.conf", "127.0.0.1\n");
  auto const expected = Expected({});
  int const null = open("/dev/null", O_RDONLY | O_CLOEXEC);
  RunningProgram daemon({"/usr/sbin/saned", "-l", "-b", "127.0.0.1"},
                        {"SANE_CONFIG_DIR=" + Path("server")}, null);
  WriteText("etc/dll.conf", "net\n");
  WriteText("etc/net.conf", "127.0.0.1\n");
  ProgramResult result;
  for (int i = 0; i < 50 && result.exit_code != 0; ++i) {
    std::this_thread::sleep_for(100ms);
    result = Scan({"--device", "net:127.0.0.1:test:0"});
  }
  close(null);
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_EQ(Scanned(), expected);
}

}  // namespace
}  // namespace test
