/* A JPEG coder of one's own for the library: colour bitmaps become JPEG files in RGB, without the
 * loss that the turn to YCbCr brings. Callers name it "PlainJpeg.dll".
 *
 * A sibling exports the entry points of its contract by their names; of the JPEG coder's only
 * SaveDIBAsJPEGToMemoryEx is needed to write. */
#include <setjmp.h>
#include <sorrelin/image/codecs/sibling.h>
#include <sorrelin/platform/memory.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <jpeglib.h>

#if defined(_WIN32)
#define EXPORT __declspec(dllexport)
#else
#define EXPORT __attribute__((visibility("default")))
#endif

typedef struct {
  struct jpeg_error_mgr base;
  jmp_buf leave;
} Failure;

/* The JPEG library's own way out ends the process, which a sibling must never do. */
static void Leave(j_common_ptr coder) { longjmp(((Failure*)coder->err)->leave, 1); }
static void Discard(j_common_ptr coder) { (void)coder; }

static int QualityOf(void const* record) {
  BYTE const* const at = (BYTE const*)record + JPEG_RECORD_QUALITY;
  int const quality = (int16_t)(at[0] | at[1] << 8);
  return quality < 1 ? 90 : quality > 100 ? 100 : quality;
}

/* Codes the rows, the last one in the block being the top one, into a buffer from malloc. */
static int Encode(BYTE const* dib, BITMAPINFOHEADER const* header, int quality,
                  unsigned char** file, unsigned long* file_bytes) {
  struct jpeg_compress_struct coder;
  Failure failure;
  coder.err = jpeg_std_error(&failure.base);
  failure.base.error_exit = Leave;
  failure.base.output_message = Discard;
  if (setjmp(failure.leave) != 0) {
    jpeg_destroy_compress(&coder);
    *file = NULL; /* the coder may have given this buffer up for a larger one */
    return 0;
  }
  jpeg_create_compress(&coder);
  jpeg_mem_dest(&coder, file, file_bytes);
  coder.image_width = (JDIMENSION)header->biWidth;
  coder.image_height = (JDIMENSION)header->biHeight;
  coder.input_components = 3;
  coder.in_color_space = JCS_EXT_BGR; /* the order of a bitmap's bytes */
  jpeg_set_defaults(&coder);
  jpeg_set_colorspace(&coder, JCS_RGB);
  jpeg_set_quality(&coder, quality, TRUE);
  jpeg_start_compress(&coder, TRUE);
  size_t const stride = ((size_t)header->biWidth * 3 + 3) / 4 * 4;
  while (coder.next_scanline < coder.image_height) {
    size_t const row = coder.image_height - 1 - coder.next_scanline;
    JSAMPROW pixels = (JSAMPROW)(dib + header->biSize + stride * row);
    jpeg_write_scanlines(&coder, &pixels, 1);
  }
  jpeg_finish_compress(&coder);
  jpeg_destroy_compress(&coder);
  return 1;
}

/* Whether the block holds a whole bitmap of 24 bits. The library checks neither for the coder, and
 * the record's width and height are cut to 16 bits: the header has them. */
static int IsUsable(BITMAPINFOHEADER const* header, SIZE_T block_bytes) {
  if (header->biSize != sizeof *header || header->biBitCount != 24) return 0;
  if (header->biWidth < 1 || header->biWidth > 65500) return 0;
  if (header->biHeight < 1 || header->biHeight > 65500) return 0;
  uint64_t const stride = ((uint64_t)header->biWidth * 3 + 3) / 4 * 4;
  return sizeof *header + stride * (uint64_t)header->biHeight <= block_bytes;
}

/* The file in a new block of exactly its size, which the library frees. */
static HGLOBAL BlockOf(unsigned char const* file, unsigned long file_bytes) {
  HGLOBAL const block = GlobalAlloc(GMEM_MOVEABLE, file_bytes);
  void* const bytes = GlobalLock(block);
  if (bytes == NULL) return NULL;
  memcpy(bytes, file, file_bytes);
  GlobalUnlock(block);
  return block;
}

EXPORT HGLOBAL SaveDIBAsJPEGToMemoryEx(HDIB hDib, void const* pRecord, int* pStatus) {
  HGLOBAL result = NULL;
  BYTE const* const dib = GlobalLock(hDib);
  SIZE_T const block_bytes = GlobalSize(hDib);
  BITMAPINFOHEADER header;
  if (dib != NULL && block_bytes >= sizeof header) {
    memcpy(&header, dib, sizeof header);
    unsigned char* file = NULL;
    unsigned long file_bytes = 0;
    if (IsUsable(&header, block_bytes) &&
        Encode(dib, &header, QualityOf(pRecord), &file, &file_bytes)) {
      result = BlockOf(file, file_bytes);
    }
    free(file);
  }
  if (dib != NULL) GlobalUnlock(hDib);
  *pStatus = result != NULL ? 0 : 1; /* not 0: the page fails with PDF_ERROR_ENCODING */
  return result;
}
