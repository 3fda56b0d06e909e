// The lowest layer of the writer: numbers objects, records where each begins, and puts bytes into
// the channel. Strictly sequential: it never seeks, and counts its own offset.
#ifndef SORRELIN_WRITER_OBJECT_WRITER_H_
#define SORRELIN_WRITER_OBJECT_WRITER_H_

#include <sorrelin/channel/file_channel.h>
#include <sorrelin/platform/status.h>
#include <sorrelin/platform/types.h>

#include <initializer_list>
#include <optional>
#include <string_view>

namespace sorrelin {

class ObjectTable;

// What a document under way keeps between two calls.
struct Output {
  FileChannel* channel = InvalidChannel();  // 0: a document was rejected
  DWORD offset = 0;                         // of the next byte to be written
  DWORD stream_begin = 0;
  DWORD stream_end = 0;
  DWORD current_object = 0;      // the highest object number handed out
  DWORD pages_added = 0;         // by this session
  int32_t use_char13 = 0;        // not 0: lines end with CR LF
  bool short_of_memory = false;  // a document in memory could not grow

  void MarkStreamBegin() { stream_begin = offset; }
  void MarkStreamEnd() { stream_end = offset; }
  DWORD StreamLength() const { return stream_end - stream_begin; }
  DWORD NextObject() const { return current_object + 1; }
};

enum class Body { kPlain, kDictionary };
enum class LineEnd { kNone, kWritten };

// Writes objects of one document, for the length of one operation. After a failure nothing more is
// tried, and the writer keeps what failed; so a sequence of calls is asked about at its end.
class ObjectWriter {
 public:
  ObjectWriter(Output& output, ObjectTable& table) : output_(output), table_(table) {}

  bool ok() const { return status_.ok(); }
  Status status() const { return status_; }
  // A failure found elsewhere, which ends the operation like one of the writer's own.
  void Fail(Status status) {
    if (ok()) status_ = status;
  }
  // Forgets the last failure, so that the next writes are tried, and notes its code.
  void GoOn();
  // A code that the outcome has though the operation succeeds, until another failure replaces it.
  void Note(DWORD code) { note_ = code; }
  void ForgetNote() { note_.reset(); }
  // The object's number, or 0 after a failure, with the code of either.
  Result<DWORD> Outcome(DWORD object) const;
  // The same without a number.
  Status Outcome() const { return Outcome(0).status(); }

  // Takes the next object number, or `object`, and writes "N 0 obj", then "<<". 0 after a failure.
  // Error 40 for a number past the table, 11 for a row that is taken.
  DWORD Start(Body body, LineEnd end);
  DWORD Start(DWORD object, Body body, LineEnd end);
  // Writes an object again whose row is taken, else error 11.
  DWORD Restart(DWORD object, Body body, LineEnd end, bool new_generation);
  // Writes ">>" for a dictionary, then "endobj".
  void End(Body body);
  // Takes a number and writes nothing. 0 after a failure; error 40 if the table is full.
  DWORD Reserve();

  // Opens a stream object whose only key is /Length, in an object that must come next.
  DWORD BeginStream();
  // Marks the end of that stream and closes its object.
  void EndStream();
  // Closes a dictionary, and opens and marks its stream.
  void BeginStreamOfDictionary();
  // The end of such a stream, whose data a line ">" follows.
  void EndStreamOfDictionary();
  // The length object of the stream last marked; error 14 if it is empty.
  DWORD WriteStreamLength();
  // A stream object from a memory block: `bytes` of it, or all with 0. Error 14 for no data.
  DWORD WriteDataStream(HGLOBAL block, DWORD bytes);

  // A text with or without an end of line. Error 7 for null, 8 for an empty text, 2 without a
  // channel, 1 for a failed write.
  void Put(char const* text, LineEnd end);
  void Text(char const* text) { Put(text, LineEnd::kNone); }
  void Line(char const* text) { Put(text, LineEnd::kWritten); }
  void Lines(std::initializer_list<char const*> lines);
  // One line by printf's rules. A line of 1,024 bytes or more ends the process.
#if defined(__GNUC__)
  __attribute__((format(printf, 2, 3)))
#endif
  void
  Format(char const* format, ...);
#if defined(__GNUC__)
  __attribute__((format(printf, 3, 4)))
#endif
  void
  FormatPart(LineEnd end, char const* format, ...);
  // The number of bytes; 0 with error 7, 8, 2 or 1 as above.
  DWORD Bytes(BYTE const* data, DWORD bytes);
  void Bytes(std::string_view text) {
    Bytes(reinterpret_cast<BYTE const*>(text.data()), static_cast<DWORD>(text.size()));
  }
  // One end of line; the number of its last byte's write.
  DWORD EndLine();

  Output& output() { return output_; }
  ObjectTable& table() { return table_; }

 private:
  DWORD Write(BYTE const* data, DWORD bytes);
  void PutInOneWrite(std::string_view line);
  void WriteHeader(DWORD object, Body body, LineEnd end);
  void WriteBlock(HGLOBAL block, DWORD bytes);
  void WriteZeros(DWORD bytes);
  DWORD Refuse(DWORD code) {
    Fail(Status::Failed(code));
    return 0;
  }

  Output& output_;
  ObjectTable& table_;
  Status status_ = Status::Ok();
  std::optional<DWORD> note_;
};

}  // namespace sorrelin

#endif  // SORRELIN_WRITER_OBJECT_WRITER_H_
