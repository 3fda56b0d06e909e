// The pipeline from a bitmap to a page: checks, codes, and what a failure leaves.
#include <gtest/gtest.h>
#include <sorrelin/platform/error.h>

#include <cstring>
#include <string>

#include "tests/support/dib.h"
#include "tests/support/document.h"
#include "tests/support/environment.h"
#include "tests/support/temp_dir.h"

namespace {

using test::DibSpec;
using test::MakeDib;
using test::MemoryDocument;

constexpr LONG k200Dpi = 7874;

test::Block Dib(WORD bits, LONG width = 100, LONG height = 100) {
  return MakeDib({.width = width, .height = height, .bits = bits, .x_per_metre = k200Dpi},
                 [](LONG x, LONG y) { return static_cast<DWORD>(x * y) & 1; });
}

template <typename Change>
test::Block Changed(test::Block block, Change change) {
  change(*static_cast<BITMAPINFOHEADER*>(GlobalLock(block)));
  GlobalUnlock(block);
  return block;
}

// The code of a page, which must leave the document as it was unless it is 0.
DWORD SaveCode(HDIB dib, DWORD compression, bool* wrote = nullptr) {
  MemoryDocument document;
  document.Create();
  size_t const before = document.Text().size();
  int const result = document->SaveDIBAsColorPDFPageW(dib, test::kNoLibrary, compression, 0);
  DWORD const code = document->PDF_GetLastError();
  EXPECT_EQ(result, code == 0 ? 1 : 0);
  if (wrote != nullptr) *wrote = document.Text().size() != before;
  return code;
}

TEST(PageAssembly, NullBitmapIs2) { EXPECT_EQ(SaveCode(nullptr, 0), 2u); }

TEST(PageAssembly, GarbageHandlesHaveNoSize) {
  int variable = 0;
  EXPECT_EQ(SaveCode(INVALID_HANDLE_VALUE, 0), 4u);
  EXPECT_EQ(SaveCode(&variable, 0), 4u);
  HGLOBAL const stale = GlobalAlloc(GHND, 100);
  GlobalFree(stale);
  EXPECT_EQ(SaveCode(stale, 0), 4u);
}

TEST(PageAssembly, ZeroWidthOrHeightIs4) {
  EXPECT_EQ(SaveCode(Changed(Dib(24), [](auto& h) { h.biWidth = 0; }), 0), 4u);
  EXPECT_EQ(SaveCode(Changed(Dib(24), [](auto& h) { h.biHeight = 0; }), 0), 4u);
}

// Size, depth, the pair of depth and compression, palette, encoder, in this order.
TEST(PageAssembly, FirstOfTwoFailuresCounts) {
  auto const no_size = [](auto& h) { h.biWidth = h.biBitCount = 0; };
  auto const no_depth = [](auto& h) { h.biBitCount = 4; };
  auto const huge_palette = [](auto& h) { h.biClrUsed = 0x60000000; };
  constexpr DWORD kUnknown = 99;
  EXPECT_EQ(SaveCode(Changed(Dib(24), no_size), kUnknown), 4u);
  EXPECT_EQ(SaveCode(Changed(Dib(24), no_depth), kUnknown), 5u);
  EXPECT_EQ(SaveCode(Dib(1), PDF_COMPRESSION_JPEG), 15u);    // and not 21, for want of a library
  EXPECT_EQ(SaveCode(Dib(24), PDF_COMPRESSION_CCITT), 15u);  // and not 19
  EXPECT_EQ(SaveCode(Changed(Dib(8), huge_palette), PDF_COMPRESSION_CCITT), 15u);
  EXPECT_EQ(SaveCode(Changed(Dib(8), huge_palette), kUnknown), 10u);
  EXPECT_EQ(SaveCode(Changed(Dib(8), huge_palette), PDF_COMPRESSION_JPEG), 10u);
}

TEST(PageAssembly, BitmapIsLookedAtBeforeTheRoomInTheDocument) {
  constexpr DWORD kLastObject = 90049;
  for (auto const& [compression, code] :
       {std::pair{DWORD{99}, 15u}, {DWORD{PDF_COMPRESSION_NONE}, 40u}}) {
    MemoryDocument document;
    document.Create();
    document->SetCurrentObject(kLastObject);
    EXPECT_EQ(document->SaveDIBAsColorPDFPageW(Dib(24), test::kNoLibrary, compression, 0), 0);
    EXPECT_EQ(document->PDF_GetLastError(), code);
  }
}

// A picture of less than half a point gets no page, so that it needs none.
TEST(PageAssembly, SizeInPointsIsLookedAtBeforeThePageLimit) {
  MemoryDocument document;
  document.Create();
  SessionProbe::TotalPages(document.session()) = 30000;
  EXPECT_EQ(document->SaveDIBAsColorPDFPageW(Dib(24, 1, 1), test::kNoLibrary, 0, 0), 1);
  EXPECT_EQ(document->PDF_GetLastError(), 0u);
  EXPECT_EQ(document->SaveDIBAsColorPDFPageW(Dib(24), test::kNoLibrary, 0, 0), 0);
  EXPECT_EQ(document->PDF_GetLastError(), 12u);
}

TEST(PageAssembly, RunsOfABilevelBitmapAre5BeforeAnythingIsWritten) {
  bool wrote = true;
  EXPECT_EQ(SaveCode(Dib(1), PDF_COMPRESSION_RUN_LENGTH, &wrote), 5u);
  EXPECT_FALSE(wrote);
}

TEST(PageAssembly, OtherDepthsAre5BeforeAnythingIsWritten) {
  for (WORD const bits : std::initializer_list<WORD>{0, 2, 4, 15, 16, 32}) {
    bool wrote = true;
    EXPECT_EQ(SaveCode(Changed(Dib(24), [&](auto& h) { h.biBitCount = bits; }), 0, &wrote), 5u);
    EXPECT_FALSE(wrote) << bits;
  }
}

TEST(PageAssembly, NegativeSizesAre10) {
  for (WORD const bits : std::initializer_list<WORD>{1, 8, 24}) {
    EXPECT_EQ(SaveCode(Changed(Dib(bits), [](auto& h) { h.biHeight = -100; }), 0), 10u) << bits;
    EXPECT_EQ(SaveCode(Changed(Dib(bits), [](auto& h) { h.biWidth = -100; }), 4), 10u) << bits;
  }
  EXPECT_EQ(SaveCode(Changed(Dib(8), [](auto& h) { h.biHeight = -100; }), 5), 10u);
}

TEST(PageAssembly, SizesPast4GiBAre10) {
  test::Block const huge = Changed(Dib(24), [](auto& h) { h.biWidth = h.biHeight = 0x7FFFFFFF; });
  EXPECT_EQ(SaveCode(huge, PDF_COMPRESSION_NONE), 10u);
  EXPECT_EQ(SaveCode(huge, PDF_COMPRESSION_FLATE), 10u);
}

TEST(PageAssembly, TruncatedBlockReadsAsZeros) {
  test::Block dib = Dib(24, 4, 2);
  GlobalReAlloc(dib, sizeof(BITMAPINFOHEADER) + 5, GMEM_MOVEABLE);
  MemoryDocument document;
  document.Create();
  EXPECT_EQ(document->SaveDIBAsColorPDFPageW(dib, test::kNoLibrary, 0, 0), 1);
  // The block ends within the second pixel of the lowest row, which the document has last.
  size_t const data = document.Text().find("stream\n") + 7;
  EXPECT_EQ(document.Text().substr(data, 12), std::string(12, '\0'));
  EXPECT_EQ(document.Text()[data + 24], '>');
}

TEST(PageAssembly, BlockShorterThanAHeaderHasNoDepth) {
  test::Block const stub(GlobalAlloc(GHND, 12));
  static_cast<BITMAPINFOHEADER*>(GlobalLock(stub))->biWidth = 5;
  GlobalUnlock(stub);
  EXPECT_EQ(SaveCode(stub, 0), 4u);
}

struct Cell {
  WORD bits;
  DWORD compression;
  DWORD code;
  char const* filter;
  char const* color_space;
};

// What each depth and compression gives, the last rows for values that name no coder. The siblings
// are missing here: 19 and 21 say that the pair is accepted and its coder was looked for.
constexpr Cell kCells[] = {
    {1, 0, 0, nullptr, "/DeviceGray"},
    {1, 32, 0, nullptr, "/DeviceGray"},
    {8, 0, 0, nullptr, "[/Indexed"},
    {8, 32, 0, nullptr, "[/Indexed"},
    {24, 0, 0, nullptr, "/DeviceRGB"},
    {24, 32, 0, nullptr, "/DeviceRGB"},
    {1, 4, 0, "/FlateDecode", "/DeviceGray"},
    {1, 512, 0, "/FlateDecode", "/DeviceGray"},
    {8, 4, 0, "/FlateDecode", "[/Indexed"},
    {8, 512, 0, "/FlateDecode", "[/Indexed"},
    {24, 4, 0, "/FlateDecode", "/DeviceRGB"},
    {24, 512, 0, "/FlateDecode", "/DeviceRGB"},
    {1, 5, 5, nullptr, nullptr},
    {1, 1024, 5, nullptr, nullptr},
    {8, 5, 0, "/RunLengthDecode", "[/Indexed"},
    {8, 1024, 0, "/RunLengthDecode", "[/Indexed"},
    {24, 5, 5, nullptr, nullptr},
    {24, 1024, 5, nullptr, nullptr},
    {1, 6, 19, nullptr, nullptr},
    {1, 2048, 19, nullptr, nullptr},
    {8, 6, 15, nullptr, nullptr},
    {8, 2048, 15, nullptr, nullptr},
    {24, 6, 15, nullptr, nullptr},
    {24, 2048, 15, nullptr, nullptr},
    {1, 7, 15, nullptr, nullptr},
    {1, 4096, 15, nullptr, nullptr},
    {8, 7, 21, nullptr, nullptr},
    {8, 4096, 21, nullptr, nullptr},
    {24, 7, 21, nullptr, nullptr},
    {24, 4096, 21, nullptr, nullptr},
    {1, 1, 15, nullptr, nullptr},
    {1, 2049, 15, nullptr, nullptr},
    {8, 1, 15, nullptr, nullptr},
    {8, 2049, 15, nullptr, nullptr},
    {24, 1, 15, nullptr, nullptr},
    {24, 2049, 15, nullptr, nullptr},
};

TEST(PageAssembly, DepthAndCompressionDecideTheResult) {
  for (Cell const& cell : kCells) {
    MemoryDocument document;
    document.Create();
    document->SaveDIBAsColorPDFPageW(Dib(cell.bits), test::kNoLibrary, cell.compression, 0);
    EXPECT_EQ(document->PDF_GetLastError(), cell.code) << cell.bits << " " << cell.compression;
    std::string const text = document.Text();
    EXPECT_EQ(text.find("/Filter") != std::string::npos, cell.filter != nullptr);
    if (cell.filter != nullptr) {
      EXPECT_NE(text.find(std::string("/Filter ") + cell.filter + "\n"), std::string::npos);
    }
    EXPECT_EQ(text.find("/XObject") != std::string::npos, cell.color_space != nullptr);
    if (cell.color_space != nullptr) {
      EXPECT_NE(text.find(std::string("/ColorSpace ") + cell.color_space), std::string::npos);
    }
  }
}

TEST(PageAssembly, UnknownCompressionIs15BeforeAnythingIsWritten) {
  for (DWORD const compression : {1u, 2u, 3u, 8u, 16u, 64u, 128u, 256u, 513u}) {
    bool wrote = true;
    EXPECT_EQ(SaveCode(Dib(24), compression, &wrote), 15u) << compression;
    EXPECT_FALSE(wrote);
  }
}

TEST(PageAssembly, BilevelEntryRefusesColorAndIndexedBitmaps) {
  for (WORD const bits : std::initializer_list<WORD>{8, 24}) {
    MemoryDocument document;
    document.Create();
    EXPECT_EQ(document->SaveDIBAsPDFPageW(Dib(bits), test::kNoLibrary), 0);
    EXPECT_EQ(document->PDF_GetLastError(), 15u);
    EXPECT_EQ(document->SaveDIBAsPDFPage(Dib(bits), ""), 0);
    EXPECT_EQ(document->PDF_GetLastError(), 15u);
  }
}

TEST(PageAssembly, NullNarrowLibraryIsTakenAsEmptyByTheColorForm) {
  MemoryDocument document;
  document.Create();
  EXPECT_EQ(document->SaveDIBAsColorPDFPage(Dib(24), nullptr, PDF_COMPRESSION_NONE, 0), 1);
  EXPECT_EQ(document->SaveDIBAsColorPDFPage(Dib(24), nullptr, PDF_COMPRESSION_JPEG, 0), 0);
  EXPECT_EQ(document->PDF_GetLastError(), 21u);
}

TEST(PageAssembly, OnePixelAt200DpiHasAnImageNoPageAndNoError) {
  MemoryDocument document;
  document.Create();
  EXPECT_EQ(document->SaveDIBAsColorPDFPageW(Dib(1, 1, 1), test::kNoLibrary, 0, 0), 1);
  EXPECT_EQ(document->PDF_GetLastError(), 0u);
  EXPECT_NE(document.Text().find("[/PDF /ImageB ] "), std::string::npos);
  EXPECT_NE(document.Text().find("/Subtype /Image"), std::string::npos);
  EXPECT_EQ(document.Text().find("/Type /Page\n"), std::string::npos);
}

TEST(PageAssembly, FailedPageLeavesTheSessionUsable) {
  MemoryDocument document;
  document.Create();
  EXPECT_EQ(document->SaveDIBAsColorPDFPageW(Dib(24), test::kNoLibrary, 6, 0), 0);
  EXPECT_EQ(document->SaveDIBAsColorPDFPageW(Dib(24), test::kNoLibrary, 0, 0), 1);
  EXPECT_NE(document.Finish().find("/Count 1\n"), std::string::npos);
}

TEST(PageAssembly, BitmapIsLookedAtBeforeTheTarget) {
  auto const session = std::make_unique<CCreatePDF>();
  EXPECT_EQ(session->SaveDIBAsColorPDFPageW(Dib(24), test::kNoLibrary, 99, 0), 0);
  EXPECT_EQ(session->PDF_GetLastError(), 15u);
  EXPECT_EQ(session->SaveDIBAsColorPDFPageW(Dib(24), test::kNoLibrary, 0, 0), 0);
  EXPECT_EQ(session->PDF_GetLastError(), 2u);
}

TEST(PageAssembly, WithoutATargetTheFirstWriteIs2) {
  auto const session = std::make_unique<CCreatePDF>();
  EXPECT_EQ(session->SaveDIBAsColorPDFPageW(Dib(24), test::kNoLibrary, 0, 0), 0);
  EXPECT_EQ(session->PDF_GetLastError(), 2u);
}

// The code of a page whose ProcSet object is not written whole; 100 if the page succeeds.
int SaveWithAFailedProcSet(std::string const& name, WORD bits) {
  auto const session = std::make_unique<CCreatePDF>();
  if (session->CreatePDF(name.c_str()) == 0) return 101;
  test::FileSizeLimit const limit(SessionProbe::FilePos(*session) + std::strlen("4 0 obj\n"),
                                  test::FileSizeLimit::Failures::kFirst);
  int const saved = session->SaveDIBAsColorPDFPageW(Dib(bits), test::kNoLibrary, 0, 0);
  int const code = saved != 0 ? 100 : static_cast<int>(session->PDF_GetLastError());
  session->ClosePDFFile();
  return code;
}

TEST(PageAssembly, FailedWriteOfTheProcSetFailsThePage) {
  test::TempDir const dir;
  for (WORD const bits : std::initializer_list<WORD>{1, 24}) {
    std::string const name = (dir / (std::to_string(bits) + ".pdf")).string();
    EXPECT_EQ(SaveWithAFailedProcSet(name, bits), 1) << bits;
    std::vector<BYTE> const bytes = test::ReadAll(name);
    std::string const text(bytes.begin(), bytes.end());
    // "[/PDF " is what is missing.
    EXPECT_NE(text.find("4 0 obj\n/Image"), std::string::npos) << bits;
  }
}

// Kept: the palette's object clears the code, and a write that failed before it is forgotten.
TEST(PageAssembly, FailedWriteOfTheProcSetIsForgottenAtThePalette) {
  test::TempDir const dir;
  std::string const name = (dir / "8.pdf").string();
  EXPECT_EQ(SaveWithAFailedProcSet(name, 8), 100);
}

TEST(PageAssembly, BitmapIsUnlockedAndUnchanged) {
  test::Block const dib = Dib(24);
  test::Bytes const before = dib.Content();
  MemoryDocument document;
  document.Create();
  document->SaveDIBAsColorPDFPageW(dib, test::kNoLibrary, 4, 9);
  EXPECT_EQ(dib.Content(), before);
  EXPECT_EQ(GlobalUnlock(dib), 0);
  EXPECT_EQ(GetLastError(), ERROR_NOT_LOCKED);
}

TEST(PageAssembly, FirstPageOfAnUpdateGoesBehindTheEndAndAnEmptyLine) {
  MemoryDocument document;
  document.OpenBare();
  document->WriteToPDFFile("old", 1);
  SessionProbe::AppendMode(document.session()) = 1;
  SessionProbe::FirstAppendedPage(document.session()) = 1;
  std::string const first = document.Added(
      [](CCreatePDF& s) { s.SaveDIBAsColorPDFPageW(Dib(24), test::kNoLibrary, 0, 0); });
  EXPECT_EQ(first.substr(0, 9), "\n\n1 0 obj");
  EXPECT_EQ(SessionProbe::FirstAppendedPage(document.session()), 0u);
  std::string const second = document.Added(
      [](CCreatePDF& s) { s.SaveDIBAsColorPDFPageW(Dib(24), test::kNoLibrary, 0, 0); });
  EXPECT_EQ(second.substr(0, 7), "7 0 obj");
  EXPECT_EQ(SessionProbe::AppendedPages(document.session()), 2u);
}

TEST(PageAssembly, FailedFirstPageOfAnUpdateCountsAsBegun) {
  MemoryDocument document;
  document.OpenBare();
  SessionProbe::AppendMode(document.session()) = 1;
  SessionProbe::FirstAppendedPage(document.session()) = 1;
  document->SaveDIBAsColorPDFPageW(nullptr, test::kNoLibrary, 0, 0);
  EXPECT_EQ(document->PDF_GetLastError(), 2u);
  EXPECT_EQ(SessionProbe::FirstAppendedPage(document.session()), 0u);
  EXPECT_EQ(document.Text(), "\n\n");
  // The next attempt neither seeks nor writes the empty line again.
  std::string const next = document.Added(
      [](CCreatePDF& s) { s.SaveDIBAsColorPDFPageW(Dib(24), test::kNoLibrary, 0, 0); });
  EXPECT_EQ(next.substr(0, 7), "1 0 obj");
  EXPECT_EQ(SessionProbe::Row(document.session(), 1).nOffset, 2u);
}

}  // namespace
