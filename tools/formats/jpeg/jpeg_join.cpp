// Joins pieces of JPEG data: each is read to its DCT coefficients, and the blocks of all are
// written as one picture. This works where each piece ends with a whole unit of the coding, as
// strips and tiles usually do.
#include "tools/formats/jpeg/jpeg_join.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "tools/formats/jpeg/jpeg_errors.h"

namespace sorrelin::tool {
namespace {

constexpr size_t kMarkerBytes = 2;
// APP14: "Adobe", version 100, no flags, and last the transform: 0 for RGB, 1 for YCbCr.
constexpr BYTE kAdobeMarker[] = {0xFF, 0xEE, 0, 14, 'A', 'd', 'o', 'b', 'e', 0, 100, 0, 0, 0, 0};
// The whole picture is in memory, with two bytes for a sample.
constexpr int64_t kMaxJoinedPixels = int64_t{1} << 27;

J_COLOR_SPACE SpaceOf(JpegColours colours) {
  constexpr J_COLOR_SPACE kSpaces[] = {JCS_UNKNOWN, JCS_GRAYSCALE, JCS_RGB,
                                       JCS_YCbCr,   JCS_CMYK,      JCS_YCCK};
  return kSpaces[static_cast<int>(colours)];
}

bool StartsAsJpeg(std::span<BYTE const> bytes) {
  return bytes.size() > 2 * kMarkerBytes && bytes[0] == 0xFF && bytes[1] == 0xD8;
}

int BlocksOf(int pixels, int factor, int most) {
  int64_t const unit = int64_t{most} * DCTSIZE;
  return static_cast<int>((int64_t{pixels} * factor + unit - 1) / unit);
}

int PiecesAcross(JpegPieces const& pieces) { return (pieces.width - 1) / pieces.piece_width + 1; }

// Whether the pieces are as many as the picture takes, and all start as JPEG data do.
bool IsComplete(JpegPieces const& pieces) {
  if (pieces.width < 1 || pieces.height < 1 || pieces.piece_width < 1 || pieces.piece_height < 1) {
    return false;
  }
  int64_t const down = (pieces.height - 1) / pieces.piece_height + 1;
  return static_cast<int64_t>(pieces.pieces.size()) == PiecesAcross(pieces) * down &&
         (pieces.tables.empty() || StartsAsJpeg(pieces.tables)) &&
         std::all_of(pieces.pieces.begin(), pieces.pieces.end(),
                     [](auto const& piece) { return StartsAsJpeg(piece); });
}

int RoundedUp(int value, int unit) { return (value + unit - 1) / unit * unit; }

// The decompressor of the pieces and the compressor of the whole.
class Joiner {
 public:
  explicit Joiner(JpegPieces const& pieces) : pieces_(pieces) {
    source_.err = target_.err = errors_.manager();
  }
  ~Joiner() {
    jpeg_destroy_decompress(&source_);
    jpeg_destroy_compress(&target_);
    std::free(bytes_);
  }
  Joiner(Joiner const&) = delete;
  Joiner& operator=(Joiner const&) = delete;

  std::shared_ptr<std::vector<BYTE> const> Join() {
    bool fits = true;
    bool const done = errors_.Try([&] {
      Begin();
      for (size_t i = 0; fits && i < pieces_.pieces.size(); ++i) fits = AddPiece(i);
      if (fits) Finish();
    });
    if (!done || !fits) return nullptr;
    return std::make_shared<std::vector<BYTE> const>(bytes_, bytes_ + size_);
  }

 private:
  void Begin() {
    jpeg_create_decompress(&source_);
    jpeg_create_compress(&target_);
    if (pieces_.tables.empty()) return;
    jpeg_mem_src(&source_, pieces_.tables.data(),
                 static_cast<unsigned long>(pieces_.tables.size()));
    jpeg_read_header(&source_, FALSE);
  }

