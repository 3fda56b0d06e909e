// The files of a page's pictures: as stored if that is wanted and possible, else decoded.
#include "tools/extract/page_files.h"

#include <utility>

#include "tools/cli/messages.h"
#include "tools/extract/output/keep_writer.h"

namespace sorrelin::tool {
namespace {

constexpr char kNoFit[] = "its picture does not fit this format (choose another --format)";
constexpr char kSeveralRemedy[] = " (--all writes each; pdftoppm -png draws such pages)";

PictureHead HeadOf(PagePicture const& picture, DWORD number, Orientation orientation,
                   char const* extension) {
  PictureHead head = {number,      picture.Width(),     picture.Height(), picture.Depth(),
                      picture.dpi, picture.compression, extension};
  if (!IsSideways(orientation)) return head;
  std::swap(head.width, head.height);
  std::swap(head.dpi.x, head.dpi.y);
  return head;
}

// Whether a file of this format may be the picture as it is stored. Of fax data only Group 4 is
// what every reader of TIFF takes, and marks of orientation are what some do not.
bool IsKeptBy(FileFormat format, KeptAs kept, PagePicture const& picture, Orientation orientation) {
  switch (format) {
    case FileFormat::kKeep:
      return kept != KeptAs::kNothing;
    case FileFormat::kJpeg:
      return kept == KeptAs::kJpeg;
    case FileFormat::kTiff:
      return kept == KeptAs::kFax && picture.strips[0].fax.k < 0 && orientation == kUpright;
    default:
      return false;
  }
}

}  // namespace

std::unique_ptr<PageSource> PageFiles::Open(FileOptions const& options, std::string& problem) {
  auto document = QpdfDocument::Open(options.document, options.password, problem);
  if (document == nullptr) return nullptr;
  return std::unique_ptr<PageSource>(new PageFiles(options, std::move(document)));
}

void PageFiles::Read(DWORD page, PictureSender& sender) {
  PageFacts const facts = JudgePage(*document_, page);
  if (options_.all && !facts.pictures.empty()) {
    DWORD number = 0;
    for (PagePicture const& picture : facts.pictures) SendPicture(picture, ++number, sender);
  } else if (!facts.problem.empty()) {
    bool const several = facts.pictures.size() > 1 && facts.whole.empty();
    sender.Fail(0, facts.problem + (several ? kSeveralRemedy : kDrawRemedy));
  } else {
    SendPicture(facts.whole[0], 1, sender);
  }
}

void PageFiles::SendPicture(PagePicture const& picture, DWORD number, PictureSender& sender) {
  std::string problem = picture.problem;
  bool const written = problem.empty() && WriteFile(picture, number, sender, problem);
  if (written) {
    sender.End();
  } else {
    sender.Fail(options_.all ? number : 0, problem + kDrawRemedy);
  }
}

bool PageFiles::WriteFile(PagePicture const& picture, DWORD number, PictureSender& sender,
                          std::string& problem) {
  Orientation const orientation = options_.as_stored ? kUpright : picture.orientation;
  KeptAs const kept = KeptAsOf(picture, orientation);
  bool const keeps = IsKeptBy(options_.format, kept, picture, orientation);
  char const* const extension = keeps ? ExtensionOf(kept) : ExtensionOf(options_.format);
  ByteOutput& output = sender.Begin(HeadOf(picture, number, orientation, extension));
  if (keeps) return WriteKept(picture, kept, orientation, output, problem);
  auto const writer = MakeWriter(options_.format, output);
  if (!DecodePagePicture(picture, orientation, *writer, problem)) return false;
  bool const written = writer->Finish();
  if (!written) problem = kNoFit;
  return written;
}

}  // namespace sorrelin::tool
