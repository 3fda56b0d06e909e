// The compression vocabulary: each value is a small identifier or a flag bit.
#include <sorrelin/frame/session.h>

namespace {

int IsEither(DWORD value, DWORD identifier, DWORD flag) {
  return value == identifier || (value & flag) != 0 ? 1 : 0;
}

}  // namespace

int CCreatePDF::IsCompession_NOT_SPECIFIED(DWORD nCompression) {
  return (nCompression & PDF_COMPRESSION_FLAG_NOT_SPECIFIED) != 0 ? 1 : 0;
}

int CCreatePDF::IsCompession_NO_COMPRESSION(DWORD nCompression) {
  return IsEither(nCompression, PDF_COMPRESSION_NONE, PDF_COMPRESSION_FLAG_NONE);
}

int CCreatePDF::IsCompession_ASCII_HEX_DECODE(DWORD nCompression) {
  return IsEither(nCompression, PDF_COMPRESSION_ASCII_HEX, PDF_COMPRESSION_FLAG_ASCII_HEX);
}

int CCreatePDF::IsCompession_ASCII_85_DECODE(DWORD nCompression) {
  return IsEither(nCompression, PDF_COMPRESSION_ASCII_85, PDF_COMPRESSION_FLAG_ASCII_85);
}

int CCreatePDF::IsCompession_LZW_DECODE(DWORD nCompression) {
  return IsEither(nCompression, PDF_COMPRESSION_LZW, PDF_COMPRESSION_FLAG_LZW);
}

int CCreatePDF::IsCompession_FLAT_DECODE(DWORD nCompression) {
  return IsEither(nCompression, PDF_COMPRESSION_FLATE, PDF_COMPRESSION_FLAG_FLATE);
}

int CCreatePDF::IsCompession_RUNLENGTH_DECODE(DWORD nCompression) {
  return IsEither(nCompression, PDF_COMPRESSION_RUN_LENGTH, PDF_COMPRESSION_FLAG_RUN_LENGTH);
}

int CCreatePDF::IsCompession_CCITT_FAX_DECODE(DWORD nCompression) {
  return IsEither(nCompression, PDF_COMPRESSION_CCITT, PDF_COMPRESSION_FLAG_CCITT);
}

int CCreatePDF::IsCompession_DCT_JPEG_DECODE(DWORD nCompression) {
  return IsEither(nCompression, PDF_COMPRESSION_JPEG, PDF_COMPRESSION_FLAG_JPEG);
}
