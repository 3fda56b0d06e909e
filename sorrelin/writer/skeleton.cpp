// The objects around the images, each a fixed template (ISO 32000-1, 7.5.2, 7.7, 14.3.3).
#include <sorrelin/frame/banner.h>
#include <sorrelin/frame/session_state.h>
#include <sorrelin/platform/process.h>

#include <cstdio>
#include <string>

namespace {

// "%c" and four bytes of 254, by which tools see that the file is binary.
constexpr char kBinaryMarker[] = "\x25\x63\xFE\xFE\xFE\xFE";
constexpr size_t kDateBytes = 2 + 6 * 5 + 1;  // six 16-bit numbers at their longest

enum ResourceType { kFontResource = 1, kXObjectResource = 2 };
enum ImageType { kImageB = 0, kImageC = 1, kImageI = 2 };

SYSTEMTIME LocalTime() {
  SYSTEMTIME now;
  GetLocalTime(&now);
  return now;
}

// A time without a zone.
std::string DateText(SYSTEMTIME const& time) {
  char date[kDateBytes];
  std::snprintf(date, sizeof date, "D:%04u%02u%02u%02u%02u%02u", unsigned{time.wYear},
                unsigned{time.wMonth}, unsigned{time.wDay}, unsigned{time.wHour},
                unsigned{time.wMinute}, unsigned{time.wSecond});
  return date;
}

// Four digits for each UTF-16 unit, most significant first.
std::string Hexadecimal(sorrelin::WideString const& text) {
  std::string digits;
  digits.reserve(4 * text.size());
  for (WCHAR const unit : text) {
    char four[5];
    std::snprintf(four, sizeof four, "%04X", static_cast<unsigned>(unit) & 0xFFFFu);
    digits += four;
  }
  return digits;
}

}  // namespace

int sorrelin::SessionState::WritePDFHeader(char const* szTitle, char const* szCreator) {
  // Kept: without a creator the wide banner goes through a narrow format and ends at the high byte
  // of its first character.
  char const first_of_banner[] = {static_cast<char>(m_szCreator[0]), '\0'};
  char const* const creator = szCreator != nullptr ? szCreator : first_of_banner;
  bool const written =
      WriteLines({"%PDF-1.7", kBinaryMarker}) && ObjectStart(1, 1) != 0 &&
      WriteFormatted(1, "/CreationDate (%s)",
                     DateText(m_pReader->m_CreationTime.value_or(LocalTime())).c_str()) &&
      WriteFormatted(1, "/Producer (Sorrelin.dll v%s, Ferrowell Software LLC.)",
                     sorrelin::kProducerVersion) &&
      WriteFormatted(1, "/Creator (%s)", creator) && WriteTitle(szTitle) &&
      WriteInfoString("/Author <FEFF%s>", m_pReader->m_Author) &&
      WriteInfoString("/Subject <FEFF%s>", m_pReader->m_Subject) &&
      WriteInfoString("/Keywords <FEFF%s>", m_pReader->m_Keywords) && ObjectEnd(1) != 0;
  return written ? 1 : 0;
}

bool sorrelin::SessionState::WriteTitle(char const* szTitle) {
  if (szTitle != nullptr) return WriteFormatted(1, "/Title (%s)", szTitle);
  if (m_pReader->m_Title.empty()) return WriteToPDFFile("/Title (Converted Document)", 1) != 0;
  return WriteInfoString("/Title <FEFF%s>", m_pReader->m_Title);
}

DWORD sorrelin::SessionState::CreateOutlinesObject(DWORD nCount) {
  m_Facts.outlines = ObjectStart(1, 1);
  if (m_Facts.outlines == 0 || WriteToPDFFile("/Type /Outlines", 1) == 0 ||
      !WriteFormatted(1, "/Count %d", static_cast<int>(nCount)) || ObjectEnd(1) == 0) {
    return 0;
  }
  return m_Facts.outlines;
}

DWORD sorrelin::SessionState::CreatePagesRootObject() {
  DWORD const count = GetTotalPageNumber();
  m_Facts.pages_root = ObjectStart(m_Facts.pages_root, 1, 1);
  if (m_Facts.pages_root == 0 || WriteToPDFFile("/Type /Pages", 1) == 0 ||
      !WriteFormatted(1, "/Count %d", static_cast<int>(count)) ||
      WriteToPDFFile("/Kids [ ", 1) == 0) {
    return 0;
  }
  for (DWORD page = 1; page <= count; ++page) {
    if (!WriteFormatted(1, "%d 0 R ", static_cast<int>(GetPageObjectNumber(page)))) return 0;
  }
  return WriteToPDFFile("]", 1) != 0 && ObjectEnd(1) != 0 ? m_Facts.pages_root : 0;
}

