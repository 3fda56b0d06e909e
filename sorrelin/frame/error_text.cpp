// The table of error texts, and the system's text for code 1.
#include <sorrelin/frame/error_text.h>
#include <sorrelin/frame/pdf.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/text.h>

#include <cstring>
#include <iterator>

namespace sorrelin {

namespace {

constexpr char kNoText[] = "No error message defined for this error.";

// Indexed by code. Row 1 is the system's text; 12, 13 and 14 are codes without a text.
constexpr char const* kTexts[] = {
    "No Error",
    nullptr,
    "Invalid handle value",
    "File already exists",
    "Invalid image size",
    "Invalid bits per pixel value",
    "Invalid string",
    "Null pointer",
    "Zero bytes to write",
    "Invalid DPI value",
    "Memory allocation error",
    "The object already exists",
    kNoText,
    kNoText,
    kNoText,
    "The filter (compression) type currently is not supported",
    "Negative value is not supported",
    "Error accessing the temp directory",
    "Error accessing the temp file",
    "Invalid Cadwick32.DLL",
    "Encoding has failed",
    "Invalid Jpeg DLL",
    "Invalid parameter",
    "Error opening file",
    "File is not a PDF file",
    "PDF version is not supported",
    "Error reading file",
    "Error during decompression",
    "Invalid palette",
    "Compression type not supported",
    "CCITT encoding failed",
    "Invalid page number",
    "PDF Object not initialized",
    "Invalid ProcSet value",
    "Invalid object type",
    "Insufficient buffer",
    "Could not load Lumbrel.dll",
    "The PDF document is password protected",
    "The width of the pages does not match",
    "Could not load Pellory.dll",
    "Failed to create a new page object in the PDF file",
    "Could not insert image to the PDF page",
    "File not found",
    "Access denied",
    "The specified password is invalid",
    "Could not load Averna.dll",
    "Could not load functions from Averna.dll",
    "Error during OCR process",
    "Error during parsing HOCR data",
};
static_assert(std::size(kTexts) == PDF_ERROR_HOCR + 1);

constexpr DWORD kDefaultLanguage = 0x400;
constexpr int kWideTextUnits = 512;

// Calls use(text) with the text of a code. Kept: the system's text is that of the moment of asking,
// not of the failure. The library's own texts need no memory, which may be what is short.
template <typename Use>
auto WithText(DWORD code, Use use) {
  if (code != PDF_ERROR_SYSTEM) return use(code < std::size(kTexts) ? kTexts[code] : kNoText);
  char* text = nullptr;
  FormatMessageA(
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM,
      nullptr, GetLastError(), kDefaultLanguage, reinterpret_cast<char*>(&text), 0, nullptr);
  auto const result = use(text != nullptr ? text : "");
  LocalFree(text);
  return result;
}

}  // namespace

int GetErrorText(DWORD code, char* buffer) {
  if (buffer == nullptr) return 0;
  return WithText(code, [&](char const* text) {
    std::memcpy(buffer, text, std::strlen(text) + 1);
    return 1;
  });
}

int GetErrorTextW(DWORD code, WCHAR* buffer) {
  if (buffer == nullptr) return 0;
  return WithText(code, [&](char const* text) {
    return MultiByteToWideChar(CP_ACP, 0, text, -1, buffer, kWideTextUnits) != 0 ? 1 : 0;
  });
}

}  // namespace sorrelin
