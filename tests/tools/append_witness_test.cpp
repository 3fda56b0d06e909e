// Documents that grew page by page before outside witnesses, and documents of other programs that
// pages were added to.
#include <sorrelin/frame/pdf.h>

#include "tests/support/dib.h"
#include "tests/support/pnm.h"
#include "tests/support/random_ids.h"
#include "tests/tools/append_fixture.h"

namespace test {
namespace {

using ::testing::HasSubstr;

constexpr int kWidth = 20;
constexpr int kHeight = 14;

// Pixels of page `number`.
DWORD Tone(int number, int x, int y) {
  return static_cast<DWORD>((x * 11 + y * 17 + number * 37) & 0xFF) * 0x010101u;
}

class AppendWitness : public AppendTest {
 protected:
  void WritePage(std::string const& name, int number) const {
    PngForm form;
    form.width = kWidth;
    form.height = kHeight;
    form.x_per_metre = form.y_per_metre = 2835;
    WritePng(Path(name), form, [&](int x, int y, int) { return Tone(number, x, y) & 0xFF; });
  }
  void ExpectSound() const {
    ProgramResult const check = RunProgram({"qpdf", "--check", Out()});
    EXPECT_EQ(check.exit_code, 0) << check.out << check.err;
  }
  // Poppler smooths pictures that it shows at less than four times their size, so the middles of
  // larger pixels are compared.
  void ExpectPopplerPages(int first, int count) const {
    constexpr int kScale = 8;
    for (int i = 0; i < count; ++i) {
      std::string const page = std::to_string(first + i + 1);
      RunProgram({"pdftoppm", "-r", std::to_string(72 * kScale), "-singlefile", "-f", page, "-l",
                  page, Out(), Path("poppler")});
      PnmPicture const shown = ReadPnm(Path("poppler.ppm"));
      ASSERT_EQ(shown.width, kWidth * kScale);
      ASSERT_EQ(shown.height, kHeight * kScale);
      int wrong = 0;
      for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
          int const at = (y * kScale + kScale / 2) * shown.width + x * kScale + kScale / 2;
          wrong += shown.pixels[static_cast<size_t>(at)] != Tone(i, x, y) ? 1 : 0;
        }
      }
      EXPECT_EQ(wrong, 0) << "page " << page;
    }
  }
  void ExpectMuPdfPages(int first, int count) const {
    for (int i = 0; i < count; ++i) {
      ExpectPage(
          kWidth, kHeight, [&](int x, int y) { return Tone(i, x, y); }, 0, first + i + 1);
    }
  }
  // All the witnesses find pages 0 to count - 1 of the test after `first` others.
  void ExpectPages(int first, int count) const {
    ExpectSound();
    EXPECT_EQ(CountPages(), std::to_string(first + count) + "\n");
    EXPECT_THAT(RunProgram({"pdfinfo", Out()}).out,
                ::testing::ContainsRegex("Pages: +" + std::to_string(first + count) + "\n"));
    EXPECT_EQ(RunProgram({"qpdf", "--show-npages", Out()}).out,
              std::to_string(first + count) + "\n");
    ExpectPopplerPages(first, count);
    ExpectMuPdfPages(first, count);
  }
  // What a page of the document looks like to a witness.
  Bytes PageBytes(std::string const& document, int page) const {
    std::string const number = std::to_string(page);
    RunProgram({"pdftoppm", "-r", "50", "-singlefile", "-f", number, "-l", number, Path(document),
                Path("old")});
    return ReadAll(Path("old.ppm"));
  }
};

TEST_F(AppendWitness, TwentyRunsFromNoDocumentOnMakeOneOfTwentyPages) {
  for (int i = 0; i < 20; ++i) {
    WritePage("scan.png", i);
    AppendTo("out.pdf", {"scan.png"});
  }
  ExpectPages(0, 20);
}

TEST_F(AppendWitness, TwentyRunsInPlaceDoTheSame) {
  for (int i = 0; i < 20; ++i) {
    WritePage("scan.png", i);
    AppendTo("out.pdf", {"scan.png"}, {"--in-place"});
  }
  ExpectPages(0, 20);
}

