// Bitmap rows to a JPEG file, by libjpeg, straight from the bitmap into the result's block.
#include <jerror.h>
#include <siblings/rennick/jpeg_encoder.h>
#include <siblings/rennick/jpeg_failure.h>
#include <siblings/rennick/rennick.h>
#include <sorrelin/platform/memory.h>

#include <algorithm>

namespace sorrelin::rennick {
namespace {

constexpr int kFullChromaFrom = 90;
constexpr size_t kFirstBlockBytes = 64 * 1024;
constexpr size_t kMaxFileBytes = UINT32_MAX;
constexpr JDIMENSION kRowsAtOnce = 16;

// A global block that doubles while libjpeg fills it.
struct BlockDestination {
  jpeg_destination_mgr manager;  // first: libjpeg hands its address back
  HGLOBAL block;
  size_t capacity;

  size_t Used() const { return capacity - manager.free_in_buffer; }
};

BlockDestination& DestinationOf(j_compress_ptr coder) {
  return *reinterpret_cast<BlockDestination*>(coder->dest);
}

// Makes the block `capacity` bytes long and points libjpeg after the `used` bytes that are kept.
bool Resize(BlockDestination& out, size_t used, size_t capacity) {
  if (GlobalReAlloc(out.block, capacity, GMEM_MOVEABLE) == nullptr) return false;
  out.capacity = capacity;
  out.manager.next_output_byte = static_cast<JOCTET*>(GlobalLock(out.block)) + used;
  out.manager.free_in_buffer = capacity - used;
  return true;
}

void StartOutput(j_compress_ptr coder) {
  BlockDestination& out = DestinationOf(coder);
  out.manager.next_output_byte = static_cast<JOCTET*>(GlobalLock(out.block));
  out.manager.free_in_buffer = out.capacity;
}

// libjpeg calls this with a full block, whatever the counts in the manager say.
boolean GrowOutput(j_compress_ptr coder) {
  BlockDestination& out = DestinationOf(coder);
  size_t const used = out.capacity;
  GlobalUnlock(out.block);
  if (used >= kMaxFileBytes || !Resize(out, used, std::min(used, kMaxFileBytes / 2) * 2)) {
    ERREXIT1(coder, JERR_OUT_OF_MEMORY, 0);
  }
  return TRUE;
}

void EndOutput(j_compress_ptr coder) { GlobalUnlock(DestinationOf(coder).block); }

struct EncodeJob {
  jpeg_compress_struct coder;
  BlockDestination out;
  DibRows* rows;
  JpegSettings const* settings;
};

void Describe(jpeg_compress_struct& coder, DibRows const& rows, JpegSettings const& settings) {
  bool const grey = rows.bytes_per_pixel() == 1;
  coder.image_width = rows.width();
  coder.image_height = rows.height();
  coder.input_components = grey ? 1 : 3;
  coder.in_color_space = grey ? JCS_GRAYSCALE : JCS_EXT_BGR;
  jpeg_set_defaults(&coder);
  jpeg_set_quality(&coder, settings.quality, TRUE);
  if (!grey && settings.quality >= kFullChromaFrom) {
    coder.comp_info[0].h_samp_factor = 1;
    coder.comp_info[0].v_samp_factor = 1;
  }
  coder.density_unit = settings.density.unit;
  coder.X_density = settings.density.x;
  coder.Y_density = settings.density.y;
}

void Encode(void* argument) {
  EncodeJob& job = *static_cast<EncodeJob*>(argument);
  jpeg_compress_struct& coder = job.coder;
  jpeg_create_compress(&coder);
  coder.dest = &job.out.manager;
  Describe(coder, *job.rows, *job.settings);
  jpeg_start_compress(&coder, TRUE);
  while (coder.next_scanline < coder.image_height) {
    JSAMPROW batch[kRowsAtOnce];
    JDIMENSION const count = std::min(kRowsAtOnce, coder.image_height - coder.next_scanline);
    for (JDIMENSION i = 0; i < count; ++i) {
      // libjpeg's type has no const, but input rows are only read.
      batch[i] = const_cast<JSAMPROW>(job.rows->Row(coder.next_scanline + i));
    }
    jpeg_write_scanlines(&coder, batch, count);
  }
  jpeg_finish_compress(&coder);
}

}  // namespace

EncodedJpeg EncodeJpeg(DibRows& rows, JpegSettings const& settings) {
  HGLOBAL const block = GlobalAlloc(GMEM_MOVEABLE, kFirstBlockBytes);
  if (block == nullptr) return {nullptr, RENNICK_NO_MEMORY};
  JpegFailure failure;
  EncodeJob job{};
  job.coder.err = failure.manager();
  job.out.manager = {nullptr, 0, StartOutput, GrowOutput, EndOutput};
  job.out.block = block;
  job.out.capacity = kFirstBlockBytes;
  job.rows = &rows;
  job.settings = &settings;
  bool const done = failure.Attempt(Encode, &job);
  jpeg_destroy_compress(&job.coder);
  bool const fits = done && GlobalReAlloc(block, job.out.Used(), GMEM_MOVEABLE) != nullptr;
  if (fits) return {block, RENNICK_OK};
  GlobalFree(block);
  return {nullptr, done || failure.OutOfMemory() ? RENNICK_NO_MEMORY : RENNICK_CODER_FAILED};
}

}  // namespace sorrelin::rennick
