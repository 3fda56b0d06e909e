// The search for content in a 24-bit bitmap.
#include <sorrelin/image/dib_view.h>
#include <sorrelin/image/toolbox/dib_layout.h>
#include <sorrelin/image/toolbox/dib_toolbox.h>
#include <sorrelin/platform/block.h>

#include <algorithm>
#include <cstdint>
#include <span>

namespace sorrelin {
namespace {

constexpr int kTrueColorBits = 24;

// The hits of a row of positions, as seen from its two ends.
class Extent {
 public:
  explicit Extent(uint64_t count) : last_(count - 1), from_start_(count), from_end_(count) {}

  // Takes hits at `first` through `last`.
  void Add(uint64_t first, uint64_t last) {
    at_start_ = at_start_ || first == 0;
    at_end_ = at_end_ || last == last_;
    if (last > 0) from_start_ = std::min(from_start_, std::max<uint64_t>(first, 1));
    if (first < last_) from_end_ = std::min(from_end_, last_ - std::min(last, last_ - 1));
  }
  LONG FromStart() const { return Distance(from_start_, at_start_); }
  LONG FromEnd() const { return Distance(from_end_, at_end_); }

 private:
  // Kept: the search ends at the first distance above 0, so a hit at the very edge gives way to one
  // further in; callers crop by this.
  LONG Distance(uint64_t inner, bool at_edge) const {
    if (inner <= last_) return static_cast<LONG>(inner);
    return at_edge ? 0 : -1;
  }

  uint64_t last_;
  bool at_start_ = false;
  bool at_end_ = false;
  uint64_t from_start_;  // the smallest distance above 0
  uint64_t from_end_;
};

// The columns and rows of a picture that have a hit; rows are in block order.
class Hits {
 public:
  // A picture of `width` x `height` pixels, both above 0.
  Hits(uint64_t width, uint64_t height, int threshold, bool bright)
      : columns(width),
        rows(height),
        width_(width),
        height_(height),
        limit_(int64_t{3} * threshold),
        bright_(bright) {}

  // Takes the rows in `bytes`. What is missing there is black.
  void Take(std::span<BYTE const> bytes, uint64_t stride) {
    uint64_t y = 0;
    for (; y < height_ && y * stride < bytes.size(); ++y) {
      TakeRow(y, bytes.subspan(static_cast<size_t>(y * stride)));
    }
    if (y == height_ || !IsHit(0)) return;
    rows.Add(y, height_ - 1);
    columns.Add(0, width_ - 1);
  }

  Extent columns;
  Extent rows;

 private:
  bool IsHit(int64_t sum) const { return (sum > limit_) == bright_; }

  // Takes the pixels at the start of `bytes`, which may lack some.
  void TakeRow(uint64_t y, std::span<BYTE const> bytes) {
    uint64_t const here = std::min<uint64_t>(width_, (bytes.size() + 2) / 3);
    bool hit = false;
    for (uint64_t x = 0; x < here; ++x) {
      BYTE color[3];
      ReadOrZero(bytes, 3 * x, color);
      if (!IsHit(color[0] + color[1] + color[2])) continue;
      columns.Add(x, x);
      hit = true;
    }
    if (here < width_ && IsHit(0)) {
      columns.Add(here, width_ - 1);
      hit = true;
    }
    if (hit) rows.Add(y, y);
  }

  uint64_t width_;
  uint64_t height_;
  int64_t limit_;
  bool bright_;
};

}  // namespace

int FindContentBounds(HDIB dib, int threshold, bool bright, LONG* left, LONG* right, LONG* top,
                      LONG* bottom) {
  if (left == nullptr || right == nullptr || top == nullptr || bottom == nullptr) return 0;
  LockedBlock const block(dib);
  if (!block) return 0;
  DibLayout const layout(block.bytes());
  if (layout.bits != kTrueColorBits || layout.PictureBytes() > kMaxBlockBytes) return 0;
  *left = *right = *top = *bottom = -1;
  if (layout.width <= 0 || layout.height == 0) return 1;
  Hits hits(static_cast<uint64_t>(layout.width), layout.Rows(), threshold, bright);
  hits.Take(GetDIBBits(block.bytes()), layout.Stride());
  *left = hits.columns.FromStart();
  *right = hits.columns.FromEnd();
  bool const top_down = layout.height < 0;
  *top = top_down ? hits.rows.FromStart() : hits.rows.FromEnd();
  *bottom = top_down ? hits.rows.FromEnd() : hits.rows.FromStart();
  return 1;
}

}  // namespace sorrelin
