// The lines of a list that belong to one shard of it.
#ifndef TOOLS_BATCH_LIST_FILE_H_
#define TOOLS_BATCH_LIST_FILE_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "tools/formats/byte_stream.h"

namespace sorrelin::tool {

// Shard `index` of `count`, from 1: the lines whose number is `index` modulo `count`.
struct Shard {
  uint64_t index = 1;
  uint64_t count = 1;

  // "3/100", or nullopt for anything else.
  static std::optional<Shard> Parse(std::string const& text);
  bool Has(uint64_t line) const { return (line - 1) % count == index - 1; }
};

struct ListLine {
  uint64_t number = 0;  // from 1, in the whole list
  std::string text;
  std::string problem;  // why the text is not whole; otherwise empty
};

class ListFile {
 public:
  // nullptr with the reason in `problem` if the file cannot be read.
  static std::unique_ptr<ListFile> Open(std::string const& name, Shard shard, std::string& problem);

  // The next line of the shard that is not blank, or nullopt at the end of the list.
  std::optional<ListLine> Next();

  // Bytes of the list that have been read.
  uint64_t position() const { return position_; }
  // Why reading ended before the list; empty if it did not.
  std::string const& problem() const { return stream_->problem(); }

 private:
  ListFile(std::unique_ptr<ByteStream> stream, Shard shard)
      : stream_(std::move(stream)), shard_(shard) {}

  // Reads to the end of a line; false if there is none. Without `line`, its text is passed over.
  bool ReadLine(ListLine* line);

  std::unique_ptr<ByteStream> stream_;
  Shard shard_;
  uint64_t line_ = 0;
  uint64_t position_ = 0;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_BATCH_LIST_FILE_H_
