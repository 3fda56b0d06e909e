// The report of one run, as lines of text and as JSON.
#include "tools/make/run_report.h"

#include "tools/cli/json.h"

namespace sorrelin::tool {
namespace {

std::string Range(unsigned first, unsigned last) {
  std::string const text = std::to_string(first);
  if (first == last) return text;
  return text + (last == first + 1 ? ", " : "-") + std::to_string(last);
}

// Elements as an array that starts on the line of its key.
template <typename Elements, typename ToJson>
std::string Array(Elements const& elements, ToJson to_json) {
  std::string text;
  for (auto const& element : elements) {
    text += (text.empty() ? "\n    " : ",\n    ") + to_json(element);
  }
  return text.empty() ? "[]" : "[" + text + "\n  ]";
}

}  // namespace

std::string PageRanges(std::vector<unsigned> const& pages) {
  std::string text;
  for (size_t i = 0; i < pages.size();) {
    size_t end = i + 1;
    while (end < pages.size() && pages[end] == pages[end - 1] + 1) ++end;
    text += (text.empty() ? "" : ", ") + Range(pages[i], pages[end - 1]);
    i = end;
  }
  return (pages.size() == 1 ? "page " : "pages ") + text;
}

void RunReport::AddProblem(std::string const& name, int page, std::string const& problem) {
  problems_.push_back({name, page, problem});
}

std::vector<std::string> RunReport::ChangeLines() const {
  std::vector<std::string> lines;
  if (!written_) return lines;
  for (size_t i = 0; i < static_cast<size_t>(Change::kCount); ++i) {
    Change const change = static_cast<Change>(i);
    std::vector<unsigned> numbers;
    for (PageRecord const& page : pages_) {
      if (page.changes.Has(change)) numbers.push_back(page.page);
    }
    if (!numbers.empty()) lines.push_back(NameOf(change) + (": " + PageRanges(numbers)));
  }
  return lines;
}

std::string RunReport::Json(std::string const& document) const {
  Written const written = written_.value_or(Written{});
  JsonObject json(0);
  json.Add("document", JsonString(document));
  json.Add("written", written_ ? "true" : "false");
  json.Add("pages", std::to_string(written.pages));
  json.Add("bytes", std::to_string(written.bytes));
  json.Add("problem", Array(problems_, [](Problem const& problem) {
             JsonObject object(4);
             object.Add("file", JsonString(problem.name));
             object.Add("page", problem.page > 0 ? std::to_string(problem.page) : "null");
             object.Add("problem", JsonString(problem.text));
             return object.Finish();
           }));
  json.Add("page", Array(pages_, JsonOf));
  json.Add("ignored", Array(ignored_, [](std::string const& name) { return JsonString(name); }));
  return json.Finish() + "\n";
}

}  // namespace sorrelin::tool
