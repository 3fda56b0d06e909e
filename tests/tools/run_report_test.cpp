// The report of a run: changes grouped by kind, pages and problems as JSON.
#include "tools/make/run_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace sorrelin::tool {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

PageRecord PageWith(unsigned number, std::vector<Change> const& changes) {
  PageRecord record;
  record.page = number;
  for (Change const change : changes) record.changes.Add(change);
  return record;
}

TEST(PageRanges, RunsOfThreeAndMoreAreDrawnTogether) {
  EXPECT_EQ(PageRanges({2}), "page 2");
  EXPECT_EQ(PageRanges({2, 7, 8, 9}), "pages 2, 7-9");
  EXPECT_EQ(PageRanges({1, 2, 4}), "pages 1, 2, 4");
}

TEST(RunReport, ChangesAreGroupedByKind) {
  RunReport report;
  report.AddPage(PageWith(1, {Change::kTurned}));
  for (unsigned const page : {2u, 7u, 8u, 9u}) {
    report.AddPage(PageWith(page, {Change::kTransparency}));
  }
  report.NoteWritten(9, 1000);
  EXPECT_THAT(report.ChangeLines(),
              ElementsAre("transparency laid on white: pages 2, 7-9", "turned: page 1"));
}

TEST(RunReport, NothingIsSaidOfADocumentThatWasNotWritten) {
  RunReport report;
  report.AddPage(PageWith(1, {Change::kTurned}));
  EXPECT_THAT(report.ChangeLines(), IsEmpty());
}

TEST(RunReport, PageIsAnObjectWithAllItsFacts) {
  PageRecord record = PageWith(3, {Change::kTransparency, Change::kTurned});
  record.file = "a.png";
  record.page_of_file = 2;
  record.coding = "flate";
  record.bytes = 77;
  record.dpi = {300, 200};
  record.origin = DpiOrigin::kOption;
  RunReport report;
  report.AddPage(record);
  EXPECT_THAT(report.Json("o.pdf"), HasSubstr(R"(  "page": [
    {
      "number": 3,
      "file": "a.png",
      "page": 2,
      "coding": "flate",
      "data": "coded",
      "bytes": 77,
      "changes": ["transparency laid on white", "turned"],
      "dpi_x": 300,
      "dpi_y": 200,
      "dpi_from": "option",
      "damage": null
    }
  ],
)"));
}

TEST(RunReport, IgnoredFilesAreListed) {
  RunReport report;
  report.AddIgnored("Thumbs.db");
  EXPECT_THAT(report.Json("o.pdf"), HasSubstr("\"ignored\": [\n    \"Thumbs.db\"\n  ]\n}\n"));
}

}  // namespace
}  // namespace sorrelin::tool
