// The report as JSON. Files are sorted first, since readers that work side by side report them.
#include "tools/extract/extract_report.h"

#include <algorithm>
#include <tuple>

#include "tools/cli/json.h"

namespace sorrelin::tool {
namespace {

constexpr int kIndent = 4;

std::string JsonOf(WrittenFile const& file) {
  JsonObject json(kIndent);
  json.Add("file", JsonString(file.name));
  json.Add("page", std::to_string(file.page));
  json.Add("picture", std::to_string(file.head.picture));
  json.Add("coding", JsonString(file.head.coding));
  json.Add("width_pixels", std::to_string(file.head.width));
  json.Add("height_pixels", std::to_string(file.head.height));
  json.Add("bytes", std::to_string(file.bytes));
  return json.Finish();
}

std::string JsonOf(ExtractProblem const& problem) {
  JsonObject json(kIndent);
  json.Add("file", JsonString(problem.file));
  json.Add("page", problem.page == 0 ? "null" : std::to_string(problem.page));
  json.Add("problem", JsonString(problem.problem));
  return json.Finish();
}

template <typename Row>
std::string ArrayOf(std::vector<Row> const& rows) {
  std::string text;
  for (Row const& row : rows) text += (text.empty() ? "\n    " : ",\n    ") + JsonOf(row);
  return text.empty() ? "[]" : "[" + text + "\n  ]";
}

}  // namespace

std::string JsonOf(ExtractReport report) {
  std::stable_sort(report.files.begin(), report.files.end(), [](auto const& a, auto const& b) {
    return std::tie(a.page, a.head.picture) < std::tie(b.page, b.head.picture);
  });
  std::stable_sort(report.problems.begin(), report.problems.end(),
                   [](auto const& a, auto const& b) { return a.page < b.page; });
  JsonObject json(0);
  json.Add("document", JsonString(report.document));
  json.Add("written", std::to_string(report.files.size()));
  json.Add("files", ArrayOf(report.files));
  json.Add("problems", ArrayOf(report.problems));
  return json.Finish() + "\n";
}

}  // namespace sorrelin::tool
