// Objects, lines and streams as bytes (ISO 32000-1, 7.3.8, 7.3.10).
#include <sorrelin/document/object_table.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/process.h>
#include <sorrelin/writer/object_writer.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace sorrelin {

namespace {

constexpr size_t kLineBytes = 1024;  // a formatted line with its terminator
constexpr BYTE kCarriageReturn = 0x0D;
constexpr BYTE kLineFeed = 0x0A;

bool IsFile(FileChannel const* channel) {
  return IsUsableChannel(channel) && channel->bMemory == 0;
}

// A formatted text that fits in one line.
class FormattedLine {
 public:
  FormattedLine(char const* format, va_list arguments) {
    int const length = std::vsnprintf(text_, sizeof text_, format, arguments);
    // Kept: a line that does not fit ends the process; there is no code for it.
    if (length < 0 || static_cast<size_t>(length) >= sizeof text_) {
      EndProcess("sorrelin: a line of the document does not fit in 1024 bytes");
    }
  }
  char const* text() const { return text_; }

 private:
  char text_[kLineBytes];
};

}  // namespace

void ObjectWriter::GoOn() {
  if (status_.code()) note_ = status_.code();
  status_ = Status::Ok();
}

Result<DWORD> ObjectWriter::Outcome(DWORD object) const {
  if (!ok()) return {0, status_.code() || !note_ ? status_ : Status::Failed(*note_)};
  return {object, note_ ? Status::Noted(*note_) : Status::Ok()};
}

DWORD ObjectWriter::Start(Body body, LineEnd end) {
  // Kept: the number stays taken where the object fails.
  return ok() ? Start(++output_.current_object, body, end) : 0;
}

DWORD ObjectWriter::Start(DWORD object, Body body, LineEnd end) {
  if (!ok()) return 0;
  if (object >= ObjectTable::kRows) return Refuse(PDF_ERROR_NEW_PAGE_OBJECT);
  if (table_.IsTaken(object)) return Refuse(PDF_ERROR_OBJECT_EXISTS);
  table_.Change(object) = {output_.offset, 0, 1};
  WriteHeader(object, body, end);
  return ok() ? object : 0;
}

DWORD ObjectWriter::Restart(DWORD object, Body body, LineEnd end, bool new_generation) {
  if (!ok()) return 0;
  if (!table_.IsTaken(object)) return Refuse(PDF_ERROR_OBJECT_EXISTS);
  ObjectEntry& row = table_.Change(object);
  row.nOffset = output_.offset;
  row.bInUse = 1;
  if (new_generation) ++row.nGeneration;
  WriteHeader(object, body, end);
  return ok() ? object : 0;
}

void ObjectWriter::WriteHeader(DWORD object, Body body, LineEnd end) {
  FormatPart(end, "%d %d obj", static_cast<int>(object),
             static_cast<int>(table_[object].nGeneration));
  if (body == Body::kDictionary) Line("<<");
}

void ObjectWriter::End(Body body) {
  if (body == Body::kDictionary) Line(">>");
  Line("endobj");
}

DWORD ObjectWriter::Reserve() {
  if (!ok()) return 0;
  if (output_.current_object >= ObjectTable::kRows - 1) return Refuse(PDF_ERROR_NEW_PAGE_OBJECT);
  return ++output_.current_object;
}

DWORD ObjectWriter::BeginStream() {
  DWORD const object = Start(Body::kPlain, LineEnd::kWritten);
  Format("<< /Length %d 0 R >>", static_cast<int>(output_.NextObject()));
  Line("stream");
  if (ok()) output_.MarkStreamBegin();
  return ok() ? object : 0;
}

void ObjectWriter::EndStream() {
  if (ok()) output_.MarkStreamEnd();
  Line("endstream");
  End(Body::kPlain);
}

void ObjectWriter::BeginStreamOfDictionary() {
  Lines({">>", "stream"});
  if (ok()) output_.MarkStreamBegin();
}

// Kept: ">" and its line end follow the data of every stream with a full dictionary, and count in
// its length.
void ObjectWriter::EndStreamOfDictionary() {
  Line(">");
  EndStream();
}

DWORD ObjectWriter::WriteStreamLength() {
  DWORD const object = Start(Body::kPlain, LineEnd::kWritten);
  if (!ok()) return 0;
  DWORD const length = output_.StreamLength();
  // Kept: the object stays open, with its first line written.
  if (length == 0) return Refuse(PDF_ERROR_EMPTY_STREAM);
  Format("%d", static_cast<int>(length));
  End(Body::kPlain);
  return ok() ? object : 0;
}

