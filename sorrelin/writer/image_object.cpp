// The image XObject: its dictionary, its data, its length and its palette.
#include <sorrelin/platform/codes.h>
#include <sorrelin/writer/image_object.h>
#include <sorrelin/writer/object_writer.h>

namespace sorrelin {

namespace {

constexpr int32_t kCcittFilterType = 6;
// The image's length object comes first.
constexpr DWORD kPaletteAfterImage = 2;

char const* Boolean(int32_t value) { return value != 0 ? "true" : "false"; }

void WriteColourSpace(ObjectWriter& out, _IMAGE_PARAMETERS const& params, DWORD palette) {
  switch (params.BitsPerPixel) {
    case 1:
      out.Lines({params.DecodeNormal != 0 ? "/Decode [0 1]" : "/Decode [1 0]",
                 "/ColorSpace /DeviceGray"});
      break;
    case 8:
      // Kept: the high value is 255 whatever the palette's size.
      out.Format("/ColorSpace [/Indexed /DeviceRGB 255 %d 0 R ]", static_cast<int>(palette));
      break;
    case 24:
      out.Line("/ColorSpace /DeviceRGB");
      break;
    default:
      break;
  }
}

// Kept: /Columns is written twice, from the record and from the image.
void WriteCcittFilter(ObjectWriter& out, _IMAGE_PARAMETERS const& params,
                      _CCITT_FILTER_PARAMS const& ccitt) {
  if (ccitt.FilterType != kCcittFilterType) out.Fail(Status::Failed(PDF_ERROR_COMPRESSION));
  out.Lines({"/Filter /CCITTFaxDecode", "/DecodeParms", "<<"});
  out.Format("/K %d", static_cast<int>(ccitt.K));
  out.Format("/BlackIs1 %s", Boolean(ccitt.BlackIs1));
  out.Format("/Columns %d", ccitt.Columns);
  out.Format("/Rows %d", params.Height);
  out.Format("/EndOfLine %s", Boolean(ccitt.EndOfLine));
  out.Format("/EncodedByteAlign %s", Boolean(ccitt.EncodedByteAlign));
  out.Format("/Columns %d", params.Width);
  out.Format("/EndOfBlock %s", Boolean(ccitt.EndOfBlock));
  out.Format("/DamagedRowsBeforeError %d", ccitt.DamagedRowsBeforeError);
  out.Line(">>");
}

// Kept: values are compared for equality here, so a flag with other bits is refused.
void WriteFilter(ObjectWriter& out, _IMAGE_PARAMETERS const& params, _FILTER const& filter) {
  switch (filter.Compression) {
    case PDF_COMPRESSION_NONE:
    case PDF_COMPRESSION_FLAG_NONE:
      break;
    case PDF_COMPRESSION_FLATE:
    case PDF_COMPRESSION_FLAG_FLATE:
      out.Line("/Filter /FlateDecode");
      break;
    case PDF_COMPRESSION_RUN_LENGTH:
    case PDF_COMPRESSION_FLAG_RUN_LENGTH:
      out.Line("/Filter /RunLengthDecode");
      break;
    case PDF_COMPRESSION_JPEG:
    case PDF_COMPRESSION_FLAG_JPEG:
      out.Line("/Filter /DCTDecode");
      break;
    case PDF_COMPRESSION_CCITT:
    case PDF_COMPRESSION_FLAG_CCITT:
      WriteCcittFilter(out, params, filter.CcittParams);
      break;
    default:
      out.Fail(Status::Failed(PDF_ERROR_COMPRESSION));
  }
}

void WriteDictionary(ObjectWriter& out, ImageObject const& image, DWORD palette) {
  _IMAGE_PARAMETERS const& params = image.params;
  bool const bilevel = params.BitsPerPixel == 1;
  out.Lines({"/Type /XObject", "/Subtype /Image"});
  out.Format("/Width %d", params.Width);
  out.Format("/Height %d", params.Height);
  out.Format("/BitsPerComponent %d", bilevel ? 1 : 8);
  WriteColourSpace(out, params, palette);
  out.Format("/Length %d 0 R ", static_cast<int>(out.output().NextObject()));
  WriteFilter(out, params, image.filter);
  if (bilevel) out.Format("/ImageMask %s", Boolean(params.ImageMask));
}

void WriteData(ObjectWriter& out, ImageObject const& image) {
  out.BeginStreamOfDictionary();
  out.Bytes(image.data, image.size);
  out.Line(">");
  if (out.ok()) out.output().MarkStreamEnd();
  out.Line("endstream");
  if (!out.ok()) return;
  // Kept: the length object is written whatever becomes of this line.
  out.End(Body::kPlain);
  out.GoOn();
}

}  // namespace

Status FillCcittParams(_CCITT_FILTER_PARAMS& record, _CCITT_FILTER_PARAMS const& values) {
  if (values.Columns < 0 || values.Rows < 0 || values.DamagedRowsBeforeError < 0) {
    return Status::Failed(PDF_ERROR_NEGATIVE_VALUE);
  }
  record = values;
  record.FilterType = kCcittFilterType;
  return Status::Ok();
}

Result<DWORD> WriteImage(ObjectWriter& out, ImageObject const& image) {
  if (image.data == nullptr) out.Fail(Status::Failed());
  DWORD const object = out.Start(Body::kDictionary, LineEnd::kWritten);
  WriteDictionary(out, image, object + kPaletteAfterImage);
  WriteData(out, image);
  out.WriteStreamLength();
  if (out.ok() && image.palette) {
    // Kept: what the image's end noted is forgotten where a palette follows.
    out.ForgetNote();
    out.WriteDataStream(*image.palette, 0);
  }
  return out.Outcome(object);
}

}  // namespace sorrelin
