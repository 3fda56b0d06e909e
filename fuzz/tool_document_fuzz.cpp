// Documents as the command-line program reads them: each page is judged, and its pictures decoded
// and written as files of every format.
#include <tools/extract/output/keep_writer.h>
#include <tools/extract/output/picture_writer.h>
#include <tools/extract/page/page_judge.h>

#include <algorithm>

#include "fuzz/fuzz_input.h"

namespace {

using namespace sorrelin::tool;

constexpr DWORD kMostPages = 4;
constexpr size_t kMostPictures = 4;
constexpr uint64_t kMostPixels = 1 << 20;

// Forgets what it is given.
class Nowhere : public ByteOutput {
 public:
  bool WriteAt(uint64_t, std::span<BYTE const>) override { return true; }
};

void WritePicture(PagePicture const& picture) {
  if (!picture.problem.empty() || uint64_t{picture.Width()} * picture.Height() > kMostPixels)
    return;
  std::string problem;
  for (FileFormat const format : {FileFormat::kPng, FileFormat::kTiff, FileFormat::kPnm}) {
    Nowhere output;
    auto const writer = MakeWriter(format, output);
    bool const decoded = DecodePagePicture(picture, picture.orientation, *writer, problem);
    fuzz::Require(decoded || !problem.empty(), "neither picture nor problem");
    fuzz::Require(!decoded || writer->Finish(), "rows are missing");
  }
  Nowhere output;
  KeptAs const kept = KeptAsOf(picture, picture.orientation);
  if (kept != KeptAs::kNothing) WriteKept(picture, kept, picture.orientation, output, problem);
}

void ReadPages(QpdfDocument& document) {
  for (DWORD page = 0; page < std::min(document.ListedPages(), kMostPages); ++page) {
    PageFacts const facts = JudgePage(document, page);
    fuzz::Require(facts.whole.empty() || facts.whole[0].problem == facts.problem,
                  "another problem than that of the picture");
    for (size_t i = 0; i < std::min(facts.pictures.size(), kMostPictures); ++i) {
      WritePicture(facts.pictures[i]);
    }
    if (facts.whole.size() == 1 && facts.whole[0].strips.size() > 1) WritePicture(facts.whole[0]);
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(uint8_t const* bytes, size_t size) {
  std::string problem;
  auto const document =
      QpdfDocument::OpenMemory({reinterpret_cast<char const*>(bytes), size}, problem);
  if (document != nullptr) ReadPages(*document);
  return 0;
}
