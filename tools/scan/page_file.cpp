// Cuts the bytes of a scanner into lines, and chooses how they are coded.
#include "tools/scan/page_file.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "tools/cli/messages.h"
#include "tools/formats/jpeg/jpeg_file.h"

namespace sorrelin::tool {
namespace {

bool IsKnown(LineShape const& shape) {
  bool const known = shape.depth == 8 || shape.depth == 16 || (shape.depth == 1 && !shape.colour);
  int64_t const samples = shape.width * (shape.colour ? 3 : 1);
  return known && shape.width > 0 && shape.line_bytes >= (samples * shape.depth + 7) / 8;
}

// Pages that are straightened or cleaned lose less if they are coded after it.
bool TakesJpeg(LineShape const& shape, PageStyle const& style) {
  return style.compression == Compression::kJpeg && !style.scan.ChangesPixels() &&
         shape.depth == 8 && shape.lines > 0 && std::max(shape.lines, shape.width) <= kMaxJpegSide;
}

bool TakesGroup4(LineShape const& shape, PageStyle const& style) {
  bool const is_wanted =
      style.compression == Compression::kAuto || style.compression == Compression::kGroup4;
  return is_wanted && shape.depth == 1;
}

std::unique_ptr<RowWriter> MakeRows(std::filesystem::path const& path, LineShape const& shape,
                                    PageStyle const& style) {
  if (TakesJpeg(shape, style)) return MakeJpegRows(path, shape, style.quality);
  return TakesGroup4(shape, style) ? MakeGroup4Rows(path, shape) : MakePnmRows(path, shape);
}

std::string WriteProblem() {
  return "cannot keep a page: " + std::generic_category().message(errno) + kRoomRemedy;
}

}  // namespace

std::unique_ptr<PageFile> PageFile::Create(std::filesystem::path const& path,
                                           LineShape const& shape, PageStyle const& style,
                                           std::string& problem) {
  if (!IsKnown(shape)) {
    problem = "sends lines of a form that is not known (choose another mode or depth)";
    return nullptr;
  }
  auto writer = MakeRows(path, shape, style);
  if (writer == nullptr) return problem = WriteProblem(), nullptr;
  return std::unique_ptr<PageFile>(new PageFile(std::move(writer), shape));
}

PageFile::PageFile(std::unique_ptr<RowWriter> writer, LineShape const& shape)
    : writer_(std::move(writer)), shape_(shape) {
  line_.reserve(static_cast<size_t>(shape.line_bytes));
}

bool PageFile::Add(std::span<unsigned char const> bytes, std::string& problem) {
  size_t const whole = static_cast<size_t>(shape_.line_bytes);
  while (!bytes.empty()) {
    size_t const count = std::min(whole - line_.size(), bytes.size());
    line_.insert(line_.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
    bytes = bytes.subspan(count);
    if (line_.size() < whole) continue;
    if (!writer_->Write(std::span(line_).first(shape_.RowBytes()))) {
      return problem = WriteProblem(), false;
    }
    ++rows_;
    line_.clear();
  }
  return true;
}

bool PageFile::Finish(std::string& problem) {
  if (rows_ == 0) return problem = "has sent a page without lines (run this again)", false;
  bool const written = writer_->Finish();
  if (!written) problem = WriteProblem();
  return written;
}

}  // namespace sorrelin::tool
