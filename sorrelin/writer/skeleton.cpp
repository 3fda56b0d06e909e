// The objects around the images.
#include <sorrelin/document/document_facts.h>
#include <sorrelin/document/object_table.h>
#include <sorrelin/document/page_list.h>
#include <sorrelin/document/reader_state.h>
#include <sorrelin/platform/process.h>
#include <sorrelin/writer/banner.h>
#include <sorrelin/writer/object_writer.h>
#include <sorrelin/writer/skeleton.h>

#include <cstdio>
#include <string>

namespace sorrelin {

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
struct DateText {
  explicit DateText(SYSTEMTIME const& time) {
    std::snprintf(text, sizeof text, "D:%04u%02u%02u%02u%02u%02u", unsigned{time.wYear},
                  unsigned{time.wMonth}, unsigned{time.wDay}, unsigned{time.wHour},
                  unsigned{time.wMinute}, unsigned{time.wSecond});
  }
  char text[kDateBytes];
};

// Four digits for each UTF-16 unit, most significant first.
std::string Hexadecimal(WideString const& text) {
  std::string digits;
  digits.reserve(4 * text.size());
  for (WCHAR const unit : text) {
    char four[5];
    std::snprintf(four, sizeof four, "%04X", static_cast<unsigned>(unit) & 0xFFFFu);
    digits += four;
  }
  return digits;
}

void WriteTitle(ObjectWriter& out, char const* title, std::string const& digits) {
  if (title != nullptr) {
    out.Format("/Title (%s)", title);
  } else if (digits.empty()) {
    out.Line("/Title (Converted Document)");
  } else {
    out.Format("/Title <FEFF%s>", digits.c_str());
  }
}

void WriteResource(ObjectWriter& out, PageObject const& page) {
  int const object = static_cast<int>(page.resource);
  switch (page.resource_type) {
    case kFontResource:
      out.Format("/Font << /F1 %d 0 R >> ", object);
      break;
    case kXObjectResource:
      out.Format("/XObject << /%s %d 0 R >> ", page.name, object);
      break;
    default:
      out.Fail(Status::Failed(PDF_ERROR_RESOURCE_TYPE));
  }
}

}  // namespace

InfoDigits::InfoDigits(ReaderState const& record)
    : title(Hexadecimal(record.m_Title)),
      author(Hexadecimal(record.m_Author)),
      subject(Hexadecimal(record.m_Subject)),
      keywords(Hexadecimal(record.m_Keywords)),
      created(record.m_CreationTime.value_or(LocalTime())) {}

Status WriteHeader(ObjectWriter& out, char const* title, char const* creator,
                   InfoDigits const& digits) {
  DateText const date(digits.created);
  out.Lines({"%PDF-1.7", kBinaryMarker});
  out.Start(Body::kDictionary, LineEnd::kWritten);
  out.Format("/CreationDate (%s)", date.text);
  out.Format("/Producer (Sorrelin.dll v%s, Ferrowell Software LLC.)", kProducerVersion);
  out.Format("/Creator (%s)", creator);
  WriteTitle(out, title, digits.title);
  if (!digits.author.empty()) out.Format("/Author <FEFF%s>", digits.author.c_str());
  if (!digits.subject.empty()) out.Format("/Subject <FEFF%s>", digits.subject.c_str());
  if (!digits.keywords.empty()) out.Format("/Keywords <FEFF%s>", digits.keywords.c_str());
  out.End(Body::kDictionary);
  return out.Outcome();
}

Result<DWORD> WriteOutlines(ObjectWriter& out, DocumentFacts& facts, DWORD count) {
  facts.outlines = out.Start(Body::kDictionary, LineEnd::kWritten);
  out.Line("/Type /Outlines");
  out.Format("/Count %d", static_cast<int>(count));
  out.End(Body::kDictionary);
  return out.Outcome(facts.outlines);
}

Result<DWORD> WritePagesRoot(ObjectWriter& out, DocumentFacts& facts, PageList const& pages) {
  DWORD const count = pages.count();
  facts.pages_root = out.Start(facts.pages_root, Body::kDictionary, LineEnd::kWritten);
  // Kept: without a number an object may start, but its number 0 is a failure.
  if (facts.pages_root == 0) out.Fail(Status::Failed());
  out.Line("/Type /Pages");
  out.Format("/Count %d", static_cast<int>(count));
  out.Line("/Kids [ ");
  for (DWORD page = 1; page <= count && out.ok(); ++page) {
    out.Format("%d 0 R ", static_cast<int>(pages[page]));
  }
  out.Line("]");
  out.End(Body::kDictionary);
  return out.Outcome(facts.pages_root);
}

Result<DWORD> WriteCatalog(ObjectWriter& out, DocumentFacts& facts, DWORD pages_root,
                           DWORD outlines) {
  facts.catalog = out.Start(Body::kDictionary, LineEnd::kWritten);
  facts.catalog_generation = 0;
  out.Line("/Type /Catalog");
  out.Format("/Pages %d 0 R", static_cast<int>(pages_root));
  out.Format("/Outlines %d 0 R", static_cast<int>(outlines));
  out.End(Body::kDictionary);
  return out.Outcome(facts.catalog);
}

Result<DWORD> WritePage(ObjectWriter& out, PageList& pages, PageObject const& page) {
  if (pages.count() + 1 > PageList::kSlots) out.Fail(Status::Failed(PDF_ERROR_TOO_MANY_PAGES));
  if (!out.ok()) return out.Outcome(0);
  ++pages.count();
  ++out.output().pages_added;
  DWORD const object = out.Start(Body::kDictionary, LineEnd::kWritten);
  if (object != 0) pages.Set(out.output().pages_added, object);
  out.Line("/Type /Page");
  out.Format("/Parent %d 0 R", static_cast<int>(page.parent));
  out.Format("/MediaBox [0 0 %d %d]", static_cast<int>(page.size.x), static_cast<int>(page.size.y));
  out.Line("/Resources <<");
  if (out.ok()) WriteResource(out, page);
  out.Format("/ProcSet %d 0 R", static_cast<int>(page.proc_set));
  out.Line(">>");
  out.Format("/Contents %d 0 R", static_cast<int>(out.output().NextObject()));
  out.End(Body::kDictionary);
  return out.Outcome(object);
}

Result<DWORD> WriteProcSet(ObjectWriter& out, int image_type, bool text) {
  DWORD const object = out.Start(Body::kPlain, LineEnd::kWritten);
  if (object == 0) return out.Outcome(0);
  // Kept: from here on all is written whatever fails, and ImageI has no blank after it.
  auto const part = [&out](char const* name) {
    out.Text(name);
    out.GoOn();
  };
  part("[/PDF ");
  if (text) part("/Text ");
  if (image_type == kImageB) part("/ImageB ");
  if (image_type == kImageC) part("/ImageC ");
  if (image_type == kImageI) part("/ImageI");
  out.Line("] ");
  out.GoOn();
  out.End(Body::kPlain);
  out.GoOn();
  return out.Outcome(object);
}

// Kept: each line is written whatever became of those before it.
Result<DWORD> WriteFont(ObjectWriter& out) {
  DWORD const object = out.Start(Body::kDictionary, LineEnd::kWritten);
  if (object == 0) return out.Outcome(0);
  for (char const* const line : {"/Type /Font", "/Subtype /Type1", "/Name /F1",
                                 "/BaseFont /Helvetica", "/Encoding /MacRomanEncoding"}) {
    out.Line(line);
    out.GoOn();
  }
  out.End(Body::kDictionary);
  out.GoOn();
  return out.Outcome(object);
}

}  // namespace sorrelin
