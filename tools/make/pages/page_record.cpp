// Page records as JSON and as lines of text.
#include "tools/make/pages/page_record.h"

#include "tools/cli/json.h"

namespace sorrelin::tool {
namespace {

char const* NameOf(DpiOrigin origin) {
  switch (origin) {
    case DpiOrigin::kFile:
      return "file";
    case DpiOrigin::kOption:
      return "option";
    default:
      return "default";
  }
}

template <typename Append>
void ForEachChange(Changes const& changes, Append append) {
  for (size_t i = 0; i < static_cast<size_t>(Change::kCount); ++i) {
    if (changes.Has(static_cast<Change>(i))) append(NameOf(static_cast<Change>(i)));
  }
}

}  // namespace

std::string JsonOf(PageRecord const& record) {
  std::string changes;
  ForEachChange(record.changes, [&](char const* name) {
    changes += (changes.empty() ? "" : ", ") + JsonString(name);
  });
  JsonObject json(4);
  json.Add("number", std::to_string(record.page));
  json.Add("file", JsonString(record.file));
  json.Add("page", std::to_string(record.page_of_file));
  json.Add("coding", JsonString(record.coding));
  json.Add("data", record.passed ? "\"passed\"" : "\"coded\"");
  json.Add("bytes", std::to_string(record.bytes));
  json.Add("changes", "[" + changes + "]");
  json.Add("dpi_x", std::to_string(record.dpi.x));
  json.Add("dpi_y", std::to_string(record.dpi.y));
  json.Add("dpi_from", JsonString(NameOf(record.origin)));
  json.Add("damage", record.damage.empty() ? "null" : JsonString(record.damage));
  return json.Finish();
}

std::string LineOf(PageRecord const& record) {
  std::string line = "page " + std::to_string(record.page_of_file) + ": " + record.coding +
                     (record.passed ? ", passed, " : ", coded, ") + std::to_string(record.bytes) +
                     " bytes, " + std::to_string(record.dpi.x) + " x " +
                     std::to_string(record.dpi.y) + " dots per inch (" + NameOf(record.origin) +
                     ")";
  ForEachChange(record.changes, [&](char const* name) { line += std::string(", ") + name; });
  return line;
}

}  // namespace sorrelin::tool
