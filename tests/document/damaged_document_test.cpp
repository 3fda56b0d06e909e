// Documents of the library, cut off at every byte and changed at every byte: whatever becomes of
// the pages, nothing is touched outside a block.
#include <gtest/gtest.h>
#include <sorrelin/frame/pdf.h>
#include <sorrelin/frame/session.h>
#include <tests/support/dib_content.h>

#include <algorithm>
#include <memory>

namespace test {
namespace {

Block SmallPicture(WORD bits) {
  return MakeDib({.width = 5, .height = 3, .bits = bits, .x_per_metre = 2835, .y_per_metre = 2835},
                 [](LONG x, LONG y) { return static_cast<DWORD>(x * 50 + y * 7 + 130); });
}

Bytes DocumentOf(WORD bits, DWORD compression) {
  auto const session = std::make_unique<CCreatePDF>();
  session->SetTitleW(SORRELIN_TEXT("Title"));
  session->CreatePDFInMemory(0, 0);
  WCHAR const* const library = compression == PDF_COMPRESSION_JPEG ? SORRELIN_TEXT("Rennick.dll")
                                                                   : SORRELIN_TEXT("Cadwick.dll");
  EXPECT_EQ(session->SaveDIBAsColorPDFPageW(SmallPicture(bits), library, compression, 50), 1);
  int64_t data = 0;
  DWORD size = 0;
  EXPECT_EQ(session->FinishPDFInMemory(&data, &size), 1);
  BYTE* const bytes = reinterpret_cast<BYTE*>(data);
  Bytes const document(bytes, bytes + size);
  pdf_FreePDFInMemory(bytes);
  return document;
}

// Reads all that there is; the number of pages that gave an image.
int ReadAll(Bytes const& document) {
  auto const session = std::make_unique<CCreatePDF>();
  int images = 0;
  if (session->OpenPDFFileInMemory(reinterpret_cast<int64_t>(document.data()),
                                   static_cast<DWORD>(document.size())) != 0) {
    for (DWORD page = 0; page < std::min<DWORD>(session->GetNumberOfPages(), 3); ++page) {
      if (Block(session->LoadImageFromPDF(page)).get() != nullptr) ++images;
    }
  }
  session->ClosePDFFile();
  return images;
}

struct Coding {
  WORD bits;
  DWORD compression;
  BYTE change;  // of the bits of a byte
  char const* name;
};

class DamagedDocument : public testing::TestWithParam<Coding> {
 protected:
  Bytes const document_ = DocumentOf(GetParam().bits, GetParam().compression);
};

TEST_P(DamagedDocument, IsWholeBeforeTheDamage) { EXPECT_EQ(ReadAll(document_), 1); }

TEST_P(DamagedDocument, CutOffAtEveryByteIsReadWithoutHarm) {
  int images = 0;
  for (size_t size = 1; size < document_.size(); ++size) {
    images += ReadAll({document_.begin(), document_.begin() + static_cast<ptrdiff_t>(size)});
  }
  EXPECT_EQ(images, 6);  // "%%EOF" and its line end are not looked at
}

TEST_P(DamagedDocument, ChangedAtEveryByteIsReadWithoutHarm) {
  int images = 0;
  for (size_t at = 0; at < document_.size(); ++at) {
    Bytes damaged = document_;
    damaged[at] = static_cast<BYTE>(damaged[at] ^ GetParam().change);
    images += ReadAll(damaged);
  }
  EXPECT_GT(images, 0);
}

INSTANTIATE_TEST_SUITE_P(Of, DamagedDocument,
                         testing::Values(Coding{1, PDF_COMPRESSION_NONE, 0xFF, "RawBilevel"},
                                         Coding{1, PDF_COMPRESSION_CCITT, 0x10, "CcittBilevel"},
                                         Coding{8, PDF_COMPRESSION_RUN_LENGTH, 0x01,
                                                "RunLengthIndexed"},
                                         Coding{24, PDF_COMPRESSION_FLATE, 0x08, "FlateColour"},
                                         Coding{24, PDF_COMPRESSION_JPEG, 0x02, "JpegColour"}),
                         [](auto const& coding) { return std::string(coding.param.name); });

}  // namespace
}  // namespace test
