// What a user finds after a run that did not go well: the reasons, the other pages, no half
// document and nothing left over.
#include <fcntl.h>
#include <png.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <tiffio.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include "tests/tools/make_fixture.h"

namespace test {
namespace {

using namespace std::chrono_literals;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

std::vector<BYTE> BytesOf(std::string const& text) { return {text.begin(), text.end()}; }

class MakeFailures : public MakeTest {
 protected:
  void WriteGood(std::string const& name, int side = 72) {
    PngForm form;
    form.width = form.height = side;
    WritePng(Path(name), form,
             [](int x, int y, int) { return static_cast<unsigned>(x * 31 + y * y * 17) & 0xFF; });
  }
  void WriteBilevel(std::string const& name) {
    PngForm form;
    form.bits = 1;
    WritePng(Path(name), form, [](int x, int, int) { return static_cast<unsigned>(x & 1); });
  }
  // Names a file in an error line of its own.
  static std::string Line(std::string const& name) { return "sorrelin: " + name + ": "; }
};

TEST_F(MakeFailures, UnreadableFilesAreNamedAndTheOthersWritten) {
  WriteGood("a.png");
  WriteGood("b.png");
  WriteAll(Path("text.png"), BytesOf("this is no picture at all, but it is long enough"));
  WriteAll(Path("empty.jpg"), {});
  WriteAll(Path("short.bmp"), BytesOf("BM"));
  std::filesystem::create_directory(Path("folder.tif"));
  ProgramResult const result =
      Make({Out(), Path("missing.png"), Path("a.png"), Path("text.png"), Path("empty.jpg"),
            Path("short.bmp"), Path("folder.tif"), Path("b.png"), "--quiet"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err,
              AllOf(HasSubstr(Line(Path("missing.png")) + "No such file or directory"),
                    HasSubstr(Line(Path("text.png")) + "is not a picture of a known format"),
                    HasSubstr(Line(Path("empty.jpg")) + "is empty"),
                    HasSubstr(Line(Path("short.bmp")) + "is not a picture of a known format"),
                    HasSubstr(Line(Path("folder.tif")) + "is a directory without pictures")));
  EXPECT_EQ(PageCount(), 2);
  EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 5);
}

TEST_F(MakeFailures, PictureLibraryIsSilentAboutWhatItDoesNotRead) {
  WriteAll(Path("a.jp2"), BytesOf(std::string("\0\0\0\x0CjP  \r\n\x87\n and no more", 24)));
  ProgramResult const result = Make({Out(), Path("a.jp2")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, StartsWith(Line(Path("a.jp2")) + "is a damaged JPEG 2000 file"));
}

TEST_F(MakeFailures, DamagedPicturesOfEachFormatAreNamedInOneLine) {
  WriteGood("good.png");
  std::vector<BYTE> png = ReadAll(Path("good.png"));
  png.resize(png.size() - 40);
  WriteAll(Path("cut.png"), png);
  WriteAll(Path("bad.jpg"), BytesOf("\xFF\xD8\xFF\xE0 and then nothing that is a JPEG"));
  WriteAll(Path("bad.tif"), BytesOf("II*\x08 and then nothing that is a TIFF file"));
  std::vector<BYTE> tiff = BytesOf("II*");
  tiff.resize(64, 0xEE);
  tiff[3] = 0;
  WriteAll(Path("lost.tif"), tiff);
  for (std::string const name : {"cut.png", "bad.jpg", "bad.tif", "lost.tif"}) {
    ProgramResult const result = Make({Out(), Path(name), Path("good.png"), "--force", "--quiet"});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.err, HasSubstr(Line(Path(name))));
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_EQ(PageCount(), 1);
  }
}

// Of the formats that have no other kinds, a header that cannot be read is a damaged one.
TEST_F(MakeFailures, UnreadableHeaderIsNamedAsDamage) {
  WriteGood("good.png");
  std::vector<BYTE> png = ReadAll(Path("good.png"));
  png[25] = 5;  // no colour type
  std::vector<BYTE> webp = BytesOf(std::string("RIFF\x20\0\0\0WEBPVP8 \x10\0\0\0zzzz", 24));
  std::pair<std::string, std::vector<BYTE>> const files[] = {
      {"a.png", png},
      {"b.png", std::vector<BYTE>(png.begin(), png.begin() + 20)},
      {"a.gif", BytesOf("GIF89a and nothing that could be a palette")},
      {"a.webp", webp},
      {"a.jp2", BytesOf(std::string("\0\0\0\x0CjP  \r\n\x87\n and no more", 24))},
      {"a.jpg", BytesOf("\xFF\xD8\xFF\xE0 and then nothing that is a JPEG")}};
  for (auto const& [name, bytes] : files) {
    WriteAll(Path(name), bytes);
    ProgramResult const result = Make({Out(), Path(name)});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.err, AllOf(StartsWith(Line(Path(name)) + "is a damaged "),
                                  HasSubstr("its header cannot be read (")));
  }
}

TEST_F(MakeFailures, JpegOf12BitsIsNamedAsAnotherKind) {
  JpegForm form;
  std::vector<BYTE> jpeg = MakeJpeg(form, [](int x, int, int) { return static_cast<unsigned>(x); });
  auto const frame = std::adjacent_find(jpeg.begin(), jpeg.end(),
                                        [](BYTE a, BYTE b) { return a == 0xFF && b == 0xC0; });
  ASSERT_NE(frame, jpeg.end());
  frame[4] = 12;
  WriteAll(Path("a.jpg"), jpeg);
  ProgramResult const result = Make({Out(), Path("a.jpg")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, StartsWith(Line(Path("a.jpg")) + "cannot be decoded: it is of a kind"));
}

TEST_F(MakeFailures, PageOfATiffFileThatIsDamagedIsNamedByItsNumber) {
  TiffPage page;
  page.bits = 12;  // not read
  page.compression = COMPRESSION_NONE;
  page.photometric = PHOTOMETRIC_MINISBLACK;
  TiffPage good = page;
  good.bits = 8;
  WriteTiff(Path("a.tif"), {good, page, good},
            [](int, int x, int, int) { return static_cast<unsigned>(x); });
  ProgramResult const result = Make({Out(), Path("a.tif")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr(Line(Path("a.tif")) + "page 2: cannot be decoded"));
  EXPECT_EQ(PageCount(), 2);
}

// Adobe's raw format is TIFF, with a small copy of the photograph as its page.
TEST_F(MakeFailures, RawPhotographIsNamedAndItsSmallCopyIsNoPage) {
  TiffPage page;
  page.compression = COMPRESSION_NONE;
  WriteTiff(Path("a.dng"), {page},
            [](int, int x, int, int) { return static_cast<unsigned>(x & 1); });
  ASSERT_EQ(RunProgram({"tiffset", "-s", "50706", "1", "4", "0", "0", Path("a.dng")}).exit_code, 0);
  ProgramResult const result = Make({Out(), Path("a.dng")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr(Line(Path("a.dng")) + "is a raw photograph"));
  EXPECT_FALSE(std::filesystem::exists(Out()));
}

// The next-directory offset after the first page's directory is pointed past the file's end.
TEST_F(MakeFailures, TiffFileWhosePagesAreLostIsNamed) {
  TiffPage page;
  page.compression = COMPRESSION_NONE;
  WriteTiff(Path("a.tif"), {page, page},
            [](int, int x, int, int) { return static_cast<unsigned>(x & 1); });
  std::vector<BYTE> file = ReadAll(Path("a.tif"));
  size_t const directory = file[4] | static_cast<size_t>(file[5]) << 8;
  size_t const next = directory + 2 + 12u * file[directory];
  file[next + 2] = 0x7F;
  WriteAll(Path("a.tif"), file);
  ProgramResult const result = Make({Out(), Path("a.tif")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("only the first 1 of its pages can be found"));
  EXPECT_EQ(PageCount(), 1);
}

TEST_F(MakeFailures, NamesCannotSteerTheTerminal) {
  ProgramResult const result = Make({Out(), Path("\x1B[31mred.png")});
  EXPECT_THAT(result.err, AllOf(HasSubstr("?[31mred.png"), Not(HasSubstr("\x1B"))));
}

TEST_F(MakeFailures, NoPageLeavesNoDocument) {
  WriteAll(Path("bad.png"), BytesOf("not a picture, whatever its name says"));
  ProgramResult const result = Make({Out(), Path("bad.png")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr(Line(Out()) + "is not written: it would have no pages"));
  EXPECT_THAT(Names(), ElementsAre("bad.png"));
}

TEST_F(MakeFailures, PictureOfLessThanHalfAPointIsNamed) {
  WriteGood("good.png");
  WriteGood("dot.png", 1);
  ProgramResult const result = Make({Out(), Path("dot.png"), Path("good.png"), "--dpi", "300"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr(Line(Path("dot.png")) +
                                    "would be a page of less than half a point at 300 by 300"));
  EXPECT_EQ(PageCount(), 1);
  EXPECT_EQ(CountOf("/Subtype /Image"), 1);
}

TEST_F(MakeFailures, PictureTooLongForJpegIsNamed) {
  PngForm form;
  form.width = 65501;
  form.height = 1;
  WritePng(Path("a.png"), form, [](int, int, int) { return 7u; });
  ProgramResult const result = Make({Out(), Path("a.png"), "--dpi", "72", "--compression", "jpeg"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("is 65501 pixels long, and JPEG ends at 65500"));
}

// Objects 1 to 3 open a document and each page takes six; the catalog and the table's own row are
// the last of the 90,049 rows' numbers: 3 + 6 * 15007 + 2 = 90047.
TEST_F(MakeFailures, FullDocumentIsFinishedAndTheRestNamed) {
  JpegForm form;
  form.width = form.height = 8;
  WriteAll(Path("a.jpg"), MakeJpeg(form, [](int, int, int) { return 0u; }));
  std::vector<std::string> arguments(15010, Path("a.jpg"));
  arguments[0] = Out();
  ProgramResult const result = Make(arguments);
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.err, Line(Path("a.jpg")) +
                            "does not fit: the document is full at 15007 pages (put the rest into "
                            "another one)\n" +
                            Line(Out()) +
                            "1 further file is left out (put the rest into another document)\n");
  EXPECT_EQ(PageCount(), 15007);
  EXPECT_EQ(RunProgram({"qpdf", "--check", Out()}).exit_code, 0);
}

TEST_F(MakeFailures, ExistingDocumentIsLeftAlone) {
  WriteGood("a.png");
  WriteAll(Out(), BytesOf("%PDF-precious"));
  ProgramResult const result = Make({Out(), Path("a.png")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr(Line(Out()) + "exists already (--force replaces it)"));
  EXPECT_EQ(Document(), BytesOf("%PDF-precious"));
  EXPECT_THAT(Names(), ElementsAre("a.png", "out.pdf"));
}

TEST_F(MakeFailures, ForceReplacesTheDocumentAndKeepsItsPermissions) {
  WriteGood("a.png");
  WriteAll(Out(), BytesOf("%PDF-old"));
  chmod(Out().c_str(), 0640);
  MakeFrom("a.png", {"--force"});
  EXPECT_EQ(PageCount(), 1);
  struct stat status {};
  ASSERT_EQ(stat(Out().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0640u);
  EXPECT_THAT(Names(), ElementsAre("a.png", "out.pdf"));
}

TEST_F(MakeFailures, ForceReplacesDocumentsOnly) {
  WriteGood("a.png");
  WriteGood("b.png");
  std::vector<BYTE> const before = ReadAll(Path("a.png"));
  for (std::string const option : {"--force", "--quiet"}) {
    ProgramResult const result = Make({Path("a.png"), Path("b.png"), option});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.err,
                HasSubstr(Line(Path("a.png")) + "exists already, and is no PDF document"));
    EXPECT_EQ(ReadAll(Path("a.png")), before);
  }
  WriteAll(Out(), {});
  MakeFrom("a.png", {"--force"});
}

TEST_F(MakeFailures, PageBeyond14400PointsIsNamed) {
  PngForm form;
  form.width = 300;
  form.height = 1;
  form.x_per_metre = form.y_per_metre = 79;  // 2 dots an inch
  WritePng(Path("long.png"), form, [](int, int, int) { return 7u; });
  ProgramResult const fits = Make({Out(), Path("long.png")});
  EXPECT_EQ(fits.exit_code, 0) << fits.err;
  form.width = 500;
  WritePng(Path("long.png"), form, [](int, int, int) { return 7u; });
  ProgramResult const result = Make({Out(), Path("long.png"), "--force"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("18000 by 36 points at 2 by 2 dots per inch"));
  MakeFrom("long.png", {"--force", "--page", "A4"});
}

TEST_F(MakeFailures, DocumentAmongThePicturesIsRecognised) {
  WriteGood("a.png");
  WriteAll(Path("b.pdf"), BytesOf("%PDF-1.4 and so on, as documents go"));
  ProgramResult const result = Make({Out(), Path("a.png"), Path("b.pdf")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("is a PDF document and no picture (qpdf"));
  EXPECT_EQ(PageCount(), 1);
}

TEST_F(MakeFailures, FailedRunWithForceKeepsTheOldDocument) {
  WriteAll(Out(), BytesOf("%PDF-old"));
  ProgramResult const result = Make({Out(), Path("missing.png"), "--force"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(Document(), BytesOf("%PDF-old"));
}

TEST_F(MakeFailures, ForceWritesThroughALinkAndLeavesItALink) {
  WriteGood("a.png");
  WriteAll(Path("real.pdf"), BytesOf("%PDF-old"));
  std::filesystem::create_symlink("real.pdf", Out());
  MakeFrom("a.png", {"--force"});
  EXPECT_TRUE(std::filesystem::is_symlink(Out()));
  EXPECT_EQ(ReadAll(Path("real.pdf")), Document());
  EXPECT_EQ(PageCount(), 1);
}

TEST_F(MakeFailures, TargetThatIsNoFileIsRefusedEvenWithForce) {
  WriteGood("a.png");
  std::filesystem::create_directory(Out());
  ProgramResult const result = Make({Out(), Path("a.png"), "--force"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("is not a regular file"));
}

TEST_F(MakeFailures, MissingDirectoryIsNamed) {
  WriteGood("a.png");
  ProgramResult const result = Make({Path("no/where/out.pdf"), Path("a.png")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("out.pdf: cannot be created: No such file or directory"));
}

// 16 blocks of 512 bytes: the picture alone is larger.
TEST_F(MakeFailures, FullDiskLeavesNothing) {
  WriteGood("a.png", 300);
  ProgramResult const result =
      RunProgram({"sh", "-c", "ulimit -f 16; exec \"$0\" \"$@\"", SORRELIN_TOOL, "make", Out(),
                  Path("a.png"), "--compression", "none"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr(Line(Out()) + "cannot be written: " +
                                    SystemText("File too large", "General failure")));
  EXPECT_THAT(Names(), ElementsAre("a.png"));
}

TEST_F(MakeFailures, MissingOrUnusableCodersAreNamed) {
  WriteBilevel("a.png");
  std::filesystem::path const platform = SORRELIN_PLATFORM_LIBRARY;
  std::filesystem::copy_file(platform, Path(SORRELIN_PLATFORM_SONAME));
  std::vector<std::string> const environment = {"LD_LIBRARY_PATH=" + directory_.path().string()};
  for (bool const present : {false, true}) {
    if (present) WriteAll(Path("libcadwick.so"), BytesOf("no library"));
    ProgramResult const result =
        Make({Out(), Path("a.png"), "--compression", "g4"}, {}, environment);
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(
        result.err,
        HasSubstr("libcadwick.so is missing or unusable: install the package sorrelin-codecs"));
    EXPECT_FALSE(std::filesystem::exists(Out()));
  }
  ProgramResult const flate =
      Make({Out(), Path("a.png"), "--compression", "flate"}, {}, environment);
  EXPECT_EQ(flate.exit_code, 0) << flate.err;
  WriteGood("b.png");
  ProgramResult const jpeg =
      Make({Out(), Path("b.png"), "--compression", "jpeg", "--force"}, {}, environment);
  EXPECT_EQ(jpeg.exit_code, 1);
  EXPECT_THAT(
      jpeg.err,
      HasSubstr("librennick.so is missing or unusable: install the package sorrelin-codecs"));
}

TEST_F(MakeFailures, UndecodedPagesNeedNoCoder) {
  WriteTiff(Path("a.tif"), {TiffPage{}},
            [](int, int x, int, int) { return static_cast<unsigned>(x & 1); });
  std::filesystem::copy_file(SORRELIN_PLATFORM_LIBRARY, Path(SORRELIN_PLATFORM_SONAME));
  ProgramResult const result =
      Make({Out(), Path("a.tif")}, {}, {"LD_LIBRARY_PATH=" + directory_.path().string()});
  EXPECT_EQ(result.exit_code, 0) << result.err;
}

// A pipe whose writing end the test holds, so that a program reading it waits.
class Pipe {
 public:
  Pipe() {
    EXPECT_EQ(pipe(ends_), 0);
    for (int const end : ends_) fcntl(end, F_SETFD, FD_CLOEXEC);
  }
  ~Pipe() {
    close(ends_[0]);
    Close();
  }
  int reading() const { return ends_[0]; }
  void Write(std::vector<BYTE> const& bytes) {
    EXPECT_EQ(write(ends_[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  }
  void Close() {
    if (ends_[1] != -1) close(ends_[1]);
    ends_[1] = -1;
  }

 private:
  int ends_[2] = {-1, -1};
};

// Waits until `ready`, for ten seconds at most.
template <typename Ready>
bool WaitUntil(Ready ready) {
  for (int i = 0; i < 1000; ++i) {
    if (ready()) return true;
    std::this_thread::sleep_for(10ms);
  }
  return false;
}

TEST_F(MakeFailures, InterruptedRunLeavesNothingAndEndsByTheSignal) {
  for (int const number : {SIGINT, SIGTERM, SIGHUP}) {
    Pipe pipe;
    RunningProgram program({SORRELIN_TOOL, "make", Out(), "-"}, {}, pipe.reading());
    // The document itself is in a directory, which shows that the run is under way.
    ASSERT_TRUE(WaitUntil([&] {
      auto const names = Names();
      return !names.empty() && std::filesystem::exists(Path(names[0] + "/document.pdf"));
    }));
    program.Signal(number);
    EXPECT_EQ(program.Wait().signal, number);
    EXPECT_THAT(Names(), ElementsAre());
  }
}

TEST_F(MakeFailures, IgnoredSignalStaysIgnored) {
  WriteGood("a.png");
  Pipe pipe;
  RunningProgram program(
      {"sh", "-c", "trap '' HUP; exec \"$0\" \"$@\"", SORRELIN_TOOL, "make", Out(), "-"}, {},
      pipe.reading());
  ASSERT_TRUE(WaitUntil([&] { return Names().size() == 2; }));
  program.Signal(SIGHUP);
  pipe.Write(ReadAll(Path("a.png")));
  pipe.Close();
  EXPECT_EQ(program.Wait().exit_code, 0);
  EXPECT_EQ(PageCount(), 1);
}

TEST_F(MakeFailures, DocumentThatComesIntoBeingMeanwhileIsLeftAlone) {
  WriteGood("a.png");
  Pipe pipe;
  RunningProgram program({SORRELIN_TOOL, "make", Out(), "-"}, {}, pipe.reading());
  ASSERT_TRUE(WaitUntil([&] { return Names().size() == 2; }));
  WriteAll(Out(), BytesOf("precious"));
  pipe.Write(ReadAll(Path("a.png")));
  pipe.Close();
  ProgramResult const result = program.Wait();
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("it has come into being in the meantime"));
  EXPECT_EQ(Document(), BytesOf("precious"));
  EXPECT_THAT(Names(), ElementsAre("a.png", "out.pdf"));
}

// A terminal for the program's standard error, of 60 columns.
class Terminal {
 public:
  Terminal() : master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    EXPECT_EQ(grantpt(master_), 0);
    EXPECT_EQ(unlockpt(master_), 0);
    slave_ = open(ptsname(master_), O_RDWR | O_NOCTTY | O_CLOEXEC);
    winsize size{};
    size.ws_col = 60;
    ioctl(slave_, TIOCSWINSZ, &size);
    fcntl(master_, F_SETFL, O_NONBLOCK);
  }
  ~Terminal() {
    close(slave_);
    close(master_);
  }
  int slave() const { return slave_; }
  std::string Text() const {
    std::string text;
    char buffer[4096];
    ssize_t count = 0;
    while ((count = read(master_, buffer, sizeof buffer)) > 0) {
      text.append(buffer, static_cast<size_t>(count));
    }
    return text;
  }

 private:
  int master_;
  int slave_;
};

class MakeProgress : public MakeFailures {
 protected:
  // What appears on the terminal when the first of two pictures takes `wait` to arrive.
  std::string Shown(std::chrono::milliseconds wait, std::vector<std::string> const& options) {
    WriteGood("a.png");
    Pipe pipe;
    Terminal terminal;
    std::vector<std::string> arguments = {SORRELIN_TOOL, "make",  Out(), "-",
                                          Path("a.png"), "--dpi", "72"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    RunningProgram program(arguments, {}, pipe.reading(), terminal.slave());
    std::this_thread::sleep_for(wait);
    pipe.Write(ReadAll(Path("a.png")));
    pipe.Close();
    EXPECT_EQ(program.Wait().exit_code, 0);
    return terminal.Text();
  }
};

TEST_F(MakeProgress, BarIsShownAfterASecondAndTakenAway) {
  std::string const bar = "[" + std::string(26, '#') + std::string(26, '.') + "]  50%";
  EXPECT_EQ(Shown(1500ms, {}), "\r\x1B[J" + bar + "\r" + "\r\x1B[J");
}

TEST_F(MakeProgress, RunOfLessThanASecondShowsNothing) {
  auto const start = std::chrono::steady_clock::now();
  std::string const shown = Shown(0ms, {});
  bool const is_short = std::chrono::steady_clock::now() - start < 1s;
  EXPECT_TRUE(shown.empty() || !is_short) << shown;
}

TEST_F(MakeProgress, TerminalWithoutSequencesShowsNothing) {
  setenv("TERM", "dumb", 1);
  EXPECT_EQ(Shown(1500ms, {}), "");
  unsetenv("TERM");
}

TEST_F(MakeProgress, QuietRunShowsNothing) { EXPECT_EQ(Shown(1500ms, {"--quiet"}), ""); }

TEST_F(MakeFailures, QuietRunStillNamesWhatFailed) {
  ProgramResult const result = Make({Out(), Path("missing.png"), "--quiet"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr(Line(Path("missing.png"))));
}

}  // namespace
}  // namespace test