DWORD ObjectWriter::WriteDataStream(HGLOBAL block, DWORD bytes) {
  if (!IsBlock(block)) Fail(Status::Failed());
  DWORD const object = Start(Body::kDictionary, LineEnd::kWritten);
  Format("/Length %d 0 R ", static_cast<int>(output_.NextObject()));
  BeginStreamOfDictionary();
  WriteBlock(block, bytes);
  EndStreamOfDictionary();
  WriteStreamLength();
  return ok() ? object : 0;
}

void ObjectWriter::WriteBlock(HGLOBAL block, DWORD bytes) {
  if (!ok()) return;
  LockedBlock const locked(block);
  DWORD const size = static_cast<DWORD>(locked.bytes().size());
  DWORD const wanted = bytes != 0 ? bytes : size;
  if (wanted == 0 || !locked) {
    Refuse(PDF_ERROR_EMPTY_STREAM);
    return;
  }
  DWORD const held = std::min(wanted, size);
  if (held != 0) Bytes(locked.bytes().data(), held);
  WriteZeros(wanted - held);
}

// What a caller's size asks for beyond the block.
void ObjectWriter::WriteZeros(DWORD bytes) {
  static constexpr BYTE kZeros[4096] = {};
  while (bytes != 0 && ok()) {
    DWORD const piece = std::min<DWORD>(bytes, sizeof kZeros);
    Bytes(kZeros, piece);
    bytes -= piece;
  }
}

void ObjectWriter::Put(char const* text, LineEnd end) {
  if (!ok()) return;
  if (text == nullptr) {
    Refuse(PDF_ERROR_NULL_POINTER);
    return;
  }
  std::string_view const line(text);
  bool const in_one = end == LineEnd::kWritten && output_.use_char13 == 0 && !line.empty() &&
                      line.size() < kLineBytes && IsFile(output_.channel);
  if (in_one) {
    PutInOneWrite(line);
    return;
  }
  Bytes(line);
  if (end == LineEnd::kWritten) EndLine();
}

// A line with its end in one call of the system, which is most of the time that a small page takes.
void ObjectWriter::PutInOneWrite(std::string_view text) {
  DWORD const length = static_cast<DWORD>(text.size());
  BYTE line[kLineBytes];
  std::memcpy(line, text.data(), length);
  line[length] = kLineFeed;
  DWORD written = 0;
  bool const done = ChannelWrite(output_.channel, line, length + 1, &written, nullptr) != 0;
  output_.offset += written < length ? length : length + 1;  // what would have been tried in two
  if (!done) Refuse(PDF_ERROR_SYSTEM);
}

void ObjectWriter::Lines(std::initializer_list<char const*> lines) {
  for (char const* const line : lines) Line(line);
}

void ObjectWriter::Format(char const* format, ...) {
  if (!ok()) return;
  va_list arguments;
  va_start(arguments, format);
  FormattedLine const line(format, arguments);
  va_end(arguments);
  Line(line.text());
}

void ObjectWriter::FormatPart(LineEnd end, char const* format, ...) {
  if (!ok()) return;
  va_list arguments;
  va_start(arguments, format);
  FormattedLine const line(format, arguments);
  va_end(arguments);
  Put(line.text(), end);
}

DWORD ObjectWriter::Bytes(BYTE const* data, DWORD bytes) {
  if (!ok()) return 0;
  if (data == nullptr) return Refuse(PDF_ERROR_NULL_POINTER);
  if (bytes == 0) return Refuse(PDF_ERROR_ZERO_BYTES);
  if (!IsUsableChannel(output_.channel)) return Refuse(PDF_ERROR_INVALID_HANDLE);
  // Kept: the offset moves before the write, and stays where the write fails.
  output_.offset += bytes;
  return Write(data, bytes);
}

DWORD ObjectWriter::EndLine() {
  if (!ok()) return 0;
  if (!IsUsableChannel(output_.channel)) return Refuse(PDF_ERROR_INVALID_HANDLE);
  output_.offset += output_.use_char13 != 0 ? 2 : 1;
  if (output_.use_char13 != 0) Write(&kCarriageReturn, 1);
  return Write(&kLineFeed, 1);
}

DWORD ObjectWriter::Write(BYTE const* data, DWORD bytes) {
  if (!ok()) return 0;
  DWORD written = 0;
  if (ChannelWrite(output_.channel, data, bytes, &written, nullptr) == 0) {
    // A file's system may say the same; but its position has moved on, and nothing is taken back.
    if (!IsFile(output_.channel) && GetLastError() == ERROR_NOT_ENOUGH_MEMORY) {
      output_.short_of_memory = true;
    }
    return Refuse(PDF_ERROR_SYSTEM);
  }
  if (written == 0) Fail(Status::Failed());
  return written;
}

}  // namespace sorrelin
