// The image XObject (ISO 32000-1, 8.9.5) and the parameters of its filter.
#include <sorrelin/frame/session_state.h>

namespace {

constexpr int32_t kCcittFilterType = 6;

char const* Boolean(int32_t value) { return value != 0 ? "true" : "false"; }

}  // namespace

int sorrelin::SessionState::SetCCITTFilterParams(_CCITT_FILTER_PARAMS* pParams, int nColumns,
                                                 int nRows, _CCITT_ENCODE_TYPE K, int bBlackIs1,
                                                 int bEndOfLine, int bEncodedByteAlign,
                                                 int bEndOfBlock, int nDamagedRowsBeforeError) {
  PDF_SetLastError(PDF_ERROR_NONE);
  if (pParams == nullptr) return static_cast<int>(Fail(PDF_ERROR_NULL_POINTER));
  if (nColumns < 0 || nRows < 0 || nDamagedRowsBeforeError < 0) {
    return static_cast<int>(Fail(PDF_ERROR_NEGATIVE_VALUE));
  }
  *pParams = {kCcittFilterType,  K,         bEndOfLine,
              bEncodedByteAlign, nColumns,  nRows,
              bEndOfBlock,       bBlackIs1, nDamagedRowsBeforeError};
  return 1;
}

DWORD sorrelin::SessionState::CreateImageXObject(_IMAGE_PARAMETERS Params, BYTE const* pData,
                                                 DWORD nSize, _FILTER Filter) {
  if (pData == nullptr) return 0;
  DWORD const object = ObjectStart(1, 1);
  if (object == 0 || !WriteImageDictionary(Params, Filter) || !WriteLines({">>", "stream"})) {
    return 0;
  }
  MarkStreamBegining();
  if (WriteRawDataToPDFFile(pData, nSize) == 0 || WriteToPDFFile(">", 1) == 0) return 0;
  MarkStreamEnd();
  if (WriteToPDFFile("endstream", 1) == 0) return 0;
  ObjectEnd(0);
  return WriteStreamLengthObject() != 0 ? object : 0;
}

bool sorrelin::SessionState::WriteImageDictionary(_IMAGE_PARAMETERS const& params,
                                                  _FILTER const& filter) {
  bool const bilevel = params.BitsPerPixel == 1;
  return WriteLines({"/Type /XObject", "/Subtype /Image"}) &&
         WriteFormatted(1, "/Width %d", params.Width) &&
         WriteFormatted(1, "/Height %d", params.Height) &&
         WriteFormatted(1, "/BitsPerComponent %d", bilevel ? 1 : 8) && WriteColorSpace(params) &&
         WriteFormatted(1, "/Length %d 0 R ", static_cast<int>(GetNextObject())) &&
         WriteFilter(params, filter) &&
         (!bilevel || WriteFormatted(1, "/ImageMask %s", Boolean(params.ImageMask)));
}

bool sorrelin::SessionState::WriteColorSpace(_IMAGE_PARAMETERS const& params) {
  switch (params.BitsPerPixel) {
    case 1:
      return WriteLines({params.DecodeNormal != 0 ? "/Decode [0 1]" : "/Decode [1 0]",
                         "/ColorSpace /DeviceGray"});
    case 8:
      // The palette is the object behind the length object. Kept: the high value is 255 whatever
      // the palette's size.
      return WriteFormatted(1, "/ColorSpace [/Indexed /DeviceRGB 255 %d 0 R ]",
                            static_cast<int>(m_nCurrentObject + 2));
    case 24:
      return WriteToPDFFile("/ColorSpace /DeviceRGB", 1) != 0;
    default:
      return true;
  }
}

// Kept: values are compared for equality here, so a flag with other bits is refused.
bool sorrelin::SessionState::WriteFilter(_IMAGE_PARAMETERS const& params, _FILTER const& filter) {
  switch (filter.Compression) {
    case PDF_COMPRESSION_NONE:
    case PDF_COMPRESSION_FLAG_NONE:
      return true;
    case PDF_COMPRESSION_FLATE:
    case PDF_COMPRESSION_FLAG_FLATE:
      return WriteToPDFFile("/Filter /FlateDecode", 1) != 0;
    case PDF_COMPRESSION_RUN_LENGTH:
    case PDF_COMPRESSION_FLAG_RUN_LENGTH:
      return WriteToPDFFile("/Filter /RunLengthDecode", 1) != 0;
    case PDF_COMPRESSION_JPEG:
    case PDF_COMPRESSION_FLAG_JPEG:
      return WriteToPDFFile("/Filter /DCTDecode", 1) != 0;
    case PDF_COMPRESSION_CCITT:
    case PDF_COMPRESSION_FLAG_CCITT:
      return WriteCcittFilter(params, filter.CcittParams);
    default:
      return Fail(PDF_ERROR_COMPRESSION) != 0;
  }
}

// Kept: /Columns stands twice, from the record and from the image.
bool sorrelin::SessionState::WriteCcittFilter(_IMAGE_PARAMETERS const& params,
                                              _CCITT_FILTER_PARAMS const& ccitt) {
  if (ccitt.FilterType != kCcittFilterType) return Fail(PDF_ERROR_COMPRESSION) != 0;
  return WriteLines({"/Filter /CCITTFaxDecode", "/DecodeParms", "<<"}) &&
         WriteFormatted(1, "/K %d", static_cast<int>(ccitt.K)) &&
         WriteFormatted(1, "/BlackIs1 %s", Boolean(ccitt.BlackIs1)) &&
         WriteFormatted(1, "/Columns %d", ccitt.Columns) &&
         WriteFormatted(1, "/Rows %d", params.Height) &&
         WriteFormatted(1, "/EndOfLine %s", Boolean(ccitt.EndOfLine)) &&
         WriteFormatted(1, "/EncodedByteAlign %s", Boolean(ccitt.EncodedByteAlign)) &&
         WriteFormatted(1, "/Columns %d", params.Width) &&
         WriteFormatted(1, "/EndOfBlock %s", Boolean(ccitt.EndOfBlock)) &&
         WriteFormatted(1, "/DamagedRowsBeforeError %d", ccitt.DamagedRowsBeforeError) &&
         WriteToPDFFile(">>", 1) != 0;
}