TEST_F(AppendWitness, TwentyOneCallHelpersMakeOneDocumentOfTwentyPages) {
  for (int i = 0; i < 20; ++i) {
    Block const dib = MakeDib(
        {.width = kWidth, .height = kHeight, .bits = 24, .x_per_metre = 2835, .y_per_metre = 2835},
        [&](LONG x, LONG y) { return Tone(i, static_cast<int>(x), static_cast<int>(y)); });
    ASSERT_EQ(pdf_SaveDIBToPDF(Out().c_str(), dib, "", PDF_COMPRESSION_FLATE, -1), 0u) << i;
  }
  ExpectPages(0, 20);
}

// Three pages of PostScript as Ghostscript writes them.
constexpr char kPostScript[] =
    "%!PS\n<< /PageSize [200 100] >> setpagedevice\n"
    "1 1 3 { 20 mul 10 moveto 40 40 rlineto 5 setlinewidth stroke showpage } for\n";

class AppendToOthers : public AppendWitness {
 protected:
  // out.pdf as a program makes it of Ghostscript's in.pdf.
  void WriteBy(std::vector<std::string> command) const {
    WriteAll(Path("in.ps"), ToBytes(kPostScript));
    WriteByGhostscript(Path("in.pdf"), {Path("in.ps")});
    for (std::string& word : command) {
      if (word == "in.pdf" || word == "out.pdf") word = Path(word);
    }
    ASSERT_EQ(RunProgram(command).exit_code, 0);
  }
};

struct Program {
  char const* name;
  std::vector<std::string> command;  // from in.pdf to out.pdf
};

class AppendToProgram : public AppendToOthers, public ::testing::WithParamInterface<Program> {};

TEST_P(AppendToProgram, OldPagesStayAndNewOnesAreRight) {
  WriteBy(GetParam().command);
  std::vector<Bytes> old;
  for (int page = 1; page <= 3; ++page) old.push_back(PageBytes("out.pdf", page));
  EXPECT_NE(old[0], old[1]);
  for (int i = 0; i < 2; ++i) {
    WritePage("scan.png", i);
    // Ghostscript's metadata would be lost with the catalog that an added page replaces.
    EXPECT_EQ(
        WhatAppendSays("out.pdf", {"scan.png"}),
        "sorrelin: " + Out() +
            ": was rewritten for the new pages: it has what an added page would take from its "
            "catalog\n");
    ExpectSound();
  }
  ExpectPages(3, 2);
  EXPECT_THAT(RunProgram({"pdfinfo", "-meta", Out()}).out, HasSubstr("Ghostscript"));
  for (int page = 1; page <= 3; ++page) {
    EXPECT_EQ(PageBytes("out.pdf", page), old[static_cast<size_t>(page - 1)]) << page;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Programs, AppendToProgram,
    ::testing::Values(
        Program{"Ghostscript", {"cp", "in.pdf", "out.pdf"}},
        Program{"Qpdf", {"qpdf", "--object-streams=disable", "in.pdf", "out.pdf"}},
        Program{"QpdfReadable", {"qpdf", "--qdf", "--object-streams=disable", "in.pdf", "out.pdf"}},
        Program{"QpdfLinear",
                {"qpdf", "--linearize", "--object-streams=disable", "in.pdf", "out.pdf"}},
        Program{"MuPdf", {"mutool", "clean", "in.pdf", "out.pdf"}},
        Program{"MuPdfCompact", {"mutool", "clean", "-gggg", "-z", "in.pdf", "out.pdf"}}),
    [](auto const& program) { return program.param.name; });

// Its trailer has a blank between the two halves of /ID, which an update cuts there.
TEST_F(AppendToOthers, PopplersDocumentIsRefusedUntilItIsRewritten) {
  WriteBy(
      {"sh", "-c",
       "cd " + directory_.path().string() + " && " UNTIL_IDENTIFIER_IS_PLAIN("pdfunite in.pdf")});
  ExpectRefusedBothWays("out.pdf",
                        "has a trailer that a change would damage (rewrite it first: qpdf "
                        "--object-streams=disable in.pdf out.pdf)");
  std::filesystem::rename(Out(), Path("in.pdf"));
  RunProgram({"qpdf", "--object-streams=disable", Path("in.pdf"), Out()});
  WritePage("scan.png", 0);
  AppendTo("out.pdf", {"scan.png"});
  ExpectPages(3, 1);
}

}  // namespace
}  // namespace test