DWORD sorrelin::SessionState::CreatePageObject(DWORD nParent, int nResourceType,
                                               DWORD nResourceObject, DWORD nProcSetObject,
                                               char const* szResourceName, POINT ptSize) {
  if (m_Pages.count() + 1 > kPageSlots) return Fail(PDF_ERROR_TOO_MANY_PAGES);
  ++m_Pages.count();
  ++m_nCurrentPage;
  DWORD const page = ObjectStart(1, 1);
  if (page == 0) return 0;
  SetPageObjectNumber(m_nCurrentPage, page);
  bool const written = WriteToPDFFile("/Type /Page", 1) != 0 &&
                       WriteFormatted(1, "/Parent %d 0 R", static_cast<int>(nParent)) &&
                       WriteFormatted(1, "/MediaBox [0 0 %d %d]", static_cast<int>(ptSize.x),
                                      static_cast<int>(ptSize.y)) &&
                       WriteToPDFFile("/Resources <<", 1) != 0 &&
                       WritePageResource(nResourceType, nResourceObject, szResourceName) &&
                       WriteFormatted(1, "/ProcSet %d 0 R", static_cast<int>(nProcSetObject)) &&
                       WriteToPDFFile(">>", 1) != 0 &&
                       WriteFormatted(1, "/Contents %d 0 R", static_cast<int>(GetNextObject())) &&
                       ObjectEnd(1) != 0;
  return written ? page : 0;
}

bool sorrelin::SessionState::WritePageResource(int nType, DWORD nObject, char const* szName) {
  switch (nType) {
    case kFontResource:
      return WriteFormatted(1, "/Font << /F1 %d 0 R >> ", static_cast<int>(nObject));
    case kXObjectResource:
      return WriteFormatted(1, "/XObject << /%s %d 0 R >> ", szName, static_cast<int>(nObject));
    default:
      return Fail(PDF_ERROR_RESOURCE_TYPE) != 0;
  }
}

DWORD sorrelin::SessionState::CreateProcSetObject(int nImageType, int bText) {
  DWORD const object = ObjectStart(0, 1);
  if (object == 0) return 0;
  // Kept: writes that fail from here on are not looked at, and ImageI has no blank behind it.
  WriteToPDFFile("[/PDF ", 0);
  if (bText != 0) WriteToPDFFile("/Text ", 0);
  if (nImageType == kImageB) WriteToPDFFile("/ImageB ", 0);
  if (nImageType == kImageC) WriteToPDFFile("/ImageC ", 0);
  if (nImageType == kImageI) WriteToPDFFile("/ImageI", 0);
  WriteToPDFFile("] ", 1);
  ObjectEnd(0);
  return object;
}

DWORD sorrelin::SessionState::CreateFontObject() {
  DWORD const object = ObjectStart(1, 1);
  if (object == 0) return 0;
  WriteLines({"/Type /Font", "/Subtype /Type1", "/Name /F1", "/BaseFont /Helvetica",
              "/Encoding /MacRomanEncoding"});
  ObjectEnd(1);
  return object;
}

DWORD sorrelin::SessionState::CreateCatalogObject(DWORD nPagesRoot, DWORD nOutlines) {
  m_Facts.catalog = ObjectStart(1, 1);
  m_Facts.catalog_generation = 0;
  if (m_Facts.catalog == 0 || WriteToPDFFile("/Type /Catalog", 1) == 0 ||
      !WriteFormatted(1, "/Pages %d 0 R", static_cast<int>(nPagesRoot)) ||
      !WriteFormatted(1, "/Outlines %d 0 R", static_cast<int>(nOutlines)) || ObjectEnd(1) == 0) {
    return 0;
  }
  return m_Facts.catalog;
}

bool sorrelin::SessionState::WriteInfoString(char const* szFormat,
                                             sorrelin::WideString const& text) {
  return text.empty() || WriteFormatted(1, szFormat, Hexadecimal(text).c_str());
}
