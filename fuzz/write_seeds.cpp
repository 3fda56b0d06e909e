// Writes the seeds of the fuzz targets, a folder for each: write_seeds FOLDER
#include <sorrelin/image/codecs/sibling_names.h>
#include <tests/siblings/rennick_support.h>
#include <tests/support/pdf_builder.h>
#include <tests/support/raster_builder.h>
#include <tests/support/temp_dir.h>

#include <filesystem>
#include <stdexcept>

#include <sorrelin/image/codecs/sibling_names.h>
#include "fuzz/fuzz_session.h"

namespace {

using test::PdfBuilder;

std::filesystem::path folder;

// The number keeps the names of a target apart.
void Seed(std::string const& target, std::string_view content) {
  static int number = 0;
  std::filesystem::create_directories(folder / target);
  test::WriteAll(folder / target / ("seed" + std::to_string(number++)), test::ToBytes(content));
}

// A little-endian number of 2 bytes, as the targets read them.
std::string Word(unsigned value) {
  return {static_cast<char>(value & 0xFF), static_cast<char>(value >> 8)};
}

test::Block Picture(WORD bits, LONG width = 9, LONG height = 5) {
  return test::MakeDib(
      {.width = width, .height = height, .bits = bits, .x_per_metre = 2835, .y_per_metre = 2835},
      [](LONG x, LONG y) { return static_cast<DWORD>(x * 50 + y * 7 + 130); });
}

void DocumentSeed(std::string_view document) {
  for (char const* const target : {"document_fuzz", "append_fuzz", "tool_document_fuzz"}) {
    Seed(target, document);
  }
}

// ---- Documents that the library writes ----

struct Coding {
  WORD bits;
  DWORD compression;
};

void AddWrittenPage(CCreatePDF& session, Coding const& coding) {
  WCHAR const* const library =
      coding.compression == PDF_COMPRESSION_JPEG ? sorrelin::kJpegLibrary : sorrelin::kCcittLibrary;
  test::Block const picture = Picture(coding.bits);
  if (session.SaveDIBAsColorPDFPageW(picture, library, coding.compression, 50) == 0) {
    throw std::runtime_error("page");
  }
}

std::string Written(std::vector<Coding> const& pages) {
  fuzz::Session session;
  session->SetTitleW(SORRELIN_TEXT("Title"));
  session->SetKeywordsA("some (words)");
  session->CreatePDFInMemory(0, 0);
  for (Coding const& page : pages) AddWrittenPage(*session, page);
  int64_t data = 0;
  DWORD size = 0;
  if (session->FinishPDFInMemory(&data, &size) == 0) throw std::runtime_error("finish");
  std::string const document(reinterpret_cast<char const*>(data), size);
  pdf_FreePDFInMemory(reinterpret_cast<void*>(data));
  return document;
}

void WrittenSeeds() {
  std::vector<Coding> const codings = {{1, PDF_COMPRESSION_NONE},       {1, PDF_COMPRESSION_CCITT},
                                       {1, PDF_COMPRESSION_FLATE},      {8, PDF_COMPRESSION_NONE},
                                       {8, PDF_COMPRESSION_RUN_LENGTH}, {24, PDF_COMPRESSION_FLATE},
                                       {24, PDF_COMPRESSION_JPEG}};
  for (Coding const& coding : codings) DocumentSeed(Written({coding}));
  std::string const several = Written({{1, PDF_COMPRESSION_NONE}, {24, PDF_COMPRESSION_FLATE}});
  DocumentSeed(several);
  DocumentSeed(fuzz::AppendPage(fuzz::Data(test::ToBytes(several))));
}

// ---- Documents of other kinds ----

std::string Shape(int width, int height, int bits) {
  return "/Type/XObject /Subtype/Image /Width " + std::to_string(width) + " /Height " +
         std::to_string(height) + " /BitsPerComponent " + std::to_string(bits) + " ";
}

std::string PageText(std::string const& keys) {
  return "<</Type/Page /Parent 2 0 R /MediaBox [0 0 100.5 100] " + keys +
         " /Resources <</ProcSet [/PDF/ImageB] /XObject <</Im0 4 0 R >> >> >>";
}

// Catalog 1, pages root 2, page 3, image 4, content 5 and strings 6, without a section.
void AddPictures(PdfBuilder& pdf, std::string const& image_keys, std::string const& data) {
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  pdf.Object(2, "<</Type/Pages /Kids [3 0 R ] /Count 1 >>");
  pdf.Object(3, PageText("/Contents 5 0 R"));
  pdf.Stream(4, image_keys, data);
  pdf.Stream(5, "/Filter/FlateDecode", test::Deflate("q 0.24 0 0 -0.24 0 792 cm /Im0 Do Q"));
  pdf.Object(6, "<</Title (A \\(title\\)) /Author <FEFF00410042> /Keywords 7 0 R >>");
  pdf.Object(7, "(words)");
}

struct Image {
  std::string keys;
  std::string data;
};

std::vector<Image> Images() {
  std::string const indexed = "/ColorSpace [/Indexed /DeviceRGB 1 8 0 R] ";
  std::string const rows(30, 'r');
  return {
      {Shape(8, 2, 1) + "/Decode [1 0] /ImageMask true", "AB"},
      {Shape(8, 2, 1) + "/Filter/CCITTFaxDecode /DecodeParms <</K -1 /Columns 8 /BlackIs1 true>>",
       std::string("\x26\xA0\x00\x10\x01", 5)},
      {Shape(5, 3, 8) + indexed, rows},
      {Shape(5, 2, 8) + "/ColorSpace/DeviceRGB /Filter[/FlateDecode]", test::Deflate(rows)},
      {Shape(5, 3, 8) + "/ColorSpace/DeviceGray /Filter/RunLengthDecode",
       "\xFCz\x02"
       "abc\x80"},
      {Shape(2, 3, 8) + "/ColorSpace/DeviceGray /Filter/FlateDecode /DecodeParms "
                        "<</Predictor 12 /Columns 2>>",
       test::Deflate(test::PngRows("abcdef", 2, 2))}};
}

void BuiltSeeds() {
  std::string const keys = "/Root 1 0 R /Info 6 0 R /ID [<01><02>]";
  for (Image const& image : Images()) {
    PdfBuilder classic("%PDF-1.4", "\r\n");
    AddPictures(classic, image.keys, image.data);
    classic.Stream(8, "", "rgbRGB");
    classic.Classic({.keys = keys});
    classic.Object(3, PageText("/Rotate 90"));
    classic.Classic({.prev = classic.LastSection(), .keys = keys});
    DocumentSeed(classic.Content());

    PdfBuilder by_stream("%PDF-1.5");
    AddPictures(by_stream, image.keys, image.data);
    by_stream.Stream(8, "", "rgbRGB");
    by_stream.XrefStream(9, {.keys = keys, .stream = {.predictor = 12}});
    DocumentSeed(by_stream.Content());
  }
}

// Objects in object streams; a wrong offset, which the recovery scan makes up for; loops.
void OddSeeds() {
  PdfBuilder packed("%PDF-1.5");
  packed.ObjectStream(9, {{1, "<</Type/Catalog /Pages 2 0 R >>"},
                          {2, "<</Type/Pages /Kids [3 0 R ] /Count 1 >>"},
                          {3, PageText("")}});
  packed.Stream(4, Shape(8, 2, 1), "AB");
  packed.XrefStream(10, {.widths = {1, 3, 1}, .stream = {.predictor = 11}});
  DocumentSeed(packed.Content());

  PdfBuilder wrong("%PDF-1.5");
  AddPictures(wrong, Shape(8, 2, 1), "AB");
  wrong.Row(3, {1, 17, 0}).Row(4, {1, 99999, 0});
  wrong.XrefStream(9);
  DocumentSeed(wrong.Content());

  PdfBuilder loops;
  loops.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  loops.Object(2, "<</Type/Pages /Kids [3 0 R 4 0 R] /Count 5 0 R >>");
  loops.Object(3, "<</Type/Pages /Parent 2 0 R /Kids [2 0 R 4 0 R] /Count 9 >>");
  loops.Object(4, PageText(""));
  loops.Object(5, "2");
  loops.Classic({.prev = loops.Size()});
  DocumentSeed(loops.Content());
}

// Documents that are made to waste time: a page tree that grows with each level, streams of nothing
// that unpack to much, and sections without end.
void CostlySeeds() {
  PdfBuilder tree;
  tree.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  for (DWORD node = 2; node < 20; ++node) {
    std::string kids;
    for (int i = 0; i < 40; ++i) kids += std::to_string(node + 1) + " 0 R ";
    tree.Object(node, "<</Type/Pages /Count 9 /Kids [" + kids + "] >>");
  }
  tree.Object(20, PageText(""));
  tree.Classic();
  DocumentSeed(tree.Content());

  PdfBuilder bombs("%PDF-1.5");
  std::string kids;
  for (DWORD page = 0; page < 60; ++page) {
    kids += std::to_string(60 + page) + " 0 R ";
    bombs.ObjectStream(120 + page, {{60 + page, PageText("") + std::string(200000, ' ')}});
  }
  bombs.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  bombs.Object(2, "<</Type/Pages /Count 60 /Kids [" + kids + kids + "] >>");
  bombs.XrefStream(200);
  DocumentSeed(bombs.Content());

  PdfBuilder sections;
  test::AddPageTree(sections, 3);
  sections.Classic();
  for (int i = 0; i < 100; ++i) {
    sections.Object(3, PageText(""));
    sections.Classic({.prev = sections.LastSection()});
  }
  DocumentSeed(sections.Content());
}

// ---- Recipes ----

std::string Pieces(std::vector<std::string> const& pieces) {
  std::string text;
  for (std::string const& piece : pieces) text += piece + '\x1E';
  return text;
}

void RecipeSeeds() {
  std::string const catalog = "1<</Type/Catalog /Pages 3 0 R >>";
  std::string const root = "3<</Type/Pages /Kids [4 0 R 5 0 R] /Count 2 >>";
  std::string const page = "<</Type/Page /Contents 6 0 R /Resources <</XObject <</Im 7 0 R>> >> >>";
  std::string const info = "2<</Title (T) /Author <FEFF0041> /Subject 9 0 R /Keywords (k\\051) >>";
  std::string const content = "f6\nq 1 0 0 -1 0 9 cm /Im Do Q";
  std::string const tree_cycle = "o5<</Type/Pages /Kids [4 0 R 3 0 R] /Count 9 >>";
  for (Image const& image : Images()) {
    Seed("built_document_fuzz",
         Pieces({"o" + catalog, "o" + root, "o" + info, "o4" + page, tree_cycle, content,
                 "s7" + image.keys + "\n" + image.data, "s8\nrgbRGB", "o9(s)"}));
    Seed("built_document_fuzz",
         Pieces({"p:" + catalog + "\n" + root + "\n4" + page + "\n5" + page, "o" + info, content,
                 "f7" + Shape(9, 9, 8) + "\nabcdefghi", "x;2/Root 1 0 R /Info 2 0 R"}));
  }
  Seed("built_document_fuzz",
       Pieces({"o" + catalog, "o" + root, "o4" + page, "c/Root 1 0 R", "o4<</Type/Page>>",
               "t% comment\n", "x;0/Root 1 0 R /Index [0 9] ", "p<1(a)\n2[1 0 R]",
               "x=2/Root 1 0 R /Size 70"}));
}

// ---- Parts ----

void ScannerSeeds() {
  std::string const dictionary =
      "4 0 obj\n<</Type/Page /Width 8 /Height 5 0 R /Kids [3 0 R 4 0 R] /ProcSet[/PDF /ImageC]"
      " /ID [<0A> <0B>] /MediaBox [0 0 612.5 792] /Title (a \\(b\\)) /Filter/Flate#44ecode>>\n"
      "stream\nABC\nendstream\nendobj\n";
  for (char const* const key : {"/Width", "Height", "/Kids", "ProcSet", "/ID", "MediaBox", "/Title",
                                "/Filter", "endobj", "/Type"}) {
    Seed("scanner_fuzz", std::string(key) + "\n" + dictionary);
  }
  Seed("tool_calculator_fuzz", "{dup 0.5 gt {1 exch sub} {2 mul} ifelse 3 1 roll}");
}

void TypedSeeds() {
  for (char const* const value :
       {"(text \\101\\n(inner)\\))", "<FEFF00410>", "/Na#6De", "[1 0 R [2] (3) /X]", "-17", "true",
        "<</A [1] /B <</C 2>> >>", "3.14159", "4 0 R", "5 0 R", "7 0 R", "8 0 R", "9 0 R", "10 0 R",
        "11 0 R", "99 0 R", "12 0 obj 5 endobj", "[/FlateDecode /DCTDecode]"}) {
    Seed("typed_value_fuzz", std::string("<</K ") + value + " /Z 1>>");
  }
  Seed("typed_value_fuzz", "<</ID [<01A> (b\\051)] /K 1>>");
  Seed("typed_value_fuzz",
       "<</Predictor 12 /Colors 3 /BitsPerComponent 8 /Columns 5 /K -1 /Rows 7 /BlackIs1 true "
       "/EndOfLine false /EncodedByteAlign true /EndOfBlock false /DamagedRowsBeforeError 2>>");
  Seed("typed_value_fuzz", "<</Filter [/FlateDecode/LZWDecode] /K/N>>");
}

void ImageSeeds() {
  for (int tag = 0; tag <= 4; ++tag) {
    std::string rows = test::PngRows("abcdefabcdefghijkl", 6, tag % 3);
    for (size_t at = 0; at < rows.size(); at += 7) rows[at] = static_cast<char>(tag);
    Seed("predictor_fuzz", Word(3) + Word(8) + Word(2) + rows);
  }
  Seed("predictor_fuzz", Word(1) + Word(9) + Word(2) + test::PngRows("abcdef", 2, 2));
  for (unsigned kind = 0; kind < 3; ++kind) {
    Seed("run_length_fuzz", Word(7) + Word(3) + Word(kind) + Word(8) +
                                "\xFCz\x02"
                                "abc\x80\xF0y");
  }
  Seed("content_fuzz", std::string("\x10\x05") + "q 1 0 0 -1 0 9 cm q .5 0 0 .5 0 0 cm Q /Im Do Q");
  Seed("content_fuzz", std::string("\xFF\x01") + "q\nQ Q 0 1 -1 0 2 2 cm 1 0 0 -1 0 0 cm\n/X Do");
  std::string const group4("\x2A\xBF\xFF\x00\x10\x01", 6);
  for (unsigned decoder = 0; decoder < 7; ++decoder) {
    std::string const size = Word(decoder) + Word(7) + Word(3) + Word(decoder);
    std::string data =
        "\xFCz\x02"
        "abc\x80\xF0y";
    if (decoder == 1) data = test::Deflate(std::string(60, 'a'));
    if (decoder == 3 || decoder == 4) data = group4;
    if (decoder >= 5) data = test::ToText(test::Save(Picture(24), {}));
    Seed("decoder_fuzz", size + data);
  }
  // Eight rows of eight: the first black at its left half, the others like it.
  Seed("cadwick_fuzz", Word(7) + Word(7) + Word(0) + group4);
  for (unsigned flags = 0; flags < 12; ++flags) {
    Seed("tool_fax_fuzz", std::string(1, static_cast<char>(flags)) + Word(8) + Word(4) + group4);
  }
}

void JpegSeeds() {
  auto const save = [](test::Bytes const& file) { Seed("rennick_fuzz", test::ToText(file)); };
  save(test::Save(Picture(8), {}));
  save(test::Save(Picture(24), {.quality = 30, .x_per_metre = 3937}));
  save(test::Save(Picture(24, 40, 33), {.quality = 95}));
  for (auto const& [components, space, stored] : {std::tuple{1, JCS_GRAYSCALE, JCS_GRAYSCALE},
                                                  {3, JCS_RGB, JCS_YCbCr},
                                                  {4, JCS_CMYK, JCS_YCCK},
                                                  {3, JCS_RGB, JCS_RGB}}) {
    save(test::Write(test::Gradient(19, 13, components), {space, stored}));
    save(
        test::Write(test::Gradient(19, 13, components),
                    {space, stored, [](jpeg_compress_struct& c) { jpeg_simple_progression(&c); }}));
  }
}

void HocrSeeds() {
  std::string const text =
      "<?xml version='1.0'?><html><body><div class='ocr_page' title='image \"x\"; bbox 0 0 300 "
      "400; "
      "scan_res 300 300'><p><span class='ocrx_word' id='w1' title='bbox 1 2 3 4; x_fsize 12'>"
      "<em>W&#246;rd</em>&amp;</span><span class='ocrx_word' id='w2' title='x'>b</span></p></div>"
      "</body></html>";
  Seed("hocr_fuzz", text);
  Seed("hocr_fuzz", "\xEF\xBB\xBF" + text);
  std::string wide = "\xFF";
  for (char const c : text) wide += {c, '\0'};
  Seed("hocr_fuzz", wide);
}

// ---- Print rasters ----

void RasterSeeds() {
  std::string const target = "tool_raster_fuzz";
  test::RasterHeaderForm form;
  std::string const rows(16, 'a');
  Seed(target, "RaSt" + test::RasterHeaderBytes(form, false, 420) + rows);
  Seed(target, "3SaR" + test::RasterHeaderBytes(form, true) + rows);
  Seed(target, "RaS2" + test::PackedGreyPage(9, 'a') + test::PackedGreyPage(5, 'b'));
  std::string apple("UNIRAST", 8);
  apple += test::Number(1) + test::AppleHeaderBytes(24, 1, 2, 1, 72);
  Seed(target, apple + std::string("\0\1abc", 5));
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) return EXIT_FAILURE;
  folder = arguments[1];
  std::filesystem::remove_all(folder);
  WrittenSeeds();
  BuiltSeeds();
  OddSeeds();
  CostlySeeds();
  RecipeSeeds();
  ScannerSeeds();
  TypedSeeds();
  ImageSeeds();
  JpegSeeds();
  HocrSeeds();
  RasterSeeds();
  return EXIT_SUCCESS;
}
