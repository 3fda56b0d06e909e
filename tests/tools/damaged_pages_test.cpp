// Documents cut off at every byte and changed at every byte, read as the program's child reads
// them: whatever becomes of the pages, nothing is touched outside a block, and a picture that
// counts as read has all of its rows.
#include <gtest/gtest.h>
#include <sorrelin/frame/pdf.h>

#include "tests/support/dib_content.h"
#include "tests/support/page_document.h"
#include "tools/documents/qpdf_document.h"
#include "tools/extract/page/page_judge.h"

namespace sorrelin::tool {
namespace {

using test::Bytes;

struct Kind {
  char const* name;
  BYTE change;  // of the bits of a byte
  Bytes (*make)();
};

void PrintTo(Kind const& kind, std::ostream* out) { *out << kind.name; }

// A document of the library.
Bytes Written(WORD bits, DWORD compression) {
  test::Block const picture = test::MakeDib(
      {.width = 5, .height = 3, .bits = bits, .x_per_metre = 2835, .y_per_metre = 2835},
      [](LONG x, LONG y) { return static_cast<DWORD>(x * 50 + y * 7 + 130); });
  auto const session = std::make_unique<CCreatePDF>();
  session->SetTitleW(SORRELIN_TEXT("Title"));
  session->CreatePDFInMemory(0, 0);
  WCHAR const* const library = compression == PDF_COMPRESSION_JPEG ? SORRELIN_TEXT("Rennick.dll")
                                                                   : SORRELIN_TEXT("Cadwick.dll");
  EXPECT_EQ(session->SaveDIBAsColorPDFPageW(picture, library, compression, 50), 1);
  int64_t data = 0;
  DWORD size = 0;
  EXPECT_EQ(session->FinishPDFInMemory(&data, &size), 1);
  BYTE* const bytes = reinterpret_cast<BYTE*>(data);
  Bytes const document(bytes, bytes + size);
  pdf_FreePDFInMemory(bytes);
  return document;
}

// What other programs do: objects in a stream, prediction, a palette in a string, an array of
// filters, keys that are references.
Bytes Foreign() {
  test::PdfBuilder pdf("%PDF-1.5");
  pdf.ObjectStream(5, {{1, "<</Type/Catalog /Pages 2 0 R >>"},
                       {2,
                        "<</Type/Pages /Kids [3 0 R ] /Count 1 /Rotate 90 /MediaBox 6 0 R "
                        "/Resources <</XObject <</A 4 0 R>> >> >>"},
                       {3, "<</Type/Page /Parent 2 0 R /Contents [8 0 R] >>"},
                       {6, "[0 0 72 36]"},
                       {7, "[/Indexed /DeviceRGB 3 <000000FF0000 00FF00 0000FF>]"}});
  std::string const rows = test::Deflate(test::PngRows("\x1B\xE4\x1B\xE4\x10\xFF", 2, 2));
  pdf.Stream(4,
             "/Subtype/Image /Width 7 /Height 3 /BitsPerComponent 2 /ColorSpace 7 0 R "
             "/Filter [/FlateDecode] /DecodeParms [<</Predictor 15 /Colors 1 "
             "/BitsPerComponent 2 /Columns 7>>] /Decode [0 3]",
             rows);
  pdf.Stream(8, "/Filter /FlateDecode", test::Deflate("q 72 0 0 -36 0 36 cm /A Do Q"));
  pdf.XrefStream(9);
  return pdf.Document();
}

class CheckedSink : public PictureSink {
 public:
  bool Begin(PictureForm const& form) override {
    form_ = form;
    return true;
  }
  bool Row(std::span<BYTE const> row) override {
    EXPECT_EQ(row.size(), form_.RowBytes());
    ++rows_;
    return true;
  }
  bool IsWhole() const { return form_.height != 0 && rows_ == form_.height; }

 private:
  PictureForm form_;
  DWORD rows_ = 0;
};

class DamagedPages : public ::testing::TestWithParam<Kind> {
 protected:
  // Reads all that there is; the last problem, if there was any.
  std::string Read(Bytes const& document) const {
    std::string problem;
    auto const open = QpdfDocument::OpenMemory({document.begin(), document.end()}, problem);
    if (open == nullptr) return problem;
    open->Text("Title");
    for (DWORD page = 0; page < std::min<DWORD>(open->ListedPages(), 3); ++page) {
      PageFacts const facts = JudgePage(*open, page);
      problem = facts.problem;
      if (!problem.empty()) continue;
      CheckedSink sink;
      PagePicture const& picture = facts.whole.at(0);
      bool const decoded = DecodePagePicture(picture, picture.orientation, sink, problem);
      EXPECT_EQ(decoded, problem.empty());
      EXPECT_TRUE(sink.IsWhole() || !decoded);
    }
    return problem;
  }

  Bytes const document_ = GetParam().make();
};

TEST_P(DamagedPages, WholeDocumentGivesItsPicture) { EXPECT_EQ(Read(document_), ""); }

TEST_P(DamagedPages, CutOffAtEveryByte) {
  for (size_t size = 0; size < document_.size(); ++size) {
    Read(Bytes(document_.begin(), document_.begin() + static_cast<ptrdiff_t>(size)));
  }
}

TEST_P(DamagedPages, ChangedAtEveryByte) {
  Bytes changed = document_;
  for (size_t at = 0; at < changed.size(); ++at) {
    changed[at] ^= GetParam().change;
    Read(changed);
    changed[at] = document_[at];
  }
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, DamagedPages,
    ::testing::Values(Kind{"Group4", 0xFF, [] { return Written(1, PDF_COMPRESSION_CCITT); }},
                      Kind{"Flate", 0x01, [] { return Written(1, PDF_COMPRESSION_FLATE); }},
                      Kind{"RunLength", 0xFF,
                           [] { return Written(8, PDF_COMPRESSION_RUN_LENGTH); }},
                      Kind{"Raw", 0x10, [] { return Written(24, PDF_COMPRESSION_NONE); }},
                      Kind{"Jpeg", 0x01, [] { return Written(24, PDF_COMPRESSION_JPEG); }},
                      Kind{"Foreign", 0x04, Foreign}, Kind{"ForeignInverted", 0xFF, Foreign}),
    [](auto const& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace sorrelin::tool
