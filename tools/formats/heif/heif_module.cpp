// HEIC and AVIF through libheif.
#include "tools/formats/heif/heif_module.h"

#include <libheif/heif.h>
#include <sorrelin/platform/export.h>

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

namespace {

struct ContextFree {
  void operator()(heif_context* context) const { heif_context_free(context); }
};
struct HandleRelease {
  void operator()(heif_image_handle* handle) const { heif_image_handle_release(handle); }
};
using Context = std::unique_ptr<heif_context, ContextFree>;
using Handle = std::unique_ptr<heif_image_handle, HandleRelease>;

bool Failed(heif_error const& error) { return error.code != heif_error_Ok; }

// The file's pictures, the main one first.
std::vector<heif_item_id> PicturesOf(heif_context* context) {
  std::vector<heif_item_id> ids(
      static_cast<size_t>(heif_context_get_number_of_top_level_images(context)));
  heif_context_get_list_of_top_level_image_IDs(context, ids.data(), static_cast<int>(ids.size()));
  heif_item_id main = 0;
  if (!Failed(heif_context_get_primary_image_ID(context, &main))) {
    auto const found = std::find(ids.begin(), ids.end(), main);
    if (found != ids.end()) std::rotate(ids.begin(), found, found + 1);
  }
  return ids;
}

heif_error Read(heif_context* context, uint8_t const* file, size_t bytes) {
  return heif_context_read_from_memory_without_copy(context, file, bytes, nullptr);
}

// False if memory is short. Colours described by numbers alone (nclx) have no profile.
bool CopyProfile(heif_image_handle* handle, SorrelinHeifPicture& picture) {
  size_t const bytes = heif_image_handle_get_raw_color_profile_size(handle);
  if (bytes == 0) return true;
  picture.profile = static_cast<uint8_t*>(std::malloc(bytes));
  if (picture.profile == nullptr) return false;
  heif_error const error = heif_image_handle_get_raw_color_profile(handle, picture.profile);
  picture.profile_bytes = Failed(error) ? 0 : bytes;
  return true;
}

heif_chroma ChromaOf(int bits) {
  if (bits <= 8) return heif_chroma_interleaved_RGBA;
  return std::endian::native == std::endian::little ? heif_chroma_interleaved_RRGGBBAA_LE
                                                    : heif_chroma_interleaved_RRGGBBAA_BE;
}

heif_error Decode(heif_context* context, heif_item_id id, SorrelinHeifPicture& picture) {
  heif_image_handle* opened = nullptr;
  heif_error error = heif_context_get_image_handle(context, id, &opened);
  Handle const handle(opened);
  if (Failed(error)) return error;
  heif_image* image = nullptr;
  int const bits = heif_image_handle_get_luma_bits_per_pixel(handle.get());
  error = heif_decode_image(handle.get(), &image, heif_colorspace_RGB, ChromaOf(bits), nullptr);
  if (Failed(error)) return error;
  int stride = 0;
  picture.rows = heif_image_get_plane_readonly(image, heif_channel_interleaved, &stride);
  picture.row_bytes = static_cast<size_t>(stride);
  picture.width = heif_image_get_width(image, heif_channel_interleaved);
  picture.height = heif_image_get_height(image, heif_channel_interleaved);
  picture.has_alpha = heif_image_handle_has_alpha_channel(handle.get());
  picture.premultiplied = heif_image_handle_is_premultiplied_alpha(handle.get());
  picture.bits =
      bits <= 8 ? 8 : heif_image_get_bits_per_pixel_range(image, heif_channel_interleaved);
  picture.owner = image;
  if (CopyProfile(handle.get(), picture)) return error;
  heif_image_release(image);
  return {heif_error_Memory_allocation_error, heif_suberror_Unspecified, "memory is short"};
}

}  // namespace

extern "C" SORRELIN_EXPORT int32_t SorrelinHeifCount(uint8_t const* file, size_t bytes) {
  Context const context(heif_context_alloc());
  if (context == nullptr || Failed(Read(context.get(), file, bytes))) return 0;
  return static_cast<int32_t>(PicturesOf(context.get()).size());
}

extern "C" SORRELIN_EXPORT int32_t SorrelinHeifDecode(uint8_t const* file, size_t bytes,
                                                      int32_t index, SorrelinHeifPicture* picture,
                                                      char* problem, size_t problem_bytes) {
  Context const context(heif_context_alloc());
  if (context == nullptr) return 1;
  *picture = {};
  heif_error error = Read(context.get(), file, bytes);
  if (!Failed(error)) {
    auto const ids = PicturesOf(context.get());
    if (index < 0 || static_cast<size_t>(index) >= ids.size()) return 1;
    error = Decode(context.get(), ids[static_cast<size_t>(index)], *picture);
  }
  bool const failed = Failed(error);
  bool const warned = !failed && heif_image_get_decoding_warnings(
                                     static_cast<heif_image*>(picture->owner), 0, &error, 1) > 0;
  std::snprintf(problem, problem_bytes, "%s", failed || warned ? error.message : "");
  return failed ? 1 : 0;
}

extern "C" SORRELIN_EXPORT void SorrelinHeifFree(SorrelinHeifPicture* picture) {
  heif_image_release(static_cast<heif_image*>(picture->owner));
  std::free(picture->profile);
}
