// Documents of other makers and damaged ones.
#include <tests/comparison/foreign.h>
#include <tests/support/pdf_builder.h>

#include <algorithm>

namespace comparison {
namespace {

constexpr DWORD kFirstPage = 10;
constexpr DWORD kFirstImage = 20;
constexpr DWORD kObjectStream = 30;
constexpr DWORD kXrefStream = 31;

void AddImage(Dice& dice, test::PdfBuilder& pdf, DWORD number) {
  DWORD const width = 1 + dice.Below(40);
  DWORD const height = 1 + dice.Below(30);
  DWORD const bits = dice.OneIn(3) ? 1 : 8;
  bool const coloured = bits == 8 && dice.OneIn(2);
  size_t const row = (width * bits * (coloured ? 3 : 1) + 7) / 8;
  std::string data;
  for (size_t i = 0; i < row * height; ++i) data += static_cast<char>(dice.Below(256));
  std::string keys = "/Type/XObject /Subtype/Image /Width " + std::to_string(width) + " /Height " +
                     std::to_string(height) + " /BitsPerComponent " + std::to_string(bits) +
                     " /ColorSpace /Device" + (coloured ? "RGB" : "Gray");
  if (dice.OneIn(2)) {
    if (dice.OneIn(2)) {
      data = test::PngRows(data, row, static_cast<int>(dice.Below(3)));
      keys += " /DecodeParms <</Predictor 15 /Columns " + std::to_string(width) + " /Colors " +
              (coloured ? "3" : "1") + " /BitsPerComponent " + std::to_string(bits) + ">>";
    }
    data = test::Deflate(data);
    keys += " /Filter/FlateDecode";
  }
  pdf.Stream(number, keys, data);
}

void AddPage(Dice& dice, test::PdfBuilder& pdf, DWORD page, DWORD image) {
  AddImage(dice, pdf, image);
  DWORD const contents = image + 5;
  pdf.Stream(contents, "", "q 72 0 0 36 10 20 cm /Im0 Do Q");
  pdf.Object(page,
             "<</Type/Page /Parent 2 0 R /MediaBox [0 0 200 100] /Resources <</XObject <</Im0 " +
                 std::to_string(image) + " 0 R>> >> /Contents " + std::to_string(contents) +
                 " 0 R >>");
}

}  // namespace

Bytes ForeignDocument(Dice& dice) {
  test::PdfBuilder pdf("%PDF-1.5", dice.OneIn(3) ? "\r\n" : "\n");
  DWORD const pages = 1 + dice.Below(3);
  std::string kids;
  for (DWORD i = 0; i < pages; ++i) {
    AddPage(dice, pdf, kFirstPage + i, kFirstImage + i);
    kids += std::to_string(kFirstPage + i) + " 0 R ";
  }
  std::string const catalog = "<</Type/Catalog /Pages 2 0 R >>";
  std::string const root =
      "<</Type/Pages /Kids [" + kids + "] /Count " + std::to_string(pages) + " >>";
  std::string const info = "<</Title (Foreign \\(one\\)) /Author <FEFF00410042> >>";
  std::string const keys = "/Root 1 0 R /Info 3 0 R";
  if (dice.OneIn(2)) {
    pdf.Object(1, catalog);
    pdf.Object(2, root);
    pdf.Object(3, info);
    pdf.Classic({.keys = keys});
  } else {
    pdf.ObjectStream(kObjectStream, {{1, catalog}, {2, root}, {3, info}});
    pdf.XrefStream(kXrefStream, {.keys = keys});
  }
  return pdf.Document();
}

void Damage(Dice& dice, Bytes& document) {
  auto const place = [&] {
    return static_cast<ptrdiff_t>(dice.Below(static_cast<uint32_t>(document.size())));
  };
  for (uint32_t i = dice.Below(4); i > 0; --i) {
    document[static_cast<size_t>(place())] = static_cast<BYTE>(dice.Below(256));
  }
  ptrdiff_t const first = place();
  ptrdiff_t const last = std::min(first + static_cast<ptrdiff_t>(dice.Below(50)),
                                  static_cast<ptrdiff_t>(document.size()));
  switch (dice.Below(5)) {
    case 0:
      document.erase(document.begin() + first, document.begin() + last);
      break;
    case 1:
      document.resize(static_cast<size_t>(first));
      break;
    case 2: {
      Bytes const piece(document.begin() + first, document.begin() + last);
      document.insert(document.begin() + first, piece.begin(), piece.end());
      break;
    }
    default:
      break;
  }
}

}  // namespace comparison
