// Where pictures come from and where the document goes: directories, orders, standard input and
// output, and any number of jobs.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/tools/make_fixture.h"

namespace test {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class MakeInputs : public MakeTest {
 protected:
  // A picture that becomes a page of `width` points.
  void WritePicture(std::string const& name, int width) {
    PngForm form;
    form.width = width;
    form.x_per_metre = form.y_per_metre = 2835;
    WritePng(Path(name), form,
             [](int x, int y, int) { return static_cast<unsigned>(x * 7 + y) & 0xFF; });
  }

  // The widths of the pages, in their order.
  std::vector<int> Widths() const {
    std::vector<BYTE> const bytes = Document();
    return WidthsOf(std::string(bytes.begin(), bytes.end()));
  }

  static std::vector<int> WidthsOf(std::string const& document) {
    std::vector<int> widths;
    std::string const key = "/MediaBox [0 0 ";
    for (size_t at = 0; (at = document.find(key, at)) != std::string::npos; ++at) {
      widths.push_back(std::atoi(document.c_str() + at + key.size()));
    }
    return widths;
  }
};

// Zeros only fill a file up. The pictures before other bytes are pages.
TEST_F(MakeInputs, BytesAfterTheEndOfAFileAreAProblemInEveryFormat) {
  WritePicture("a.png", 72);
  std::string const commands =
      "cd \"$0\" && pngtopnm a.png >a.pgm && ppmtobmp a.pgm >a.bmp 2>/dev/null && "
      "cwebp -quiet -lossless a.png -o a.webp && opj_compress -i a.pgm -o a.j2k && "
      "pamtotiff a.pgm >a.tif && tiffcp -8 a.tif a.tif big.tif && "
      "tiffcp -c lzw -t -w 16 -l 16 a.tif a.tif a.tif tiles.tif";
  std::vector<std::string> names = {"a.bmp", "a.webp", "a.j2k", "a.tif", "big.tif", "tiles.tif"};
  ProgramResult const run = RunProgram({"sh", "-c", commands, directory_.path().string()});
  ASSERT_EQ(run.exit_code, 0) << run.err;
  if (SORRELIN_TEST_HEIF != 0) {
    for (std::string const name : {"a.heic", "a.avif"}) {
      RunProgram({"heif-enc", name == "a.avif" ? "-A" : "-q80", Path("a.png"), "-o", Path(name)});
      if (std::filesystem::exists(Path(name))) names.push_back(name);
    }
  }
  for (std::string const& name : names) {
    MakeFrom(name, {"--force", "--dpi", "72"});
    long const pages = PageCount();
    std::vector<BYTE> const whole = ReadAll(Path(name));
    std::vector<BYTE> bytes = whole;
    bytes.resize(bytes.size() + 100);
    WriteAll(Path(name), bytes);
    MakeFrom(name, {"--force", "--dpi", "72"});
    for (std::vector<BYTE> const& rest : {std::vector<BYTE>{'j', 'u', 'n', 'k'}, whole}) {
      bytes = whole;
      bytes.insert(bytes.end(), rest.begin(), rest.end());
      WriteAll(Path(name), bytes);
      ProgramResult const result = Make({Out(), Path(name), "--force", "--dpi", "72"});
      EXPECT_EQ(result.exit_code, 1) << name;
      EXPECT_THAT(result.err, HasSubstr(Path(name) + ": goes on after its end")) << name;
      EXPECT_EQ(PageCount(), pages) << name;
    }
  }
}

TEST_F(MakeInputs, DirectoryGivesItsPicturesByName) {
  std::filesystem::create_directory(Path("scans"));
  WritePicture("scans/s10.png", 110);
  WritePicture("scans/s2.png", 102);
  WriteAll(Path("scans/notes.txt"), {'n', 'o', 't', 'e', 's'});
  WritePicture("first.png", 100);
  EXPECT_EQ(Make({Out(), Path("first.png"), Path("scans")}).exit_code, 0);
  EXPECT_THAT(Widths(), ElementsAre(100, 110, 102));
}

TEST_F(MakeInputs, SortOrdersAllFiles) {
  for (int const number : {10, 9, 100}) {
    WritePicture("s" + std::to_string(number) + ".png", 100 + number);
  }
  std::vector<std::string> arguments = {
      Out(), Path("s10.png"), Path("s9.png"), Path("s100.png"), "--force", "--sort"};
  arguments.push_back("none");
  EXPECT_EQ(Make(arguments).exit_code, 0);
  EXPECT_THAT(Widths(), ElementsAre(110, 109, 200));
  arguments.back() = "name";
  EXPECT_EQ(Make(arguments).exit_code, 0);
  EXPECT_THAT(Widths(), ElementsAre(110, 200, 109));
  arguments.back() = "natural";
  EXPECT_EQ(Make(arguments).exit_code, 0);
  EXPECT_THAT(Widths(), ElementsAre(109, 110, 200));
}

TEST_F(MakeInputs, DirectoryWithoutPicturesIsNamedAndTheRestWritten) {
  std::filesystem::create_directory(Path("empty"));
  WritePicture("a.png", 100);
  ProgramResult const result = Make({Out(), Path("empty"), Path("a.png")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr(Path("empty") + ": is a directory without pictures"));
  EXPECT_EQ(PageCount(), 1);
}

TEST_F(MakeInputs, PictureOfADirectoryIsNotOverwrittenByTheDocument) {
  std::filesystem::create_directory(Path("d"));
  WritePicture("d/a.png", 100);
  std::vector<BYTE> const before = ReadAll(Path("d/a.png"));
  ProgramResult const result = Make({Path("d/a.png"), Path("d"), "--force"});
  EXPECT_EQ(result.exit_code, 2);
  EXPECT_THAT(result.err, HasSubstr("is one of the images"));
  EXPECT_EQ(ReadAll(Path("d/a.png")), before);
}

TEST_F(MakeInputs, StandardInputStandsInItsPlace) {
  WritePicture("a.png", 100);
  WritePicture("b.png", 101);
  WritePicture("in.png", 102);
  ProgramResult const result =
      Make({Out(), Path("a.png"), "-", Path("b.png")}, ReadAll(Path("in.png")));
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_THAT(Widths(), ElementsAre(100, 102, 101));
}

TEST_F(MakeInputs, EveryPictureOfAStreamIsAPage) {
  std::string const stream = std::string("P4 100 1\n") + std::string(13, 'x') + "P5 101 1 255\n" +
                             std::string(101, 'x') + "P6 102 1 255\n" + std::string(306, 'x');
  ProgramResult const result = Make({Out(), "-", "--dpi", "72"}, {stream.begin(), stream.end()});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(result.err, "");
  EXPECT_THAT(Widths(), ElementsAre(100, 101, 102));
}

// Pages of more than a megabyte each; a checked build keeps freed memory unless it is told not to.
TEST_F(MakeInputs, MemoryDoesNotGrowWithTheLengthOfAStream) {
  std::string const header = "P4 2480 3508\n";
  std::vector<BYTE> page(header.size() + 310 * 3508, 0x55);
  std::copy(header.begin(), header.end(), page.begin());
  WriteAll(Path("page.pbm"), page);
  std::string const command =
      "i=0; while [ $i -lt $1 ]; do cat \"$2\"; i=$((i + 1)); done | "
      "ASAN_OPTIONS=$ASAN_OPTIONS:quarantine_size_mb=1 \"$0\" make \"$3\" - --dpi 300 --force "
      "--jobs 2";
  auto const peak_of = [&](int pages) {
    ProgramResult const result = RunProgram(
        {"sh", "-c", command, SORRELIN_TOOL, std::to_string(pages), Path("page.pbm"), Out()});
    EXPECT_EQ(result.exit_code, 0) << result.err;
    EXPECT_EQ(PageCount(), pages);
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    return usage.ru_maxrss / 1024;
  };
  long const few = peak_of(8);
  EXPECT_LT(peak_of(60) - few, 16);
}

TEST_F(MakeInputs, TiffOnStandardInputIsATemporaryFileWhileItIsRead) {
  WriteTiff(Path("a.tif"), std::vector<TiffPage>(3),
            [](int page, int x, int y, int) { return static_cast<unsigned>(x + y + page) % 2; });
  std::filesystem::create_directory(Path("tmp"));
  ProgramResult const result =
      Make({Out(), "-"}, ReadAll(Path("a.tif")), {"TMPDIR=" + Path("tmp")});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_EQ(PageCount(), 3);
  EXPECT_TRUE(std::filesystem::is_empty(Path("tmp")));
  for (std::string const& folder : {Path("none"), std::string("/sys")}) {
    ProgramResult const nowhere =
        Make({Out(), "-", "--force"}, ReadAll(Path("a.tif")), {"TMPDIR=" + folder});
    EXPECT_EQ(nowhere.exit_code, 1);
    EXPECT_THAT(nowhere.err, AllOf(HasSubstr("standard input: "), HasSubstr("(TMPDIR names")));
  }
}

TEST_F(MakeInputs, DamagedPictureOfAStreamIsNamedByItsNumberAndKeptOnlyIfAsked) {
  std::string const stream = "P5 100 1 255\n" + std::string(100, 'x') + "P5 101 2 255\nxyz";
  std::vector<BYTE> const input(stream.begin(), stream.end());
  ProgramResult const result = Make({Out(), "-", "--dpi", "72"}, input);
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(
      result.err,
      HasSubstr("standard input: page 2: cannot be decoded whole, it is damaged: the data end"));
  EXPECT_THAT(Widths(), ElementsAre(100));
  ProgramResult const kept = Make({Out(), "-", "--dpi", "72", "--force", "--keep-damaged"}, input);
  EXPECT_EQ(kept.exit_code, 1);
  EXPECT_THAT(kept.err, HasSubstr("standard input: page 2: is damaged, and kept"));
  EXPECT_THAT(Widths(), ElementsAre(100, 101));
}

TEST_F(MakeInputs, DocumentGoesToStandardOutputAndNothingIsLeft) {
  WritePicture("a.png", 100);
  std::filesystem::create_directory(Path("tmp"));
  ProgramResult const result = Make({"-", Path("a.png")}, {}, {"TMPDIR=" + Path("tmp")});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_THAT(WidthsOf(result.out), ElementsAre(100));
  WriteAll(Out(), {result.out.begin(), result.out.end()});
  EXPECT_EQ(RunProgram({"qpdf", "--check", Out()}).exit_code, 0);
  EXPECT_TRUE(std::filesystem::is_empty(Path("tmp")));
}

TEST_F(MakeInputs, FailedRunWritesNothingToStandardOutput) {
  ProgramResult const result = Make({"-", Path("missing.png")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err, HasSubstr("sorrelin: standard output: is not written"));
}

TEST_F(MakeInputs, UnusableTemporaryDirectoryIsNamed) {
  WritePicture("a.png", 100);
  for (std::string const& folder : {Path("none"), std::string("/sys")}) {
    ProgramResult const result = Make({"-", Path("a.png")}, {}, {"TMPDIR=" + folder});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.err, AllOf(HasSubstr("standard output: "), HasSubstr("(TMPDIR names")));
  }
}

// Reads a little and goes, as `head` does; the document is longer than a pipe holds.
TEST_F(MakeInputs, ReaderThatGoesEndsTheRunWithoutAMessage) {
  PngForm form;
  form.width = form.height = 500;
  WritePng(Path("a.png"), form, [](int x, int y, int) {
    return static_cast<unsigned>(x * x * 31 + y * y * y) >> 3 & 0xFF;
  });
  std::filesystem::create_directory(Path("tmp"));
  std::string const command =
      "{ \"$0\" make - \"$1\" --compression none --dpi 72; echo $? >\"$2\"; } | true";
  ProgramResult const result =
      RunProgram({"sh", "-c", command, SORRELIN_TOOL, Path("a.png"), Path("code")}, {},
                 {"TMPDIR=" + Path("tmp")});
  EXPECT_EQ(ReadAll(Path("code")), (std::vector<BYTE>{'1', '\n'}));
  EXPECT_EQ(result.err, "");
  EXPECT_TRUE(std::filesystem::is_empty(Path("tmp")));
}

TEST_F(MakeInputs, DocumentIsNotSentToATerminal) {
  WritePicture("a.png", 100);
  ProgramResult const result =
      RunProgram({"script", "-qec", ProgramUnderTest(SORRELIN_TOOL) + " make - " + Path("a.png"),
                  "/dev/null"});
  EXPECT_EQ(result.exit_code, 2);
  EXPECT_THAT(result.out,
              AllOf(HasSubstr("standard output is a terminal"), ::testing::Not(HasSubstr("%PDF"))));
}

TEST_F(MakeInputs, AnyNumberOfJobsMakesTheSameDocumentAndSaysTheSame) {
  std::vector<std::string> arguments = {Out(), "--force", "--jobs", "1"};
  for (int i = 0; i < 12; ++i) {
    std::string const name = "p" + std::to_string(i) + ".png";
    WritePicture(name, 100 + i);
    arguments.push_back(Path(i % 4 == 3 ? "missing" + name : name));
  }
  std::vector<std::string> const environment = {"SOURCE_DATE_EPOCH=1000000000"};
  ProgramResult const one = Make(arguments, {}, environment);
  std::vector<BYTE> const document = Document();
  for (char const* const jobs : {"2", "5"}) {
    arguments[3] = jobs;
    ProgramResult const result = Make(arguments, {}, environment);
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_EQ(result.err, one.err);
    EXPECT_EQ(Document(), document);
  }
  EXPECT_EQ(std::count(one.err.begin(), one.err.end(), '\n'), 3);
  EXPECT_THAT(Widths(), ElementsAre(100, 101, 102, 104, 105, 106, 108, 109, 110));
}

TEST_F(MakeInputs, WrongSortAndJobsAreUsageErrors) {
  WritePicture("a.png", 100);
  for (std::vector<std::string> const& options : std::vector<std::vector<std::string>>{
           {"--sort", "size"}, {"--jobs", "0"}, {"--jobs", "65"}, {"--jobs", "two"}}) {
    std::vector<std::string> arguments = {Out(), Path("a.png")};
    arguments.insert(arguments.end(), options.begin(), options.end());
    ProgramResult const result = Make(arguments);
    EXPECT_EQ(result.exit_code, 2);
    EXPECT_THAT(result.err, HasSubstr(options[0]));
  }
}

}  // namespace
}  // namespace test
