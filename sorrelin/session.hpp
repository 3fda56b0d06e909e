// Owners for C++ over the flat interface: a session, a bitmap, a document in memory.
//
// Header-only, for C++17 and later, over sorrelin/frame/pdf.h. Every failure is an Error with the
// library's code and text. Objects can be moved but not copied; one that was moved from is empty,
// can be assigned to or destroyed, and otherwise fails with code 2. A session, and a bitmap, is for
// one thread at a time.
#ifndef SORRELIN_SESSION_HPP_
#define SORRELIN_SESSION_HPP_

#include <sorrelin/frame/pdf.h>
#include <sorrelin/frame/string_error.h>
#include <sorrelin/platform/memory.h>

#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#if defined(__cplusplus) && __cplusplus >= 202002L
#include <span>
#endif

namespace sorrelin {

// Keeps the linker's names of these classes apart from those inside the static library.
inline namespace client {

// A failure: the code, one of PDF_ERROR_, and its text as what().
class Error : public std::runtime_error {
 public:
  // `code` as the library returned it.
  Error(DWORD code, std::string const& text) : std::runtime_error(text), code_(code) {}

  // One of PDF_ERROR_; 0 for a page without a readable image.
  DWORD code() const noexcept { return code_; }

 private:
  DWORD code_;
};

// Consecutive elements that belong to somebody else. Made from any container of them, and converts
// from and to std::span where there is one.
template <typename Element>
class View {
 public:
  // No elements.
  constexpr View() noexcept = default;
  // `size` elements from `data` on.
  constexpr View(Element* data, size_t size) noexcept : data_(data), size_(size) {}
  // The elements of a container, which must outlive the view.
  template <typename Container, typename = std::enable_if_t<std::is_convertible_v<
                                    decltype(std::declval<Container&>().data()), Element*>>>
  constexpr View(Container&& container) noexcept
      : data_(container.data()), size_(container.size()) {}

  // The first element.
  constexpr Element* data() const noexcept { return data_; }
  // The number of elements.
  constexpr size_t size() const noexcept { return size_; }
  // Whether there are no elements.
  constexpr bool empty() const noexcept { return size_ == 0; }
  // The first element.
  constexpr Element* begin() const noexcept { return data_; }
  // The end, after the last element.
  constexpr Element* end() const noexcept { return data_ + size_; }
  // Element `index`, which must be less than size().
  constexpr Element& operator[](size_t index) const { return data_[index]; }

 private:
  Element* data_ = nullptr;
  size_t size_ = 0;
};

// A picture: the owner of a global block that holds a packed bitmap, locked as long as it is owned.
class Bitmap {
 public:
  // No picture.
  Bitmap() noexcept = default;

  // Takes over `block` from GlobalAlloc, which may be null or empty.
  explicit Bitmap(HDIB block) noexcept
      : block_(block == INVALID_HANDLE_VALUE ? nullptr : block),
        bytes_(block_ != nullptr ? static_cast<BYTE*>(GlobalLock(block_)) : nullptr),
        size_(bytes_ != nullptr ? GlobalSize(block_) : 0) {}

  // A new picture of `width` x `height` pixels of 1, 8 or 24 bits, all 0, which is black. The
  // colours are black and white, or greys from 0 to 255. `dpi` is in dots per inch; 0 leaves it
  // open. Throws 4 for a size below 1, 5 for another depth, 10 for more than fits.
  Bitmap(LONG width, LONG height, WORD bits, double dpi = 0)
      : Bitmap(Allocate(width, height, bits)) {
    if (bytes_ == nullptr) throw Error(PDF_ERROR_MEMORY, "no memory for a bitmap");
    BITMAPINFOHEADER header{};
    header.biSize = sizeof header;
    header.biWidth = width;
    header.biHeight = height;
    header.biPlanes = 1;
    header.biBitCount = bits;
    header.biXPelsPerMeter = header.biYPelsPerMeter = static_cast<LONG>(dpi / kMetresPerInch + 0.5);
    std::memcpy(bytes_, &header, sizeof header);
    FillColours();
  }

  // Takes the picture of `other`.
  Bitmap(Bitmap&& other) noexcept { Swap(other); }
  // Frees its own picture and takes that of `other`.
  Bitmap& operator=(Bitmap&& other) noexcept {
    Bitmap(std::move(other)).Swap(*this);
    return *this;
  }
  ~Bitmap() {
    if (block_ != nullptr) GlobalFree(Release());
  }

  // The block for flat functions, or null; it stays this object's.
  HDIB Handle() const noexcept { return block_; }

  // Gives the block up, unlocked, to be freed with GlobalFree.
  HDIB Release() noexcept {
    if (bytes_ != nullptr) GlobalUnlock(block_);
    bytes_ = nullptr;
    size_ = 0;
    return std::exchange(block_, nullptr);
  }

  // Whether there is a picture.
  explicit operator bool() const noexcept { return bytes_ != nullptr; }

  // Pixels in a row.
  LONG Width() const noexcept { return Header().biWidth; }
  // Rows.
  LONG Height() const noexcept { return Header().biHeight; }
  // Bits a pixel: 1, 8 or 24.
  WORD Bits() const noexcept { return Header().biBitCount; }
  // Dots per inch from left to right; 0 if the bitmap does not say.
  double DpiX() const noexcept { return Header().biXPelsPerMeter * kMetresPerInch; }
  // Dots per inch from top to bottom; 0 if the bitmap does not say.
  double DpiY() const noexcept { return Header().biYPelsPerMeter * kMetresPerInch; }

  // The colour table, empty for 24 bits.
  View<RGBQUAD> Colours() const noexcept {
    size_t const room = size_ < sizeof(BITMAPINFOHEADER) ? 0 : size_ - sizeof(BITMAPINFOHEADER);
    if (ColourCount() > room / sizeof(RGBQUAD)) return {};
    return {reinterpret_cast<RGBQUAD*>(bytes_ + sizeof(BITMAPINFOHEADER)), ColourCount()};
  }

  // Row `y`, 0 being the top one, without padding: 8 pixels a byte, the leftmost in the highest
  // bit, one byte a pixel, or blue, green and red. Empty if the block has no such row.
  View<BYTE> Row(LONG y) const noexcept {
    LONG const height = Height();
    if (y < 0 || y >= height || Width() <= 0) return {};
    Size const bits = static_cast<Size>(Width()) * Bits();
    Size const at = sizeof(BITMAPINFOHEADER) + ColourCount() * Size{sizeof(RGBQUAD)} +
                    Stride(bits) * static_cast<Size>(height - 1 - y);
    Size const row_bytes = (bits + 7) / 8;
    if (at > size_ || row_bytes > size_ - at) return {};
    return {bytes_ + at, static_cast<size_t>(row_bytes)};
  }

 private:
  static constexpr double kMetresPerInch = 0.0254;
  using Size = unsigned long long;  // products of 32-bit numbers fit in
  static constexpr Size kLargestBlock = 0xFFFFFFFF;

  static Size Stride(Size bits) noexcept { return (bits + 31) / 32 * 4; }

  static HDIB Allocate(LONG width, LONG height, WORD bits) {
    if (width < 1 || height < 1) throw Error(PDF_ERROR_INVALID_IMAGE_SIZE, "a bitmap of no pixels");
    if (bits != 1 && bits != 8 && bits != 24) {
      throw Error(PDF_ERROR_INVALID_BITS_PER_PIXEL, "a bitmap has 1, 8 or 24 bits a pixel");
    }
    Size const bytes = Stride(static_cast<Size>(width) * bits) * static_cast<Size>(height) +
                       sizeof(BITMAPINFOHEADER) + TableSize(bits) * sizeof(RGBQUAD);
    if (bytes > kLargestBlock) throw Error(PDF_ERROR_MEMORY, "a bitmap of 4 GiB or more");
    return GlobalAlloc(GHND, static_cast<SIZE_T>(bytes));
  }

  static size_t TableSize(WORD bits) noexcept { return bits <= 8 ? size_t{1} << bits : 0; }

  BITMAPINFOHEADER Header() const noexcept {
    BITMAPINFOHEADER header{};
    if (size_ >= sizeof header) std::memcpy(&header, bytes_, sizeof header);
    return header;
  }

  size_t ColourCount() const noexcept {
    BITMAPINFOHEADER const header = Header();
    return header.biClrUsed != 0 ? header.biClrUsed : TableSize(header.biBitCount);
  }

  void FillColours() noexcept {
    View<RGBQUAD> const colours = Colours();
    for (size_t i = 0; i < colours.size(); ++i) {
      auto const grey = static_cast<BYTE>(i * 255 / (colours.size() - 1));
      colours[i] = RGBQUAD{grey, grey, grey, 0};
    }
  }

  void Swap(Bitmap& other) noexcept {
    std::swap(block_, other.block_);
    std::swap(bytes_, other.bytes_);
    std::swap(size_, other.size_);
  }

  HDIB block_ = nullptr;
  BYTE* bytes_ = nullptr;
  size_t size_ = 0;
};

// A finished document in memory: a range of bytes.
class MemoryDocument {
 public:
  // No document.
  MemoryDocument() noexcept = default;
  // Takes over a document that a flat function handed out.
  MemoryDocument(void* data, DWORD size) noexcept : data_(static_cast<BYTE*>(data)), size_(size) {}
  // Takes the document of `other`.
  MemoryDocument(MemoryDocument&& other) noexcept { Swap(other); }
  // Frees its own document and takes that of `other`.
  MemoryDocument& operator=(MemoryDocument&& other) noexcept {
    MemoryDocument(std::move(other)).Swap(*this);
    return *this;
  }
  ~MemoryDocument() { pdf_FreePDFInMemory(data_); }

  // The first byte.
  BYTE const* data() const noexcept { return data_; }
  // Bytes.
  size_t size() const noexcept { return size_; }
  // Whether there is no document.
  bool empty() const noexcept { return size_ == 0; }
  // The first byte.
  BYTE const* begin() const noexcept { return data_; }
  // The end, after the last byte.
  BYTE const* end() const noexcept { return data_ + size_; }

 private:
  void Swap(MemoryDocument& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
  }

  BYTE* data_ = nullptr;
  size_t size_ = 0;
};

// How the image of a page is coded.
struct PageCoding {
  DWORD compression = PDF_COMPRESSION_FLATE;  // one of PDF_COMPRESSION_
  int quality = -1;                           // 0 to 9 for Flate, 1 to 100 for JPEG; else a default
  std::string codec;                          // the codec library of Group 4 and JPEG

  // As it is; any depth.
  static PageCoding Raw() { return {PDF_COMPRESSION_NONE, -1, {}}; }
  // Without loss; any depth.
  static PageCoding Flate(int level = -1) { return {PDF_COMPRESSION_FLATE, level, {}}; }
  // Without loss; 8 bits.
  static PageCoding RunLength() { return {PDF_COMPRESSION_RUN_LENGTH, -1, {}}; }
  // Without loss; 1 bit.
  static PageCoding Group4(std::string codec = "Cadwick.dll") {
    return {PDF_COMPRESSION_CCITT, -1, std::move(codec)};
  }
  // With loss; 24 bits, and 8 bits of grey.
  static PageCoding Jpeg(int quality = 75, std::string codec = "Rennick.dll") {
    return {PDF_COMPRESSION_JPEG, quality, std::move(codec)};
  }
};

// A session, which writes or reads one document at a time. Its end closes the document; a file that
// was not finished stays, unfinished. Texts and file names are in the system's code page, which is
// UTF-8 outside Windows.
class Session {
 public:
  // Throws 10 if memory is short.
  Session() { Check(pdf_Init_PDF(&handle_)); }
  // Takes the session of `other` with what it has open.
  Session(Session&& other) noexcept { Swap(other); }
  // Closes its own session and takes that of `other`.
  Session& operator=(Session&& other) noexcept {
    Session(std::move(other)).Swap(*this);
    return *this;
  }
  ~Session() { pdf_Release_PDF(handle_); }

  // The handle for flat functions; it stays this object's.
  hPDF Handle() const noexcept { return handle_; }

  // Throws what a flat function on Handle() returned, unless it is 0. Call it at once.
  void Check(DWORD code) const {
    if (code != PDF_ERROR_NONE) throw Error(code, TextOf(code));
  }

  // Starts a document in a new file, or an update of the file if it exists.
  void Create(std::string const& file) {
    page_tried_ = false;
    Run([&] { return pdf_CreatePDF(handle_, file.c_str()); });
  }

  // Starts a document in memory, with a first block of `capacity` bytes.
  void CreateInMemory(DWORD capacity = 0) {
    page_tried_ = false;
    Run([&] { return pdf_CreatePDFInMemory(handle_, nullptr, capacity); });
  }

  // Adds a picture as a page. After a failure the document can still be continued and finished.
  void AddPage(Bitmap const& picture, PageCoding const& coding = {}) {
    page_tried_ = true;
    Run([&] {
      return pdf_SaveDIBAsColorPDFPage(handle_, picture.Handle(), coding.codec.c_str(),
                                       coding.compression, coding.quality);
    });
  }

  // Finishes a document in a file. Throws 8 for an update to which no page was added; the file then
  // stays as it was.
  void Finish() {
    if (!page_tried_ && PageCount() != 0) {
      throw Error(PDF_ERROR_ZERO_BYTES, "an update without a page");
    }
    Run([&] { return pdf_FinishPDF(handle_); });
  }

  // Finishes a document in memory.
  MemoryDocument FinishInMemory() {
    void* data = nullptr;
    DWORD size = 0;
    Run([&] { return pdf_FinishPDFInMemory(handle_, &data, &size); });
    return {data, size};
  }

  // Opens a document for reading.
  void Open(std::string const& file) {
    Run([&] { return pdf_OpenPDFFile(handle_, file.c_str()); });
  }

  // Opens a document in memory in place: the bytes must outlive its use.
  void OpenInMemory(View<BYTE const> document) {
    if (document.size() > 0xFFFFFFFF) throw Error(PDF_ERROR_OPEN, "a document of 4 GiB or more");
    Run([&] {
      return pdf_OpenPDFInMemory(handle_, document.data(), static_cast<DWORD>(document.size()));
    });
  }

  // Pages of the document that was opened; 0 without one.
  DWORD PageCount() const { return pdf_GetNumberOfPages(handle_); }

  // The image of page `page`, counted from 0. Throws 0 for a page without a readable image.
  Bitmap ReadImage(DWORD page) {
    HDIB block = nullptr;
    Run([&] {
      block = pdf_LoadImageFromPDF(handle_, page);
      return DWORD{PDF_ERROR_NONE};
    });
    Bitmap picture(block);
    if (picture) return picture;
    DWORD const code = pdf_PDF_GetLastError(handle_);
    Check(code);
    throw Error(code, "the page has no image that can be read");
  }

  // Closes what is open without finishing it.
  void Close() noexcept {
    if (handle_ != 0) pdf_ClosePDFFile(handle_);
  }

  // Sets the title of the next document; call it before Create. Throws 6 for more than 252 UTF-16
  // units, which the library cannot write; the title is then empty.
  void SetTitle(std::string const& text) { SetText(text, 252, pdf_SetTitleA, pdf_GetTitleW); }
  // The same for the author.
  void SetAuthor(std::string const& text) { SetText(text, 252, pdf_SetAuthorA, pdf_GetAuthorW); }
  // The same for the subject.
  void SetSubject(std::string const& text) { SetText(text, 252, pdf_SetSubjectA, pdf_GetSubjectW); }
  // The same for the keywords, of at most 251 units.
  void SetKeywords(std::string const& text) {
    SetText(text, 251, pdf_SetKeywordsA, pdf_GetKeywordsW);
  }

  // The title as set, or as read from a document.
  std::string Title() const { return Text(pdf_GetTitleA); }
  // The author as set, or as read from a document.
  std::string Author() const { return Text(pdf_GetAuthorA); }
  // The subject as set, or as read from a document.
  std::string Subject() const { return Text(pdf_GetSubjectA); }
  // The keywords as set, or as read from a document.
  std::string Keywords() const { return Text(pdf_GetKeywordsA); }

 private:
  template <typename Call>
  void Run(Call call) const {
    DWORD code = PDF_ERROR_NONE;
    try {
      code = call();
    } catch (SorrelinStringError const& error) {
      throw Error(error.code(), error.what());
    }
    Check(code);
  }

  std::string TextOf(DWORD code) const {
    char text[1024] = "";
    if (pdf_PDF_GetLastError(handle_) == code) pdf_GetLastPDFErrorText(handle_, text);
    return text[0] != 0 ? text : "error " + std::to_string(code);
  }

  // A string that is too long would end the process when the document is created.
  void SetText(std::string const& text, DWORD longest, DWORD (*set)(hPDF, char const*),
               DWORD (*get)(hPDF, WCHAR*, DWORD*)) {
    Check(set(handle_, text.c_str()));
    DWORD units = 0;
    Check(get(handle_, nullptr, &units));
    if (units <= longest + 1) return;
    Check(set(handle_, ""));
    throw Error(PDF_ERROR_INVALID_STRING,
                "a text of more than " + std::to_string(longest) + " units");
  }

  std::string Text(DWORD (*get)(hPDF, char*, DWORD*)) const {
    DWORD bytes = 0;
    Check(get(handle_, nullptr, &bytes));
    if (bytes == 0) return {};
    std::string text(bytes, '\0');
    Check(get(handle_, text.data(), &bytes));
    text.resize(bytes - 1);
    return text;
  }

  void Swap(Session& other) noexcept {
    std::swap(handle_, other.handle_);
    std::swap(page_tried_, other.page_tried_);
  }

  hPDF handle_ = 0;
  bool page_tried_ = false;
};

}  // namespace client
}  // namespace sorrelin

#if defined(__cpp_lib_span)
// A view may end before what was made from it.
template <typename Element>
inline constexpr bool std::ranges::enable_borrowed_range<sorrelin::View<Element>> = true;
#endif

#endif  // SORRELIN_SESSION_HPP_
