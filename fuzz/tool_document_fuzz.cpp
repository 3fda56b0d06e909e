// Documents as the command-line program reads them: each page is judged, and its picture decoded.
#include <tools/extract/page_image.h>
#include <tools/extract/page_picture.h>

#include "fuzz/fuzz_session.h"

namespace {

constexpr DWORD kMostPages = 6;
constexpr uint64_t kMostWork = 64 * 1024 * 1024;

// Takes a picture as far as it is worth while, and looks that it is as announced.
class Sink final : public sorrelin::tool::PictureSink {
 public:
  bool Begin(sorrelin::tool::PictureForm const& form) override {
    bytes_ = form.RowBytes();
    return form.width != 0 && form.height != 0;
  }
  bool Row(std::span<BYTE const> row) override {
    fuzz::Require(row.size() == bytes_, "a row of another size");
    return ++rows_ < 1000;
  }

 private:
  size_t bytes_ = 0;
  int rows_ = 0;
};

void ReadPages(fuzz::Data document) {
  fuzz::Session session;
  if (!session.Open(document)) return;
  DWORD const pages = std::min(session->GetNumberOfPages(), kMostPages);
  sorrelin::tool::PageJudge judge(*session, kMostWork);
  for (DWORD page = 0; page < pages; ++page) {
    auto const facts = judge.Judge(session->GetPageObjectNumber(page));
    fuzz::Require(facts.image.has_value() == facts.problem.empty(), "neither image nor problem");
    if (!facts.image) continue;
    Sink sink;
    std::string problem;
    sorrelin::tool::DecodePicture(*session, *facts.image, facts.dpi, sink, problem);
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(uint8_t const* bytes, size_t size) {
  fuzz::Data const document(bytes, size);
  if (!fuzz::HoldsEndlessNumber(document)) fuzz::Guard([&] { ReadPages(document); });
  return 0;
}
