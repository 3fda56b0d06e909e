// Names and parameters come alone or in arrays, and each may be a reference.
#include "tools/documents/stream_filters.h"

#include <sorrelin/image/inflate_stream.h>

#include <algorithm>

namespace sorrelin::tool {
namespace {

using Kind = PdfValue::Kind;

std::vector<PdfValue> ItemsOf(PdfValue const& value) {
  if (value.Is(Kind::kArray)) return value.items;
  if (value.Is(Kind::kNull)) return {};
  return {value};
}

}  // namespace

std::optional<std::vector<StreamFilter>> FiltersOf(PdfObjects const& objects,
                                                   PdfValue const& dictionary) {
  PdfValue const filter = objects.Resolve(dictionary["Filter"]);
  if (filter.Is(Kind::kNull) && dictionary["Filter"].Is(Kind::kReference)) return std::nullopt;
  auto const names = ItemsOf(filter);
  auto const parms = ItemsOf(objects.Resolve(dictionary["DecodeParms"]));
  std::vector<StreamFilter> filters;
  for (size_t i = 0; i < names.size(); ++i) {
    PdfValue const name = objects.Resolve(names[i]);
    if (!name.Is(Kind::kName)) return std::nullopt;
    filters.push_back({name.text, i < parms.size() ? objects.Resolve(parms[i]) : PdfValue{}});
  }
  return filters;
}

bool HasPredictor(PdfObjects const& objects, StreamFilter const& filter) {
  PdfValue const predictor = objects.Resolve(filter.parms["Predictor"]);
  return !predictor.Is(Kind::kNull) && predictor.number != 1;
}

std::optional<std::string> DecodedText(PdfObjects const& objects, PdfObject const& stream,
                                       size_t most) {
  auto const filters = FiltersOf(objects, stream.value);
  auto const data = objects.DataOf(stream);
  if (!filters || !data || filters->size() > 1) return std::nullopt;
  if (filters->empty()) {
    return std::string(reinterpret_cast<char const*>(data->data()), std::min(most, data->size()));
  }
  StreamFilter const& filter = filters->front();
  if (filter.name != "FlateDecode" || HasPredictor(objects, filter)) return std::nullopt;
  constexpr size_t kPieceBytes = 16384;
  InflateStream stream_data(*data);
  std::string text;
  while (text.size() < most) {
    size_t const before = text.size();
    size_t const wanted = std::min(kPieceBytes, most - before);
    text.resize(before + wanted);
    size_t const count = stream_data.Read({reinterpret_cast<BYTE*>(text.data()) + before, wanted});
    text.resize(before + count);
    if (count < wanted) break;
  }
  objects.Spend(text.size());
  return text;
}

}  // namespace sorrelin::tool
