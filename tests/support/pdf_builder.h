// Documents for tests, built object by object: objects in, bytes out. Offsets, lengths and
// cross-reference rows are computed; every one of them can be set wrong on purpose.
//
//   test::PdfBuilder pdf;                       // writes the header line
//   pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
//   pdf.Object(2, "<</Type/Pages /Kids [3 0 R] /Count 1 >>");
//   pdf.Object(3, "<</Type/Page /Parent 2 0 R >>");
//   pdf.Classic();                              // xref, trailer, startxref, %%EOF
//   test::Bytes const bytes = pdf.Document();
//
// Objects that are added after a section belong to the next one, which makes an update:
//
//   pdf.Object(3, "<</Type/Page /Rotate 90 >>");
//   pdf.Classic({.prev = pdf.LastSection()});
#ifndef TESTS_SUPPORT_PDF_BUILDER_H_
#define TESTS_SUPPORT_PDF_BUILDER_H_

#include <sorrelin/platform/types.h>
#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace test {

using Bytes = std::vector<BYTE>;

inline Bytes ToBytes(std::string_view text) { return {text.begin(), text.end()}; }
inline std::string ToText(Bytes const& bytes) { return {bytes.begin(), bytes.end()}; }

// The zlib form of `data`, as FlateDecode reads it.
inline std::string Deflate(std::string_view data) {
  uLongf size = compressBound(static_cast<uLong>(data.size()));
  std::string packed(size, '\0');
  if (compress(reinterpret_cast<Bytef*>(packed.data()), &size,
               reinterpret_cast<Bytef const*>(data.data()),
               static_cast<uLong>(data.size())) != Z_OK) {
    throw std::runtime_error("compress");
  }
  packed.resize(size);
  return packed;
}

// Rows of `row_bytes` bytes with a PNG tag before each: 0 (none), 1 (difference to the byte before)
// or 2 (difference to the row above). A last row that is short is filled up with 0.
inline std::string PngRows(std::string data, size_t row_bytes, int tag) {
  data.resize((data.size() + row_bytes - 1) / row_bytes * row_bytes);
  std::string out;
  for (size_t row = 0; row < data.size(); row += row_bytes) {
    out += static_cast<char>(tag);
    for (size_t i = 0; i < row_bytes; ++i) {
      char before = 0;
      if (tag == 1 && i > 0) before = data[row + i - 1];
      if (tag == 2 && row > 0) before = data[row + i - row_bytes];
      out += static_cast<char>(data[row + i] - before);
    }
  }
  return out;
}

// A number as a cross-reference stream holds it: big-endian, `width` bytes.
inline std::string BigEndian(uint64_t value, size_t width) {
  std::string text(width, '\0');
  for (size_t i = width; i-- > 0; value >>= 8) text[i] = static_cast<char>(value & 0xFF);
  return text;
}

// One cross-reference row. A classic section writes second and third as offset and generation, and
// "n" for every type but 0.
struct XrefRow {
  DWORD type = 1;       // 0 free, 1 in the file, 2 in an object stream
  uint64_t second = 0;  // offset; next free number; number of the object stream
  DWORD third = 0;      // generation; index in the object stream
};

// First number and count.
using XrefRange = std::pair<DWORD, DWORD>;

struct ClassicOptions {
  std::optional<size_t> prev = {};          // /Prev
  std::string keys = "/Root 1 0 R";         // trailer keys besides /Size and /Prev
  std::optional<uint64_t> size = {};        // /Size; else one above the highest number
  std::vector<XrefRange> ranges = {};       // subsections; else one for each run of numbers
  std::string entry_end = {};               // else blank LF, or CR LF where lines end so
  std::string count_end = {};               // else the line end: what follows the count
  std::optional<uint64_t> start_xref = {};  // the number after startxref; else the section's offset
  std::string tail = "%%EOF";               // the last line, and whatever shall follow it
};

struct StreamOptions {
  std::string filter = "/FlateDecode";  // the value of /Filter; empty: no filter, no key
  int passes = 1;                       // how often the data are deflated
  int predictor = 0;                    // 10, 11 or 12: PNG rows of tag 0, 1 or 2
  std::string keys = {};                // further keys
  std::optional<uint64_t> length = {};  // /Length; else the true one
  std::string length_text = {};         // /Length as text, for a reference
};

struct XrefStreamOptions {
  std::optional<size_t> prev = {};
  std::string keys = "/Root 1 0 R";
  std::optional<uint64_t> size = {};
  std::vector<XrefRange> ranges = {};      // /Index; else one for each run of numbers
  bool index_key = true;                   // false: no /Index
  std::vector<size_t> widths = {1, 4, 2};  // /W
  StreamOptions stream = {};
  std::optional<uint64_t> start_xref = {};
  std::string tail = "%%EOF";
};

