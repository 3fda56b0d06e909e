// The compression vocabulary: each value is a small identifier or a flag bit.
#include <sorrelin/frame/session_state.h>

namespace {

int IsEither(DWORD value, DWORD identifier, DWORD flag) {
  return value == identifier || (value & flag) != 0 ? 1 : 0;
}

}  // namespace

int sorrelin::SessionState::IsCompession_NOT_SPECIFIED(DWORD nCompression) {
  return (nCompression & PDF_COMPRESSION_FLAG_NOT_SPECIFIED) != 0 ? 1 : 0;
}

int sorrelin::SessionState::IsCompession_NO_COMPRESSION(DWORD nCompression) {
  return IsEither(nCompression, PDF_COMPRESSION_NONE, PDF_COMPRESSION_FLAG_NONE);
}

int sorrelin::SessionState::IsCompession_ASCII_HEX_DECODE(DWORD nCompression) {
  return IsEither(nCompression, PDF_COMPRESSION_ASCII_HEX, PDF_COMPRESSION_FLAG_ASCII_HEX);
}

int sorrelin::SessionState::IsCompession_ASCII_85_DECODE(DWORD nCompression) {
  return IsEither(nCompression, PDF_COMPRESSION_ASCII_85, PDF_COMPRESSION_FLAG_ASCII_85);
}

int sorrelin::SessionState::IsCompession_LZW_DECODE(DWORD nCompression) {
  return IsEither(nCompression, PDF_COMPRESSION_LZW, PDF_COMPRESSION_FLAG_LZW);
}

int sorrelin::SessionState::IsCompession_FLAT_DECODE(DWORD nCompression) {
  return IsEither(nCompression, PDF_COMPRESSION_FLATE, PDF_COMPRESSION_FLAG_FLATE);
}

int sorrelin::SessionState::IsCompession_RUNLENGTH_DECODE(DWORD nCompression) {
  return IsEither(nCompression, PDF_COMPRESSION_RUN_LENGTH, PDF_COMPRESSION_FLAG_RUN_LENGTH);
}

int sorrelin::SessionState::IsCompession_CCITT_FAX_DECODE(DWORD nCompression) {
  return IsEither(nCompression, PDF_COMPRESSION_CCITT, PDF_COMPRESSION_FLAG_CCITT);
}

int sorrelin::SessionState::IsCompession_DCT_JPEG_DECODE(DWORD nCompression) {
  return IsEither(nCompression, PDF_COMPRESSION_JPEG, PDF_COMPRESSION_FLAG_JPEG);
}
