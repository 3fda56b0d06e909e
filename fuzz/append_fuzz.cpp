// Updates of hostile documents: a page is added to the input, in memory and in a file, and what
// comes of it is read. The file keeps its old bytes; the memory form writes its first page where
// reading ended, and may not.
#include <tests/support/temp_dir.h>

#include "fuzz/fuzz_session.h"

namespace {

using Document = std::vector<BYTE>;

void UpdateFile(fuzz::Data document) {
  static auto& folder = *new test::TempDir;  // shared by all inputs; see scripts/fuzz.sh
  std::filesystem::path const name = folder / "document.pdf";
  test::WriteAll(name, {document.begin(), document.end()});
  {
    fuzz::Session session;
    if (session.Create(name) && fuzz::AddPage(*session)) session->FinishPDF();
  }
  Document const updated = test::ReadAll(name);
  fuzz::Require(updated.size() >= document.size() &&
                    std::equal(document.begin(), document.end(), updated.begin()),
                "an update changes the old bytes");
  if (updated.size() != document.size()) fuzz::ReadEverything(updated);
}

}  // namespace

int LLVMFuzzerTestOneInput(uint8_t const* bytes, size_t size) {
  fuzz::Data const document(bytes, size);
  if (document.empty() || fuzz::HoldsEndlessNumber(document)) return 0;
  fuzz::Guard([&] {
    std::string const updated = fuzz::AppendPage(document);
    fuzz::ReadEverything({reinterpret_cast<uint8_t const*>(updated.data()), updated.size()});
  });
  fuzz::Guard([&] { UpdateFile(document); });
  return 0;
}