struct ObjectStreamOptions {
  StreamOptions stream = {};
  std::string separator = " ";             // between the numbers of the header
  std::optional<size_t> first = {};        // /First; else the header's size
  std::optional<std::string> header = {};  // the header's text; else numbers and offsets
};

class PdfBuilder {
 public:
  explicit PdfBuilder(std::string const& header = "%PDF-1.4", std::string eol = "\n")
      : eol_(std::move(eol)) {
    Text(header + eol_);
    rows_[0] = {0, 0, 65535};
  }

  // Bytes as they are, without a line end.
  PdfBuilder& Text(std::string_view text) {
    bytes_ += text;
    return *this;
  }

  // "N G obj", the body on a line of its own, "endobj". The offset of the header.
  size_t Object(DWORD number, std::string_view body, DWORD generation = 0) {
    size_t const offset = OpenObject(number, generation);
    Text(body).Text(eol_ + "endobj" + eol_);
    return offset;
  }

  // A stream object; `keys` are further dictionary keys.
  size_t Stream(DWORD number, std::string_view keys, std::string_view data,
                std::string const& length_text = {}) {
    size_t const offset = OpenObject(number, 0);
    std::string const length = length_text.empty() ? std::to_string(data.size()) : length_text;
    Text("<<").Text(keys).Text(" /Length " + length + " >>" + eol_ + "stream" + eol_);
    Text(data).Text(eol_ + "endstream" + eol_ + "endobj" + eol_);
    return offset;
  }

  // An object stream; the rows of its objects name it.
  size_t ObjectStream(DWORD number, std::vector<std::pair<DWORD, std::string>> const& objects,
                      ObjectStreamOptions const& options = {}) {
    std::string header;
    std::string body;
    DWORD index = 0;
    for (auto const& [object, text] : objects) {
      header += std::to_string(object) + options.separator + std::to_string(body.size()) +
                options.separator;
      body += text + " ";
      rows_[object] = {2, number, index++};
    }
    if (options.header) header = *options.header;
    std::string const keys = "/Type/ObjStm /N " + std::to_string(objects.size()) + " /First " +
                             std::to_string(options.first.value_or(header.size())) + " ";
    return PackedStream(number, keys, header + body, header.size() + body.size(), options.stream);
  }

  // Sets the row that the next section lists for an object, right or wrong.
  PdfBuilder& Row(DWORD number, XrefRow row) {
    rows_[number] = row;
    return *this;
  }
  PdfBuilder& NoRow(DWORD number) {
    rows_.erase(number);
    return *this;
  }

  // xref, trailer, startxref and the last line, for the objects since the last section. The
  // section's offset.
  size_t Classic(ClassicOptions const& options = {}) {
    size_t const offset = Size();
    Text("xref" + eol_);
    for (XrefRange const& range : RangesOr(options.ranges)) WriteRange(range, options);
    Text("trailer" + eol_ + "<</Size " + std::to_string(options.size.value_or(NextNumber())) + " ");
    if (options.prev) Text("/Prev " + std::to_string(*options.prev) + " ");
    Text(options.keys + " >>" + eol_);
    CloseSection(offset, options.start_xref, options.tail);
    return offset;
  }

  // A cross-reference stream under object number `number`, startxref and the last line. It lists
  // itself. The section's offset.
  size_t XrefStream(DWORD number, XrefStreamOptions const& options = {}) {
    size_t const offset = Size();
    if (!rows_.contains(number)) rows_[number] = {1, offset, 0};
    std::vector<XrefRange> const ranges = RangesOr(options.ranges);
    std::string index;
    std::string records;
    for (auto const& [first, count] : ranges) {
      index += std::to_string(first) + " " + std::to_string(count) + " ";
      for (DWORD i = 0; i < count; ++i) records += Record(RowOf(first + i), options.widths);
    }
    if (!index.empty()) index.pop_back();
    std::string keys = "/Type/XRef /Size " + std::to_string(options.size.value_or(NextNumber())) +
                       " /W [" + Join(options.widths) + "] ";
    if (options.index_key) keys += "/Index [" + index + "] ";
    if (options.prev) keys += "/Prev " + std::to_string(*options.prev) + " ";
    size_t row_bytes = 0;
    for (size_t const width : options.widths) row_bytes += width;
    XrefRow const own = rows_[number];
    PackedStream(number, keys + options.keys + " ", records, row_bytes, options.stream);
    rows_[number] = own;
    CloseSection(offset, options.start_xref, options.tail);
    return offset;
  }

