// The coders: from a view of a bitmap to the bytes of an image stream, rows from the top without
// padding. Each gives a new, unlocked block, which may be larger than the `size` bytes that count;
// after a failure the block is -1, unless the coder says otherwise. A view that is not locked fails
// without a code. May include: channel/, platform/.
#ifndef SORRELIN_IMAGE_ENCODERS_H_
#define SORRELIN_IMAGE_ENCODERS_H_

#include <sorrelin/image/dib_view.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/status.h>

namespace sorrelin {

// How a bitmap becomes coded bytes.
struct Coding {
  WCHAR const* codec;  // file name of the sibling, for Group 4 and JPEG
  DWORD compression;   // PDF_COMPRESSION_*
  int quality;         // the zlib level, or the JPEG quality
};

// What a coder returns with a failure.
inline Result<OwnedBlock> Refused(Status status) {
  return {OwnedBlock(INVALID_HANDLE_VALUE), status};
}
inline Result<OwnedBlock> Refused(DWORD code) { return Refused(Status::Failed(code)); }

// The coder that `coding` names. Error 15 for a value without one.
Result<OwnedBlock> EncodeImage(DibView& dib, Coding const& coding, DWORD& size);

// 24 bits as red, green, blue. Error 10 for other depths than 1, 8 and 24, and where memory is
// short. Kept: the bitmap stays locked after code 10.
Result<OwnedBlock> EncodeRaw(DibView& dib, DWORD& size);
// The same, coded with Flate; `level` is zlib's. Null without a failure where memory for the coded
// bytes is short.
Result<OwnedBlock> EncodeFlate(DibView& dib, int level, DWORD& size);
// 8 bits only, else error 5. Error 10.
Result<OwnedBlock> EncodeRunLength(DibView const& dib, DWORD& size);
// Codes one row of `bytes` bytes; `out` has room for twice as many, at least 2. Its size.
DWORD EncodeRunLengthRow(BYTE const* row, DWORD bytes, BYTE* out);

// Group 4 by the sibling, in memory or, where it has no memory files, through a temporary file.
// Errors 5, 10, 17 to 20. Kept: `size` is set as soon as it is known, also where a later step
// fails; so it is for JPEG.
Result<OwnedBlock> EncodeCcitt(DibView const& dib, WCHAR const* library, DWORD& size);
Result<OwnedBlock> EncodeCcittInFile(DibView const& dib, WCHAR const* library, DWORD& size);
// JPEG by the sibling, likewise. Errors 5 for 1 bit, 10, 17, 18, 20, 21 (19 in a file).
Result<OwnedBlock> EncodeJpeg(DibView const& dib, WCHAR const* library, int quality, DWORD& size);
Result<OwnedBlock> EncodeJpegInFile(DibView const& dib, WCHAR const* library, int quality,
                                    DWORD& size);

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_ENCODERS_H_
