// The records that describe an image to the session's methods.
#ifndef SORRELIN_PLATFORM_IMAGE_RECORDS_H_
#define SORRELIN_PLATFORM_IMAGE_RECORDS_H_

#include <sorrelin/platform/types.h>

#include <cstdint>

// The value of /K: -1 is Group 4. Any value is accepted and written as it is.
enum _CCITT_ENCODE_TYPE : int32_t {};

// The parameters of a CCITT image; each member is the value of the key of its name.
struct _CCITT_FILTER_PARAMS {
  int32_t FilterType;              // 6, or the record is refused
  _CCITT_ENCODE_TYPE K;            // -1: Group 4
  int32_t EndOfLine;               // 0 or not
  int32_t EncodedByteAlign;        // 0 or not
  int32_t Columns;                 // pixels
  int32_t Rows;                    // stored, never written: the key comes from the image's height
  int32_t EndOfBlock;              // 0 or not
  int32_t BlackIs1;                // 0 or not
  int32_t DamagedRowsBeforeError;  // rows
};

// How an image's bytes are coded.
struct _FILTER {
  DWORD Compression;                 // PDF_COMPRESSION_*
  _CCITT_FILTER_PARAMS CcittParams;  // read for CCITT coding only
};

// What an image's dictionary says of the picture.
struct _IMAGE_PARAMETERS {
  int32_t Width;         // pixels
  int32_t Height;        // rows
  int32_t BitsPerPixel;  // 1, 8 or 24, of the bitmap and not of a component
  int32_t DecodeNormal;  // 1 bit only: not 0 for /Decode [0 1], 0 for /Decode [1 0]
  int32_t ImageMask;     // 1 bit only: the value of /ImageMask
};

#endif  // SORRELIN_PLATFORM_IMAGE_RECORDS_H_