  // Bytes written so far, which is the offset of what comes next.
  size_t Size() const { return bytes_.size(); }
  // Where the object was last written.
  size_t OffsetOf(DWORD number) const { return offsets_.at(number); }
  // The offset of the section last written.
  size_t LastSection() const { return last_section_; }
  std::string const& Content() const { return bytes_; }
  Bytes Document() const { return ToBytes(bytes_); }

 private:
  size_t OpenObject(DWORD number, DWORD generation) {
    size_t const offset = Size();
    rows_[number] = {1, offset, generation};
    offsets_[number] = offset;
    Text(std::to_string(number) + " " + std::to_string(generation) + " obj" + eol_);
    return offset;
  }

  size_t PackedStream(DWORD number, std::string keys, std::string data, size_t row_bytes,
                      StreamOptions const& options) {
    if (options.predictor >= 10) {
      data = PngRows(data, row_bytes, options.predictor - 10);
      keys += "/DecodeParms <</Predictor " + std::to_string(options.predictor) + " /Columns " +
              std::to_string(row_bytes) + " >> ";
    }
    for (int i = 0; !options.filter.empty() && i < options.passes; ++i) data = Deflate(data);
    if (!options.filter.empty()) keys += "/Filter " + options.filter + " ";
    std::string length = options.length_text;
    if (options.length) length = std::to_string(*options.length);
    return Stream(number, keys + options.keys, data, length);
  }

  XrefRow RowOf(DWORD number) const {
    auto const row = rows_.find(number);
    return row == rows_.end() ? XrefRow{0, 0, 0} : row->second;
  }

  DWORD NextNumber() const { return HighestNumber() + 1; }
  DWORD HighestNumber() const {
    return rows_.empty() ? highest_ : std::max(highest_, rows_.rbegin()->first);
  }

  std::vector<XrefRange> RangesOr(std::vector<XrefRange> const& given) const {
    if (!given.empty()) return given;
    std::vector<XrefRange> ranges = {};
    for (auto const& [number, row] : rows_) {
      if (!ranges.empty() && ranges.back().first + ranges.back().second == number) {
        ++ranges.back().second;
      } else {
        ranges.push_back({number, 1});
      }
    }
    return ranges;
  }

  void WriteRange(XrefRange const& range, ClassicOptions const& options) {
    std::string const count_end = options.count_end.empty() ? eol_ : options.count_end;
    Text(std::to_string(range.first) + " " + std::to_string(range.second) + count_end);
    std::string entry_end = options.entry_end;
    if (entry_end.empty()) entry_end = eol_.size() == 2 ? eol_ : " " + eol_;
    for (DWORD i = 0; i < range.second; ++i) {
      XrefRow const row = RowOf(range.first + i);
      char entry[32];
      std::snprintf(entry, sizeof entry, "%010llu %05u %c",
                    static_cast<unsigned long long>(row.second), static_cast<unsigned>(row.third),
                    row.type == 0 ? 'f' : 'n');
      Text(entry).Text(entry_end);
    }
  }

  static std::string Record(XrefRow const& row, std::vector<size_t> const& widths) {
    std::string record;
    uint64_t const fields[] = {row.type, row.second, row.third};
    for (size_t i = 0; i < widths.size() && i < 3; ++i) record += BigEndian(fields[i], widths[i]);
    return record;
  }

  static std::string Join(std::vector<size_t> const& numbers) {
    std::string text;
    for (size_t const number : numbers) {
      if (!text.empty()) text += ' ';
      text += std::to_string(number);
    }
    return text;
  }

  void CloseSection(size_t offset, std::optional<uint64_t> start_xref, std::string const& tail) {
    Text("startxref" + eol_ + std::to_string(start_xref.value_or(offset)) + eol_ + tail + eol_);
    last_section_ = offset;
    highest_ = HighestNumber();
    rows_.clear();
  }

  std::string eol_;
  std::string bytes_;
  std::map<DWORD, XrefRow> rows_;  // of the section to come
  std::map<DWORD, size_t> offsets_;
  DWORD highest_ = 0;  // highest number in the sections so far
  size_t last_section_ = 0;
};

// Catalog 1, pages root 2 and `pages` page objects from 3 on, without content and without a
// section.
inline void AddPageTree(PdfBuilder& pdf, DWORD pages) {
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  std::string kids;
  for (DWORD i = 0; i < pages; ++i) kids += std::to_string(3 + i) + " 0 R ";
  pdf.Object(2, "<</Type/Pages /Kids [" + kids + "] /Count " + std::to_string(pages) + " >>");
  for (DWORD i = 0; i < pages; ++i) {
    pdf.Object(3 + i, "<</Type/Page /Parent 2 0 R /MediaBox [0 0 612 792] >>");
  }
}

}  // namespace test

#endif  // TESTS_SUPPORT_PDF_BUILDER_H_
