// A window that moves over the file by whole steps, so that looks to and fro share it.
#include "tools/documents/document_source.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <qpdf/QPDFExc.hh>
#include <stdexcept>

#include "tools/cli/text.h"

namespace sorrelin::tool {
namespace {

constexpr qpdf_offset_t kWindowBytes = 16384;

bool IsLineEnd(char c) { return c == '\r' || c == '\n'; }

}  // namespace

DocumentSource::DocumentSource(std::string const& name) : name_(name) {
  file_.rdbuf()->pubsetbuf(nullptr, 0);
  file_.open(PathOf(name), std::ios::binary);
  file_.seekg(0, std::ios::end);
  if (!file_) throw QPDFExc(qpdf_e_system, name_, "", 0, "open");
  size_ = file_.tellg();
}

std::span<char const> DocumentSource::Ahead() {
  if (offset_ >= size_) return {};
  qpdf_offset_t const start = offset_ - offset_ % kWindowBytes;
  if (window_.empty() || start != window_start_) {
    window_.resize(static_cast<size_t>(std::min(kWindowBytes, size_ - start)));
    file_.seekg(start);
    file_.read(window_.data(), static_cast<std::streamsize>(window_.size()));
    if (!file_) throw QPDFExc(qpdf_e_system, name_, "", offset_, "read");
    window_start_ = start;
  }
  return std::span<char const>(window_).subspan(static_cast<size_t>(offset_ - start));
}

size_t DocumentSource::read(char* out, size_t length) {
  last_offset = std::min(offset_, size_);
  size_t done = 0;
  for (auto ahead = Ahead(); done < length && !ahead.empty(); ahead = Ahead()) {
    size_t const count = std::min(length - done, ahead.size());
    std::copy_n(ahead.data(), count, out + done);
    done += count;
    offset_ += static_cast<qpdf_offset_t>(count);
  }
  return done;
}

void DocumentSource::seek(qpdf_offset_t offset, int whence) {
  qpdf_offset_t const base = whence == SEEK_SET ? 0 : whence == SEEK_END ? size_ : offset_;
  bool const fits =
      offset <= std::numeric_limits<qpdf_offset_t>::max() - base && base + offset >= 0;
  if (!fits) throw std::runtime_error(name_ + ": seek beyond the file");
  offset_ = base + offset;
}

// Where the line ends; the offset moves past its end marks.
qpdf_offset_t DocumentSource::findAndSkipNextEOL() {
  qpdf_offset_t end = -1;
  for (auto ahead = Ahead(); !ahead.empty(); ahead = Ahead()) {
    auto const wanted = [&](char c) { return IsLineEnd(c) == (end == -1); };
    auto const found = std::find_if(ahead.begin(), ahead.end(), wanted);
    offset_ += found - ahead.begin();
    if (found == ahead.end()) continue;
    if (end != -1) return end;
    end = offset_;
  }
  return end != -1 ? end : offset_;
}

}  // namespace sorrelin::tool
