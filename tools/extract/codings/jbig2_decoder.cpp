// JBIG2 through jbig2dec, which takes the globals first, then the page.
#include "tools/extract/codings/jbig2_decoder.h"

#include <cstddef>
#include <cstdint>
// The header uses both without including them.
#include <jbig2.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <vector>

namespace sorrelin::tool {
namespace {

void NoteFailure(void* failed, char const*, Jbig2Severity severity, uint32_t) {
  if (severity >= JBIG2_SEVERITY_WARNING) *static_cast<bool*>(failed) = true;
}

// A document may state any size; the blocks of true pictures and their symbols are smaller.
constexpr size_t kMostBytes = size_t{512} << 20;

class BoundedAllocator {
 public:
  Jbig2Allocator* get() { return &functions_; }

 private:
  static void* Allocate(Jbig2Allocator*, size_t size) { return Reallocate(nullptr, nullptr, size); }
  static void Free(Jbig2Allocator*, void* block) { std::free(block); }
  static void* Reallocate(Jbig2Allocator*, void* block, size_t size) {
    return size > kMostBytes ? nullptr : std::realloc(block, size);
  }

  Jbig2Allocator functions_ = {Allocate, Free, Reallocate};
};

struct ContextDeleter {
  void operator()(Jbig2Ctx* context) const { jbig2_ctx_free(context); }
};
struct GlobalsDeleter {
  void operator()(Jbig2GlobalCtx* globals) const { jbig2_global_ctx_free(globals); }
};
using Context = std::unique_ptr<Jbig2Ctx, ContextDeleter>;
using Globals = std::unique_ptr<Jbig2GlobalCtx, GlobalsDeleter>;

Globals ReadGlobals(std::span<BYTE const> data, BoundedAllocator& memory, bool& failed) {
  if (data.empty()) return nullptr;
  Context context(
      jbig2_ctx_new(memory.get(), JBIG2_OPTIONS_EMBEDDED, nullptr, NoteFailure, &failed));
  if (context == nullptr) return nullptr;
  if (jbig2_data_in(context.get(), data.data(), data.size()) != 0) failed = true;
  return Globals(jbig2_make_global_ctx(context.release()));
}

void SendRows(PictureShape const& shape, Jbig2Image const& image, SampleSink& sink) {
  std::vector<BYTE> row(shape.RowBytes());
  for (DWORD y = 0; y < shape.height; ++y) {
    BYTE const* const bytes = image.data + size_t{y} * image.stride;
    std::transform(bytes, bytes + row.size(), row.begin(),
                   [](BYTE byte) { return static_cast<BYTE>(~byte); });
    if (!sink.Row(row)) return;
  }
}

}  // namespace

bool DecodeJbig2(PictureShape const& shape, std::span<BYTE const> globals,
                 std::span<BYTE const> data, SampleSink& sink, std::string& problem) {
  problem = "its JBIG2 data are damaged";
  bool failed = false;
  BoundedAllocator memory;
  Globals const shared = ReadGlobals(globals, memory, failed);
  Context const context(
      jbig2_ctx_new(memory.get(), JBIG2_OPTIONS_EMBEDDED, shared.get(), NoteFailure, &failed));
  if (context == nullptr || failed) return false;
  if (jbig2_data_in(context.get(), data.data(), data.size()) != 0 || failed) return false;
  jbig2_complete_page(context.get());
  Jbig2Image* const image = jbig2_page_out(context.get());
  if (image == nullptr || failed) return false;
  bool const fits = image->data != nullptr && image->width >= shape.width &&
                    image->height >= shape.height && image->stride >= shape.RowBytes();
  problem = "its JBIG2 data do not fit the picture";
  if (fits) SendRows(shape, *image, sink);
  jbig2_release_page(context.get(), image);
  return fits;
}

}  // namespace sorrelin::tool
