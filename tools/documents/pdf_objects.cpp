// Fetches by LoadObject; the rest is the strict reader's.
#include "tools/documents/pdf_objects.h"

namespace sorrelin::tool {
namespace {

constexpr uint64_t kLoadBytes = 1024;  // what a load costs beside its bytes, generously
constexpr int kMaxReferences = 32;     // one leading to the next
// "obj" stands within so many bytes of an object's text.
constexpr size_t kHeaderBytes = 40;

// The data begin behind CR LF or LF; a lone CR is taken for a line end, as every reader does.
size_t DataStart(std::string_view text, size_t behind_keyword) {
  std::string_view const rest = text.substr(behind_keyword);
  if (rest.starts_with("\r\n")) return behind_keyword + 2;
  return behind_keyword + (rest.starts_with('\n') || rest.starts_with('\r') ? 1 : 0);
}

size_t ValueStart(std::string_view text) {
  size_t const at = text.substr(0, kHeaderBytes).find("obj");
  return at == text.npos || text.substr(0, at).find('<') != text.npos ? 0 : at + 3;
}

}  // namespace

PdfObject ParseObject(std::string_view text) {
  PdfObject object;
  text.remove_prefix(ValueStart(text));
  PdfValueReader reader(text);
  auto value = reader.Read();
  if (!value) return object;
  object.value = std::move(*value);
  if (!object.value.Is(PdfValue::Kind::kDictionary) || !reader.Skip("stream")) return object;
  object.is_stream = true;
  std::string_view const data = text.substr(DataStart(text, reader.position()));
  object.behind_stream = {reinterpret_cast<BYTE const*>(data.data()), data.size()};
  return object;
}

PdfObject PdfObjects::Load(DWORD number) const {
  if (IsExhausted()) return {};
  auto block = std::make_unique<LoadedObject>(session_.LoadObject(number));
  Spend(kLoadBytes + block->size());
  if (block->data() == nullptr) return {};
  PdfObject object = ParseObject({reinterpret_cast<char const*>(block->data()), block->size()});
  object.block = std::move(block);
  return object;
}

PdfObject PdfObjects::Follow(PdfValue const& value) const {
  PdfObject object;
  object.value = value;
  for (int i = 0; object.value.Is(PdfValue::Kind::kReference); ++i) {
    if (i == kMaxReferences) return {};
    object = Load(static_cast<DWORD>(object.value.number));
  }
  return object;
}

std::optional<std::span<BYTE const>> PdfObjects::DataOf(PdfObject const& stream) const {
  PdfValue const length = Resolve(stream.value["Length"]);
  bool const known = length.Is(PdfValue::Kind::kNumber) && length.number >= 0 &&
                     length.number <= static_cast<double>(stream.behind_stream.size());
  if (!stream.is_stream || !known) return std::nullopt;
  return stream.behind_stream.first(static_cast<size_t>(length.number));
}

}  // namespace sorrelin::tool
