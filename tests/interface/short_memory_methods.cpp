// A user of the class whose memory is short: short_memory_methods CADWICK RENNICK DIRECTORY.
//
// A method whose memory is short has its failure result, throws nothing but what is documented, and
// does its work once there is memory again, on the same session.
#include <sorrelin/frame/pdf.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/frame/string_error.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/wide_string.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <type_traits>

#include "tests/interface/failing_runs.h"
#include "tests/support/pdf_builder.h"

namespace {

sorrelin::WideString cadwick;
sorrelin::WideString rennick;
std::string narrow_rennick;
std::string file_path;
HDIB bitmaps[3];
enum { kBilevel, kIndexed, kRgb };

template <typename T>
bool Succeeded(T result) {
  if constexpr (std::is_pointer_v<T>) {
    return result != nullptr && result != INVALID_HANDLE_VALUE;
  } else {
    return result != 0;
  }
}

// What the work gives; 0 where the string operations of the reader throw that memory is short.
template <typename Work>
auto Attempt(Work work) -> decltype(work()) {
  try {
    return work();
  } catch (SorrelinStringError const& error) {
    Require(error.code() == SorrelinStringError::kFailed, "exception", 0);
  }
  return {};
}

// The result of the work, which is done again, with memory, if it failed.
template <typename Work>
auto Try(CCreatePDF& session, char const* name, Work work) {
  step = name;
  auto result = Attempt(work);
  if (Succeeded(result)) return result;
  DWORD const code = session.PDF_GetLastError();
  // A session that opens nothing has the code that it had before.
  Require(IsShortage(code) || code == PDF_ERROR_NONE || code == PDF_ERROR_NOT_INITIALIZED,
          "unexpected code", static_cast<long>(code));
  GiveMemory();
  result = Attempt(work);
  Require(Succeeded(result), "fails with memory", static_cast<long>(session.PDF_GetLastError()));
  return result;
}
#define TRY(session, call) Try(session, #call, [&] { return (session).call; })

// A session; without memory for its state each method fails with code 10.
void MakeSession(CCreatePDF& session) {
  step = "a session";
  if (session.PDF_GetLastError() != PDF_ERROR_MEMORY) return;
  GiveMemory();
  Require(session.CreatePDFInMemory(0, 0) == 0, "works without a state", 0);
  Require(session.SetTitleA("text") == 0, "works without a state", 0);
  Require(session.LoadObject(1) == nullptr, "works without a state", 0);
  Require(session.PDF_GetLastError() == PDF_ERROR_MEMORY, "code", 0);
  CCreatePDF other;
  session = other;
  Require(session.PDF_GetLastError() == PDF_ERROR_NOT_INITIALIZED, "no state by assignment", 0);
}

// Both sessions own the channel; the copy goes on with the document.
void CopySession() {
  CCreatePDF first;
  MakeSession(first);
  TRY(first, SetTitleA("A title that needs memory of its own"));
  TRY(first, CreatePDFInMemory(0, 0));
  TRY(first, SaveDIBAsColorPDFPage(bitmaps[kIndexed], "", PDF_COMPRESSION_FLATE, 6));
  CCreatePDF copy;
  MakeSession(copy);
  copy = first;
  TRY(copy, SaveDIBAsColorPDFPage(bitmaps[kRgb], "", PDF_COMPRESSION_NONE, 0));
  int64_t data = 0;
  DWORD size = 0;
  TRY(copy, FinishPDFInMemory(&data, &size));
  GiveMemory();
  DWORD const pages = GetNumberOfPagesInPDFInMemory(reinterpret_cast<void const*>(data), size);
  Require(pages == 2, "page count", static_cast<long>(pages));
  std::free(reinterpret_cast<void*>(data));
}

// Codes the bitmap and takes the stream back into a bitmap.
template <typename Code, typename Decode>
void ThereAndBack(CCreatePDF& session, char const* name, Code code, Decode decode) {
  void* const stream = Try(session, name, code);
  void* const bitmap = Try(session, name, [&] { return decode(stream); });
  GlobalFree(bitmap);
  GlobalFree(stream);
}

void CodeAndDecode() {
  constexpr DWORD kWidth = 40;
  constexpr DWORD kHeight = 9;
  CCreatePDF s;
  MakeSession(s);
  DWORD size = 0;
  void* const palette = GlobalAlloc(GPTR, 1024);
  HDIB const* const b = bitmaps;
  ThereAndBack(
      s, "raw", [&] { return s.ConvertDIB2UncompressedPDFImage(b[kRgb], size); },
      [&](void* data) {
        return s.CreateDIBFromUncompressedData(data, kWidth, kHeight, 4, nullptr);
      });
  ThereAndBack(
      s, "Flate", [&] { return s.ConvertDIB2FlatePDFImage(b[kRgb], size, 0, 6); },
      [&](void* data) { return s.CreateDIBFromFLATEData(data, kWidth, kHeight, 4, nullptr); });
  if (palette != nullptr) {
    ThereAndBack(
        s, "run length", [&] { return s.ConvertDIB2RLEPDFImage(b[kIndexed], size, 0); },
        [&](void* data) { return s.CreateDIBFromRLEData(data, kWidth, kHeight, 2, palette); });
  }
  ThereAndBack(
      s, "CCITT", [&] { return s.ConvertDIB2CcittPDFImageW(b[kBilevel], size, cadwick.c_str()); },
      [&](void* data) { return s.CreateDIBFromCCITTData(data, kWidth, kHeight); });
  ThereAndBack(
      s, "CCITT in a file",
      [&] { return s.ConvertDIB2CcittPDFImageFileW(b[kBilevel], size, cadwick.c_str()); },
      [&](void* data) { return s.CreateDIBFromCCITTDataFile(data, kWidth, kHeight); });
  ThereAndBack(
      s, "JPEG",
      [&] { return s.ConvertDIB2DctJpegPDFImage(b[kRgb], size, narrow_rennick.c_str(), 75, 0); },
      [&](void* data) { return s.CreateDIBFromJPEGData(data); });
  ThereAndBack(
      s, "JPEG in a file",
      [&] { return s.ConvertDIB2DctJpegPDFImageFileW(b[kRgb], size, rennick.c_str(), 75, 0); },
      [&](void* data) { return s.CreateDIBFromJPEGDataFile(data); });
  GlobalFree(Try(s, "palette", [&] { return s.ExtractPaletteFromDIB(b[kIndexed], &size); }));
  GlobalFree(palette);
}

test::Bytes document;

constexpr char kImage[] =
    "/Type/XObject /Subtype/Image /Width 8 /Height 1 /BitsPerComponent 8 "
    "/ColorSpace[/Indexed /DeviceRGB 255 7 0 R ] ";

enum class Form { kClassic, kStreams, kWrongOffset };

// One page with an indexed image. Its objects are in the file or in an object stream; with a wrong
// offset the image is found by a scan of the file.
test::Bytes MakeDocument(Form form) {
  bool const in_streams = form == Form::kStreams;
  test::PdfBuilder pdf("%PDF-1.5");
  std::string const content = "q 8 0 0 1 0 0 cm /I Do Q";
  std::vector<std::pair<DWORD, std::string>> const objects = {
      {1, "<</Type/Catalog /Pages 2 0 R >>"},
      {2, "<</Type/Pages /Kids[3 0 R ] /Count 1 >>"},
      {3,
       "<</Type/Page /Parent 2 0 R /MediaBox[0 0 8 1 ] /Contents 5 0 R "
       "/Resources<</XObject<</I 6 0 R >> >> >>"},
      {4, "<</Title (A title that needs memory of its own)>>"}};
  std::string const keys = "/Root 1 0 R /Info 4 0 R /ID[<00><00>]";
  if (in_streams) pdf.ObjectStream(8, objects);
  for (auto const& [number, text] : objects) {
    if (!in_streams) pdf.Object(number, text);
  }
  pdf.Stream(5, "", content);
  pdf.Stream(6, kImage, "12345678");
  pdf.Stream(7, "", std::string(768, 'x'));
  if (form == Form::kWrongOffset) pdf.Row(6, {1, 3, 0});
  if (form != Form::kClassic) {
    pdf.XrefStream(9, {.keys = keys, .stream = {.predictor = 12}});
  } else {
    pdf.Classic({.keys = keys});
  }
  return pdf.Document();
}

void ReadDocument() {
  CCreatePDF session;
  MakeSession(session);
  auto const address = reinterpret_cast<int64_t>(document.data());
  auto const size = static_cast<DWORD>(document.size());
  TRY(session, OpenPDFFileInMemory(address, size));
  GlobalFree(TRY(session, LoadObject(3)));
  GlobalFree(TRY(session, LoadPalette(8, 255, 7)));
  GlobalFree(TRY(session, LoadImageFromPDF(0)));
  DWORD number = 0;
  Try(session, "GetValueFromReference", [&] {
    session.GetValueFromReference(3, &number);
    return 1;
  });
  DWORD units = 0;
  Require(session.GetTitleW(nullptr, &units) == 1 && units == 37, "title", units);
  session.ClosePDFFile();
}

int ReadScenario(char const* name, test::Bytes bytes) {
  document = std::move(bytes);
  return RunScenario(name, nullptr, ReadDocument);
}

void RemoveFile() { unlink(file_path.c_str()); }

// The lowest layer, object by object.
void WriteObjects() {
  CCreatePDF session;
  MakeSession(session);
  TRY(session, CreatePDFFile(file_path.c_str()));
  TRY(session, WritePDFHeader("A title that needs memory of its own", "A creator"));
  TRY(session, CreateOutlinesObject(0));
  TRY(session, ReservePagesRootObject());
  TRY(session, CreateFontObject());
  TRY(session, WriteToPDFFile("% a line that is longer than what a string holds in itself", 1));
  TRY(session, CreatePagesRootObject());
  TRY(session, CreateCatalogObject(session.GetPagesRootObjectNr(), session.GetOutlinesObjectNr()));
  TRY(session, WriteXref());
  session.ClosePDFFile();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4 || FindAllocator() == 0) {
    std::fprintf(stderr,
                 "usage: LD_PRELOAD=failing_allocator short_memory_methods CADWICK RENNICK "
                 "DIRECTORY\n");
    return 2;
  }
  narrow_rennick = argv[2];
  cadwick.assign(argv[1], argv[1] + std::strlen(argv[1]));
  rennick.assign(narrow_rennick.begin(), narrow_rennick.end());
  file_path = argv[3];
  file_path.append("/short_memory_methods_").append(std::to_string(getpid())).append(".pdf");
  bitmaps[kBilevel] = NewBitmap(1);
  bitmaps[kIndexed] = NewBitmap(8);
  bitmaps[kRgb] = NewBitmap(24);
  int passed = 1;
  passed &= RunScenario("a copied session", nullptr, CopySession);
  passed &= RunScenario("coders and decoders", nullptr, CodeAndDecode);
  passed &= RunScenario("objects", RemoveFile, WriteObjects);
  passed &= ReadScenario("a classic document", MakeDocument(Form::kClassic));
  passed &= ReadScenario("a document of streams", MakeDocument(Form::kStreams));
  passed &= ReadScenario("a document with a wrong offset", MakeDocument(Form::kWrongOffset));
  RemoveFile();
  return passed != 0 ? 0 : 1;
}
