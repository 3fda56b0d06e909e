// Reads lists forward, a line at a time, however many lines they have.
#include "tools/batch/list_file.h"

#include <charconv>
#include <string_view>
#include <system_error>

namespace sorrelin::tool {
namespace {

constexpr size_t kMostLineBytes = size_t{16} << 20;
constexpr char kBlanks[] = " \t\r";

// A whole number from 1 on at the front of the text, removed; 0 if there is none.
uint64_t TakeNumber(std::string_view& text) {
  uint64_t number = 0;
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{}) return 0;
  text.remove_prefix(static_cast<size_t>(end - text.data()));
  return number;
}

}  // namespace

std::optional<Shard> Shard::Parse(std::string const& text) {
  std::string_view rest = text;
  Shard shard;
  shard.index = TakeNumber(rest);
  if (!rest.starts_with('/')) return std::nullopt;
  rest.remove_prefix(1);
  shard.count = TakeNumber(rest);
  if (!rest.empty() || shard.index == 0 || shard.index > shard.count) return std::nullopt;
  return shard;
}

std::unique_ptr<ListFile> ListFile::Open(std::string const& name, Shard shard,
                                         std::string& problem) {
  auto stream = ByteStream::Open(name, problem);
  if (stream == nullptr) return nullptr;
  return std::unique_ptr<ListFile>(new ListFile(std::move(stream), shard));
}

std::optional<ListLine> ListFile::Next() {
  for (;;) {
    ListLine line;
    line.number = ++line_;
    bool const wanted = shard_.Has(line.number);
    if (!ReadLine(wanted ? &line : nullptr)) return std::nullopt;
    if (wanted && line.text.find_first_not_of(kBlanks) != std::string::npos) return line;
  }
}

bool ListFile::ReadLine(ListLine* line) {
  if (stream_->AtEnd()) return false;
  for (int byte = stream_->Get(); byte != -1; byte = stream_->Get()) {
    ++position_;
    if (byte == '\n') return true;
    if (line == nullptr) continue;
    if (line->text.size() == kMostLineBytes) {
      line->problem = "is longer than 16 MiB (name directories in place of files)";
    } else {
      line->text += static_cast<char>(byte);
    }
  }
  return stream_->problem().empty();
}

}  // namespace sorrelin::tool
