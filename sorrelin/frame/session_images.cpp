// Doors of the session: image objects and compression values.
#include <sorrelin/frame/door.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/image/compression.h>
#include <sorrelin/writer/image_object.h>

using sorrelin::Door;
using sorrelin::ObjectWriter;
using sorrelin::SessionState;
using sorrelin::Status;

namespace {

int Either(DWORD value, DWORD identifier, DWORD flag) {
  return sorrelin::IsEither(value, identifier, flag) ? 1 : 0;
}

}  // namespace

DWORD CCreatePDF::CreateImageXObject(_IMAGE_PARAMETERS Params, BYTE const* pData, DWORD nSize,
                                     _FILTER Filter) {
  return Door(m_pState, [&](SessionState& state) {
    ObjectWriter out = state.Document().Writer();
    return state.Take(WriteImage(out, {Params, Filter, pData, nSize}));
  });
}

int CCreatePDF::SetCCITTFilterParams(_CCITT_FILTER_PARAMS* pParams, int nColumns, int nRows,
                                     _CCITT_ENCODE_TYPE K, int bBlackIs1, int bEndOfLine,
                                     int bEncodedByteAlign, int bEndOfBlock,
                                     int nDamagedRowsBeforeError) {
  return Door(m_pState, [&](SessionState& state) {
    state.m_nLastError = PDF_ERROR_NONE;
    if (pParams == nullptr) return state.Report(Status::Failed(PDF_ERROR_NULL_POINTER)) ? 1 : 0;
    _CCITT_FILTER_PARAMS const values{
        0,     K,           bEndOfLine, bEncodedByteAlign,      nColumns,
        nRows, bEndOfBlock, bBlackIs1,  nDamagedRowsBeforeError};
    return state.Report(sorrelin::FillCcittParams(*pParams, values)) ? 1 : 0;
  });
}

int CCreatePDF::IsCompession_NOT_SPECIFIED(DWORD nCompression) {
  return (nCompression & PDF_COMPRESSION_FLAG_NOT_SPECIFIED) != 0 ? 1 : 0;
}

int CCreatePDF::IsCompession_NO_COMPRESSION(DWORD nCompression) {
  return Either(nCompression, PDF_COMPRESSION_NONE, PDF_COMPRESSION_FLAG_NONE);
}

int CCreatePDF::IsCompession_ASCII_HEX_DECODE(DWORD nCompression) {
  return Either(nCompression, PDF_COMPRESSION_ASCII_HEX, PDF_COMPRESSION_FLAG_ASCII_HEX);
}

int CCreatePDF::IsCompession_ASCII_85_DECODE(DWORD nCompression) {
  return Either(nCompression, PDF_COMPRESSION_ASCII_85, PDF_COMPRESSION_FLAG_ASCII_85);
}

int CCreatePDF::IsCompession_LZW_DECODE(DWORD nCompression) {
  return Either(nCompression, PDF_COMPRESSION_LZW, PDF_COMPRESSION_FLAG_LZW);
}

int CCreatePDF::IsCompession_FLAT_DECODE(DWORD nCompression) {
  return Either(nCompression, PDF_COMPRESSION_FLATE, PDF_COMPRESSION_FLAG_FLATE);
}

int CCreatePDF::IsCompession_RUNLENGTH_DECODE(DWORD nCompression) {
  return Either(nCompression, PDF_COMPRESSION_RUN_LENGTH, PDF_COMPRESSION_FLAG_RUN_LENGTH);
}

int CCreatePDF::IsCompession_CCITT_FAX_DECODE(DWORD nCompression) {
  return Either(nCompression, PDF_COMPRESSION_CCITT, PDF_COMPRESSION_FLAG_CCITT);
}

int CCreatePDF::IsCompession_DCT_JPEG_DECODE(DWORD nCompression) {
  return Either(nCompression, PDF_COMPRESSION_JPEG, PDF_COMPRESSION_FLAG_JPEG);
}
