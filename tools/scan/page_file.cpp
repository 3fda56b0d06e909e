// Writes PNM files line by line. The header is written twice, its height padded to one length.
#include "tools/scan/page_file.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <system_error>

#include "tools/cli/messages.h"

namespace sorrelin::tool {
namespace {

bool IsKnown(LineShape const& shape) {
  bool const known = shape.depth == 8 || shape.depth == 16 || (shape.depth == 1 && !shape.colour);
  int64_t const samples = shape.width * (shape.colour ? 3 : 1);
  return known && shape.width > 0 && shape.line_bytes >= (samples * shape.depth + 7) / 8;
}

std::string WriteProblem() {
  return "cannot keep a page: " + std::generic_category().message(errno) + kRoomRemedy;
}

}  // namespace

std::unique_ptr<PageFile> PageFile::Create(std::filesystem::path const& path,
                                           LineShape const& shape, std::string& problem) {
  if (!IsKnown(shape)) {
    problem = "sends lines of a form that is not known (choose another mode or depth)";
    return nullptr;
  }
  std::FILE* const file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return problem = WriteProblem(), nullptr;
  std::unique_ptr<PageFile> page(new PageFile(file, shape));
  if (!page->WriteHeader()) return problem = WriteProblem(), nullptr;
  return page;
}

PageFile::PageFile(std::FILE* file, LineShape const& shape) : file_(file), shape_(shape) {
  line_.reserve(static_cast<size_t>(shape.line_bytes));
}

size_t PageFile::RowBytes() const {
  return static_cast<size_t>((shape_.width * (shape_.colour ? 3 : 1) * shape_.depth + 7) / 8);
}

bool PageFile::WriteHeader() {
  char const kind = shape_.depth == 1 ? '4' : shape_.colour ? '6' : '5';
  char const* const most = shape_.depth == 1 ? "" : shape_.depth == 8 ? "255\n" : "65535\n";
  return std::fprintf(file_.get(), "P%c\n%lld %12lld\n%s", kind,
                      static_cast<long long>(shape_.width), static_cast<long long>(rows_),
                      most) > 0;
}

bool PageFile::WriteRow(std::span<unsigned char const> line) {
  row_.assign(line.begin(), line.begin() + static_cast<std::ptrdiff_t>(RowBytes()));
  if (shape_.depth == 16 && std::endian::native == std::endian::little) {
    for (size_t i = 0; i + 1 < row_.size(); i += 2) std::swap(row_[i], row_[i + 1]);
  }
  ++rows_;
  return std::fwrite(row_.data(), 1, row_.size(), file_.get()) == row_.size();
}

bool PageFile::Add(std::span<unsigned char const> bytes, std::string& problem) {
  size_t const whole = static_cast<size_t>(shape_.line_bytes);
  while (!bytes.empty()) {
    size_t const count = std::min(whole - line_.size(), bytes.size());
    line_.insert(line_.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
    bytes = bytes.subspan(count);
    if (line_.size() < whole) continue;
    if (!WriteRow(line_)) return problem = WriteProblem(), false;
    line_.clear();
  }
  return true;
}

bool PageFile::Finish(std::string& problem) {
  if (rows_ == 0) return problem = "has sent a page without lines (run this again)", false;
  bool const written =
      std::fseek(file_.get(), 0, SEEK_SET) == 0 && WriteHeader() && std::fflush(file_.get()) == 0;
  if (!written) problem = WriteProblem();
  return written;
}

}  // namespace sorrelin::tool