  bool AddPiece(size_t index) {
    auto const& piece = pieces_.pieces[index];
    jpeg_mem_src(&source_, piece.data(), static_cast<unsigned long>(piece.size()));
    jpeg_read_header(&source_, TRUE);
    source_.jpeg_color_space = SpaceOf(pieces_.colours);
    int const column = static_cast<int>(index) % PiecesAcross(pieces_);
    int const row = static_cast<int>(index) / PiecesAcross(pieces_);
    if (!HasItsSize(row)) return false;
    jvirt_barray_ptr* const blocks = jpeg_read_coefficients(&source_);
    if (index == 0) Prepare();
    if (!IsAlike()) return false;
    for (int i = 0; i < source_.num_components; ++i) CopyBlocks(blocks, i, column, row);
    jpeg_finish_decompress(&source_);
    // The next header starts the count of warnings anew.
    return !errors_.warned();
  }

  // Pieces that others follow end with whole units of the coding.
  bool HasItsSize(int row) const {
    int const unit_width = source_.max_h_samp_factor * DCTSIZE;
    int const unit_height = source_.max_v_samp_factor * DCTSIZE;
    bool const alone_across = pieces_.piece_width >= pieces_.width;
    bool const alone_down = pieces_.piece_height >= pieces_.height;
    int64_t const rows_left = pieces_.height - int64_t{row} * pieces_.piece_height;
    return static_cast<int>(source_.image_width) == pieces_.piece_width &&
           source_.image_height >= std::min<int64_t>(pieces_.piece_height, rows_left) &&
           static_cast<int>(source_.image_height) <= pieces_.piece_height &&
           (alone_across || pieces_.piece_width % unit_width == 0) &&
           (alone_down || pieces_.piece_height % unit_height == 0);
  }

  void Prepare() {
    jpeg_copy_critical_parameters(&source_, &target_);
    target_.image_width = static_cast<JDIMENSION>(pieces_.width);
    target_.image_height = static_cast<JDIMENSION>(pieces_.height);
    target_.optimize_coding = TRUE;
    size_t const room = static_cast<size_t>(target_.num_components) * sizeof(jvirt_barray_ptr);
    j_common_ptr const target = reinterpret_cast<j_common_ptr>(&target_);
    blocks_ = static_cast<jvirt_barray_ptr*>(target_.mem->alloc_small(target, JPOOL_IMAGE, room));
    for (int i = 0; i < target_.num_components; ++i) {
      jpeg_component_info const& part = source_.comp_info[i];
      blocks_[i] = target_.mem->request_virt_barray(
          target, JPOOL_IMAGE, TRUE,
          static_cast<JDIMENSION>(RoundedUp(BlocksAcross(part), part.h_samp_factor)),
          static_cast<JDIMENSION>(RoundedUp(BlocksDown(part), part.v_samp_factor)),
          static_cast<JDIMENSION>(part.v_samp_factor));
    }
    target_.mem->realize_virt_arrays(target);
  }

  int BlocksAcross(jpeg_component_info const& part) const {
    return BlocksOf(pieces_.width, part.h_samp_factor, source_.max_h_samp_factor);
  }
  int BlocksDown(jpeg_component_info const& part) const {
    return BlocksOf(pieces_.height, part.v_samp_factor, source_.max_v_samp_factor);
  }

  // Whether the piece is coded as the first one is.
  bool IsAlike() const {
    if (source_.num_components != target_.num_components) return false;
    for (int i = 0; i < source_.num_components; ++i) {
      jpeg_component_info const& part = source_.comp_info[i];
      jpeg_component_info const& whole = target_.comp_info[i];
      JQUANT_TBL const* const used = target_.quant_tbl_ptrs[whole.quant_tbl_no];
      if (part.h_samp_factor != whole.h_samp_factor || part.v_samp_factor != whole.v_samp_factor ||
          part.quant_table == nullptr || used == nullptr ||
          std::memcmp(part.quant_table->quantval, used->quantval, sizeof used->quantval) != 0) {
        return false;
      }
    }
    return true;
  }

