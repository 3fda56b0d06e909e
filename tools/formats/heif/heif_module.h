/* The module libsorrelin-heif.so (sorrelin-heif.dll on Windows), which reads HEIC and AVIF for the
 * program through libheif. It is a library of its own, loaded when such a file is met, so that the
 * program runs without libheif. */
#ifndef TOOLS_FORMATS_HEIF_HEIF_MODULE_H_
#define TOOLS_FORMATS_HEIF_HEIF_MODULE_H_

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A decoded picture, upright: rows from the top of red, green, blue and opacity. They are a byte
 * each, or where the file has more than 8 bits a uint16_t, whose highest value is that of `bits`.
 */
struct SorrelinHeifPicture {
  int32_t width;         /* pixels */
  int32_t height;        /* rows */
  int32_t has_alpha;     /* not 0: opacity has a meaning */
  int32_t premultiplied; /* not 0: colours are scaled by it */
  int32_t bits;          /* of a sample in the file */
  size_t profile_bytes;  /* of the ICC profile; 0: none */
  uint8_t* profile;
  size_t row_bytes;
  uint8_t const* rows;
  void* owner; /* of the rows */
};

/* Number of pictures in a file; thumbnails and parts of others do not count. 0: none, or damaged.
 */
typedef int32_t SorrelinHeifCountFunction(uint8_t const* file, size_t bytes);

/* Decodes picture `index`, counted from 0, the main one first. 0 for success, with libheif's first
 * warning about the data in `problem`, of `problem_bytes`, or an empty text; otherwise not 0 with
 * the reason in `problem`, and no picture. */
typedef int32_t SorrelinHeifDecodeFunction(uint8_t const* file, size_t bytes, int32_t index,
                                           struct SorrelinHeifPicture* picture, char* problem,
                                           size_t problem_bytes);

/* Releases the rows and the profile. */
typedef void SorrelinHeifFreeFunction(struct SorrelinHeifPicture* picture);

#ifdef __cplusplus
}
#endif

#endif  // TOOLS_FORMATS_HEIF_HEIF_MODULE_H_
