// The decoders: from the bytes of an image stream to a new, unlocked bitmap, whose resolution is 0.
// A kind is 1 (1 bit), 2 (8 bits with a palette) or 4 (24 bits); a negative height keeps the row
// order. Without a bitmap the block is null. May include: channel/, platform/.
#ifndef SORRELIN_IMAGE_DECODERS_H_
#define SORRELIN_IMAGE_DECODERS_H_

#include <sorrelin/platform/status.h>
#include <sorrelin/platform/types.h>

#include <span>

namespace sorrelin {

class OwnedBlock;

// What the document says of the bits of a 1-bit image.
struct Polarity {
  bool black_is_1 = false;
  bool decode_normal = true;
};

// The picture that the bytes are of.
struct ImageShape {
  DWORD width;   // pixels
  DWORD height;  // rows
  DWORD kind;
  HGLOBAL palette;  // the block of a colour table, for kind 2
};

// Whether a stream with these filters (PDF_COMPRESSION_FLAG_*) has a decoder; one with ASCII85 has
// none.
bool HasDecoder(DWORD filters);
// The decoder that the filters name. A flipped picture keeps the order of its rows where the
// decoder can.
Result<OwnedBlock> DecodeImage(DWORD filters, HGLOBAL data, ImageShape const& shape, bool flipped,
                               Polarity polarity);

// Rows from the top, without padding. Error 10. The bytes of a 24-bit block are exchanged in place.
// Kept: -1 where memory is short, where the other decoders give 0; callers of this one test for it.
Result<OwnedBlock> DecodeRaw(HGLOBAL data, ImageShape const& shape, Polarity polarity);
// The same, coded with Flate. Errors 10, 27, 28.
Result<OwnedBlock> DecodeFlate(HGLOBAL data, ImageShape const& shape, Polarity polarity);
// Run-length data of 8 bits. Errors 10, 28.
Result<OwnedBlock> DecodeRunLength(HGLOBAL data, ImageShape const& shape);
// Decodes run-length data into the rows of a bitmap, given as its whole block.
void DecodeRunLengthRows(std::span<BYTE const> data, std::span<BYTE> bitmap);

// Group 4 by the sibling, from memory or, where it has no memory files, from a temporary file.
// Errors 10, 17 to 19, 30.
Result<OwnedBlock> DecodeCcitt(HGLOBAL data, DWORD width, DWORD height, Polarity polarity);
Result<OwnedBlock> DecodeCcittInFile(HGLOBAL data, DWORD width, DWORD height, Polarity polarity);
// JPEG by the sibling; depth and size are the file's. Errors 17, 18, 21, 27.
Result<OwnedBlock> DecodeJpeg(HGLOBAL data);
Result<OwnedBlock> DecodeJpegInFile(HGLOBAL data);

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_DECODERS_H_