  // What a piece has beyond the picture's edges is dropped.
  void CopyBlocks(jvirt_barray_ptr* blocks, int component, int column, int row) {
    jpeg_component_info const& part = source_.comp_info[component];
    int const x =
        BlocksOf(pieces_.piece_width, part.h_samp_factor, source_.max_h_samp_factor) * column;
    int const y =
        BlocksOf(pieces_.piece_height, part.v_samp_factor, source_.max_v_samp_factor) * row;
    int const across = std::min(static_cast<int>(part.width_in_blocks), BlocksAcross(part) - x);
    int const down = std::min(static_cast<int>(part.height_in_blocks), BlocksDown(part) - y);
    for (int i = 0; i < down; ++i) {
      JBLOCKARRAY const from =
          source_.mem->access_virt_barray(reinterpret_cast<j_common_ptr>(&source_),
                                          blocks[component], static_cast<JDIMENSION>(i), 1, FALSE);
      JBLOCKARRAY const to = target_.mem->access_virt_barray(
          reinterpret_cast<j_common_ptr>(&target_), blocks_[component],
          static_cast<JDIMENSION>(y + i), 1, TRUE);
      std::memcpy(to[0] + x, from[0], static_cast<size_t>(across) * sizeof(JBLOCK));
    }
  }

  void Finish() {
    jpeg_mem_dest(&target_, &bytes_, &size_);
    jpeg_write_coefficients(&target_, blocks_);
    jpeg_finish_compress(&target_);
  }

  JpegPieces const& pieces_;
  JpegErrors errors_;
  jpeg_decompress_struct source_{};
  jpeg_compress_struct target_{};
  jvirt_barray_ptr* blocks_ = nullptr;
  unsigned char* bytes_ = nullptr;
  unsigned long size_ = 0;
};

// The piece as a file of its own: the shared tables come before what it has itself.
std::vector<BYTE> WithTables(JpegPieces const& pieces, std::optional<BYTE> adobe_transform) {
  std::vector<BYTE> shared;
  if (adobe_transform) {
    shared.assign(std::begin(kAdobeMarker), std::end(kAdobeMarker));
    shared.push_back(*adobe_transform);
  }
  if (!pieces.tables.empty()) {
    shared.insert(shared.end(), pieces.tables.begin() + kMarkerBytes,
                  pieces.tables.end() - kMarkerBytes);
  }
  std::vector<BYTE> file = pieces.pieces.front();
  file.insert(file.begin() + kMarkerBytes, shared.begin(), shared.end());
  return file;
}

// Whether readers of the file take its colours for what they are.
bool ReadsAs(std::span<BYTE const> file, JpegPieces const& pieces) {
  auto const facts = ReadJpegFacts(file);
  return facts && facts->common && facts->colours == pieces.colours &&
         facts->width == pieces.width && facts->height == pieces.height;
}

std::shared_ptr<std::vector<BYTE> const> SinglePiece(JpegPieces const& pieces) {
  std::vector<BYTE> file = WithTables(pieces, std::nullopt);
  if (!ReadsAs(file, pieces) && pieces.colours == JpegColours::kRgb) {
    file = WithTables(pieces, BYTE{0});
  }
  if (!ReadsAs(file, pieces) || JpegEnd(file) == 0) return nullptr;
  return std::make_shared<std::vector<BYTE> const>(std::move(file));
}

}  // namespace

std::shared_ptr<std::vector<BYTE> const> JoinedJpeg(JpegPieces const& pieces) {
  if (!IsComplete(pieces)) return nullptr;
  if (pieces.pieces.size() == 1) {
    if (auto file = SinglePiece(pieces)) return file;
  }
  bool const too_large = std::max(pieces.width, pieces.height) > kMaxJpegSide ||
                         int64_t{pieces.width} * pieces.height > kMaxJoinedPixels;
  return too_large ? nullptr : Joiner(pieces).Join();
}

}  // namespace sorrelin::tool
