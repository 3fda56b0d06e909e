// The compression vocabulary: each value is a small identifier or a flag bit.
#ifndef SORRELIN_IMAGE_COMPRESSION_H_
#define SORRELIN_IMAGE_COMPRESSION_H_

#include <sorrelin/platform/codes.h>
#include <sorrelin/platform/types.h>

namespace sorrelin {

// Kept: a value is tested for a flag's bit here, and compared for equality where coders are chosen.
constexpr bool IsEither(DWORD value, DWORD identifier, DWORD flag) {
  return value == identifier || (value & flag) != 0;
}

constexpr bool IsCcitt(DWORD compression) {
  return IsEither(compression, PDF_COMPRESSION_CCITT, PDF_COMPRESSION_FLAG_CCITT);
}

constexpr bool IsJpeg(DWORD compression) {
  return IsEither(compression, PDF_COMPRESSION_JPEG, PDF_COMPRESSION_FLAG_JPEG);
}

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_COMPRESSION_H_
