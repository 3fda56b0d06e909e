// A JPEG file in memory to a new bitmap.
#ifndef SIBLINGS_RENNICK_JPEG_DECODER_H_
#define SIBLINGS_RENNICK_JPEG_DECODER_H_

#include <sorrelin/platform/types.h>

#include <span>

namespace sorrelin::rennick {

// A new movable block that the caller frees; null if `file` cannot be decoded to its end.
HDIB DecodeJpeg(std::span<BYTE const> file);

}  // namespace sorrelin::rennick

#endif  // SIBLINGS_RENNICK_JPEG_DECODER_H_
