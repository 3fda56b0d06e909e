// Bitmap rows to a JPEG file in a global block.
#ifndef SIBLINGS_RENNICK_JPEG_ENCODER_H_
#define SIBLINGS_RENNICK_JPEG_ENCODER_H_

#include <siblings/rennick/density.h>
#include <siblings/rennick/dib_rows.h>
#include <sorrelin/platform/types.h>

namespace sorrelin::rennick {

struct JpegSettings {
  int quality;  // 1 to 100
  Density density;
};

struct EncodedJpeg {
  HGLOBAL block;  // the caller's, exactly the file; null on failure
  int status;     // RENNICK_OK, RENNICK_NO_MEMORY or RENNICK_CODER_FAILED
};

EncodedJpeg EncodeJpeg(DibRows& rows, JpegSettings const& settings);

}  // namespace sorrelin::rennick

#endif  // SIBLINGS_RENNICK_JPEG_ENCODER_H_
