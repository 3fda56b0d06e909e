// The coding of black and white pages: by itself the program takes the smaller one.
#include "tests/support/bilevel_pages.h"
#include "tests/tools/make_fixture.h"

namespace test {
namespace {

class MakeCoding : public MakeTest {
 protected:
  // The page takes no more than the smaller of those with a given coding.
  void ExpectTheSmaller(Bilevel const& page, std::string const& what) const {
    std::string pbm =
        "P4\n" + std::to_string(page.Width()) + " " + std::to_string(page.Height()) + "\n";
    for (int y = 0; y < page.Height(); ++y) {
      auto const row = page.Row(y).first(page.Payload());
      pbm.append(row.begin(), row.end());
    }
    WriteAll(Path("a.pbm"), {pbm.begin(), pbm.end()});
    for (std::string const form : {"--quiet", "--plain"}) {
      EXPECT_LE(BytesOf({form}), std::min(BytesOf({form, "--compression", "g4"}),
                                          BytesOf({form, "--compression", "flate"})))
          << what << " " << form;
    }
  }

 private:
  // What the coded data of the page take.
  long BytesOf(std::vector<std::string> options) const {
    options.insert(options.begin(), {Out(), Path("a.pbm"), "--force", "--dpi", "300", "--json"});
    std::string const report = Make(options).out;
    size_t const at = report.rfind("\"bytes\": ");
    return at == std::string::npos ? -1 : std::stol(report.substr(at + 9));
  }
};

struct Place {
  int x, y, width, height;
};

Bilevel WithPicture(Bilevel page, Bilevel const& picture, Place const& place) {
  for (int y = place.y; y < place.y + place.height; ++y) {
    for (int x = place.x; x < place.x + place.width; ++x) {
      if (page.Black(x, y) != picture.Black(x, y)) page.Flip(x, y);
    }
  }
  return page;
}

// A fine even screen, which Flate codes in next to nothing.
Bilevel Screen() {
  Bilevel page(2480, 3508);
  for (int y = 0; y < page.Height(); ++y) {
    for (int x = y % 2; x < page.Width(); x += 2) page.SetBlack(x, y);
  }
  return page;
}

// Single lines of text at even distances.
Bilevel LinesOfText(Bilevel const& text, int distance) {
  constexpr int kLineAt = 700, kLineRows = 50;
  Bilevel page(text.Width(), text.Height());
  for (int y = 0; y < page.Height(); ++y) {
    if ((y + kLineRows / 2 + distance / 2) % distance >= kLineRows) continue;
    auto const row = text.Row(kLineAt + (y + kLineRows / 2 + distance / 2) % distance);
    std::copy(row.begin(), row.end(), page.Row(y).begin());
  }
  return page;
}

TEST_F(MakeCoding, WholePagesOfTextAndScreensTakeTheSmaller) {
  ExpectTheSmaller(TextPage(300), "text");
  ExpectTheSmaller(ScannedPage(), "scanned text");
  ExpectTheSmaller(HalftonePage(), "halftone");
  ExpectTheSmaller(DiffusedPage(), "dispersed dots");
  ExpectTheSmaller(Screen(), "even screen");
}

TEST_F(MakeCoding, PictureOnAPartOfAPageOfTextCounts) {
  Bilevel const text = TextPage(300), diffused = DiffusedPage(), screen = Screen();
  for (Place const place : {Place{300, 250, 600, 300}, Place{900, 1100, 1200, 150},
                            Place{300, 1900, 1800, 500}, Place{1200, 3000, 300, 100}}) {
    std::string const where = "picture at row " + std::to_string(place.y);
    ExpectTheSmaller(WithPicture(text, diffused, place), where);
    ExpectTheSmaller(WithPicture(text, screen, place), where);
  }
}

// However far apart the lines are, a look at some rows sees as much text as there is.
TEST_F(MakeCoding, LinesAtEvenDistancesAreJudgedByAllOfThePage) {
  Bilevel const text = TextPage(300), screen = Screen();
  for (int const distance : {55, 109, 219, 438}) {
    ExpectTheSmaller(WithPicture(LinesOfText(text, distance), screen, {300, 2000, 400, 60}),
                     "lines every " + std::to_string(distance) + " rows");
  }
}

}  // namespace
}  // namespace test
