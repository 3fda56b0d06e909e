// Damaged and hostile documents: nothing is touched that is not ours, and everything ends.
#include <gtest/gtest.h>
#include <sorrelin/frame/string_error.h>
#include <tests/support/open_document.h>
#include <tests/support/xref_probe.h>

#include <functional>

namespace {

using test::Bytes;
using test::OpenDocument;
using test::PdfBuilder;

PdfBuilder Classic() {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 2);
  pdf.Classic();
  pdf.Object(5, "<</Title (T) >>");
  pdf.Classic({.prev = pdf.LastSection(), .keys = "/Root 1 0 R /Info 5 0 R /ID [<41> <42>]"});
  return pdf;
}

PdfBuilder Stream() {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.XrefStream(9, {.stream = {.predictor = 12}});
  pdf.ObjectStream(8, {{5, "<</Title (T) >>"}, {6, "[1 2]"}});
  pdf.XrefStream(10,
                 {.prev = pdf.LastSection(), .keys = "/Root 1 0 R /Info 5 0 R /ID [<41> <42>]"});
  return pdf;
}

// Opens the document, if it can be, and fetches everything that it could hold.
DWORD Exercise(Bytes bytes) {
  OpenDocument document(std::move(bytes));
  DWORD rows = 0;
  try {
    rows = document.Build();
    for (DWORD number = 0; number < 12; ++number) {
      document.Load(number);
      document->GetObjectSize(number);
    }
  } catch (SorrelinStringError const&) {
    // What an odd /Index throws.
  }
  return rows;
}

class Damage : public testing::TestWithParam<std::function<PdfBuilder()>> {};

INSTANTIATE_TEST_SUITE_P(Routes, Damage, testing::Values(Classic, Stream), [](auto const& row) {
  return std::string(row.index == 0 ? "Classic" : "Stream");
});

TEST_P(Damage, WholeDocumentOpens) { EXPECT_NE(Exercise(GetParam()().Document()), 0u); }

// Without the number after the first startxref there is no document.
TEST_P(Damage, TruncatedAtEveryByteEnds) {
  Bytes const whole = GetParam()().Document();
  size_t const needed = test::ToText(whole).find("startxref") + 11;
  for (size_t size = 0; size < whole.size(); ++size) {
    DWORD const rows = Exercise(Bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size)));
    if (size < needed) {
      EXPECT_EQ(rows, 0u) << size;
    }
  }
}

TEST_P(Damage, EveryByteChangedEnds) {
  Bytes const whole = GetParam()().Document();
  for (size_t at = 0; at < whole.size(); ++at) {
    for (int const mask : {0x01, 0xFF}) {
      Bytes changed = whole;
      changed[at] = static_cast<BYTE>(changed[at] ^ mask);
      Exercise(std::move(changed));
    }
  }
}

// Runs of other bytes in place of each stretch of 8.
TEST_P(Damage, EveryStretchReplacedEnds) {
  Bytes const whole = GetParam()().Document();
  for (char const* text : {"99999999", "        ", "<<[<([<<", "endobj 0", "0 R 0 R "}) {
    for (size_t at = 0; at + 8 <= whole.size(); at += 5) {
      Bytes changed = whole;
      std::copy(text, text + 8, changed.begin() + static_cast<ptrdiff_t>(at));
      Exercise(std::move(changed));
    }
  }
}

TEST(Hostile, SectionThatIsABombUsesUpTheOpeningsWork) {
  std::string const bomb = test::Deflate(std::string(200 * 1024 * 1024, '\0'));
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  size_t const section = pdf.Size();
  pdf.Stream(4, "/Type/XRef /Size 5 /W [1 4 2] /Root 1 0 R /Filter /FlateDecode", bomb);
  pdf.Text("startxref\n" + std::to_string(section) + "\n%%EOF\n");
  OpenDocument document(pdf);
  EXPECT_EQ(document.Build(), 0u);
  EXPECT_EQ(document.error(), 1u);
}

TEST(Hostile, HugeCountsFailWithErrorTen) {
  for (char const* index :
       {"0 2147483647", "5 4000000000", "0 90000 0 90000 0 90000 0 90000 0 90000"}) {
    PdfBuilder pdf("%PDF-1.5");
    test::AddPageTree(pdf, 1);
    pdf.XrefStream(4, {.keys = std::string("/Root 1 0 R /Index [") + index + "]",
                       .index_key = false,
                       .widths = {0, 0, 0}});
    OpenDocument document(pdf);
    EXPECT_EQ(document.Build(), 0u) << index;
    EXPECT_EQ(document.error(), 10u) << index;
  }
}

// Sixty streams of 5 MiB hold the pages in turn, so that no look finds its stream in the cache.
PdfBuilder PagesInTurn(DWORD pages) {
  constexpr DWORD kStreams = 60;
  constexpr DWORD kFirstPage = 100;
  PdfBuilder pdf("%PDF-1.5");
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  std::string kids;
  std::vector<std::vector<std::pair<DWORD, std::string>>> streams(kStreams);
  for (DWORD page = 0; page < pages; ++page) {
    kids += std::to_string(kFirstPage + page) + " 0 R ";
    streams[page % kStreams].push_back({kFirstPage + page, "<</Type/Page /Parent 2 0 R >>"});
  }
  pdf.Object(2, "<</Type/Pages /Kids [" + kids + "] /Count " + std::to_string(pages) + " >>");
  for (DWORD stream = 0; stream < kStreams; ++stream) {
    streams[stream].push_back({90000, std::string(5 * 1024 * 1024, ' ')});
    pdf.ObjectStream(3 + stream, streams[stream]);
  }
  pdf.XrefStream(99);
  return pdf;
}

// 8,000 looks would inflate 40 GiB, which the time limit of a test does not allow. Rather than list
// pages that were not looked at the opening fails.
TEST(Hostile, OpeningThatUsesUpItsWorkFailsAsAWhole) {
  OpenDocument document(PagesInTurn(8000));
  EXPECT_EQ(document.Build(), 0u);
  EXPECT_EQ(document.error(), 1u);
}

}  // namespace
