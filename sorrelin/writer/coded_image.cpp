// Image dictionaries (ISO 32000-1, 8.9.5) with the parameters of their filters (7.4), and ICC
// profile streams (8.6.5.5).
#include <sorrelin/writer/coded_image.h>
#include <sorrelin/writer/object_writer.h>

#include <span>
#include <string>

namespace sorrelin {
namespace {

std::string Number(int64_t value) { return std::to_string(value); }

char const* DeviceName(int components) {
  return components == 1 ? "/DeviceGray" : components == 4 ? "/DeviceCMYK" : "/DeviceRGB";
}

std::string Hexadecimal(std::span<BYTE const> bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text = "<";
  for (BYTE const byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text + ">";
}

std::string ColourSpace(ImageForm const& form, ColourProfile const* profile) {
  std::string const plain = profile == nullptr ? DeviceName(ComponentsOf(form.colours))
                                               : "[/ICCBased " + Number(profile->object) + " 0 R]";
  if (form.palette.empty()) return plain;
  return "[/Indexed " + plain + " " + Number(static_cast<int64_t>(form.palette.size() / 3) - 1) +
         " " + Hexadecimal(form.palette) + "]";
}

// Pairs for each component; empty where samples count from black, or from no ink.
std::string Decode(ImageForm const& form) {
  if (!form.inverted && form.filter != ImageFilter::kGroup4) return {};
  std::string text = "/Decode [";
  for (int i = 0; i < form.Components(); ++i) {
    text += std::string(i == 0 ? "" : " ") + (form.inverted ? "1 0" : "0 1");
  }
  return text + "]";
}

void WriteFilter(ObjectWriter& out, EncodedPage const& page) {
  ImageForm const& form = *page.form;
  switch (form.filter) {
    case ImageFilter::kGroup4:
      out.Line("/Filter /CCITTFaxDecode");
      out.Format("/DecodeParms << /K -1 /Columns %d /Rows %d >>", page.width, page.height);
      break;
    case ImageFilter::kJpeg:
      out.Line("/Filter /DCTDecode");
      if (form.jpeg_is_ycbcr) {
        out.Format("/DecodeParms << /ColorTransform %d >>", *form.jpeg_is_ycbcr ? 1 : 0);
      }
      break;
    case ImageFilter::kJpeg2000:
      out.Line("/Filter /JPXDecode");
      break;
    case ImageFilter::kFlate:
      out.Line("/Filter /FlateDecode");
      if (form.predicted) {
        out.Format("/DecodeParms << /Predictor 15 /Colors %d /BitsPerComponent %d /Columns %d >>",
                   form.Components(), form.bits_per_component, page.width);
      }
      break;
  }
}

// The end of a dictionary, its stream, which is the bytes and no more, and the length object.
void WriteStream(ObjectWriter& out, std::span<BYTE const> bytes) {
  out.Format("/Length %u 0 R", static_cast<unsigned>(out.output().NextObject()));
  out.BeginStreamOfDictionary();
  out.Bytes(bytes.data(), static_cast<DWORD>(bytes.size()));
  out.output().MarkStreamEnd();
  out.EndLine();
  out.Line("endstream");
  out.End(Body::kPlain);
  out.WriteStreamLength();
}

void WriteProfile(ObjectWriter& out, ColourProfile& profile) {
  if (profile.object != 0) return;
  profile.object = out.Start(Body::kDictionary, LineEnd::kWritten);
  out.Format("/N %d", profile.components);
  out.Format("/Alternate %s", DeviceName(profile.components));
  out.Line("/Filter /FlateDecode");
  WriteStream(out, profile.stream);
}

void WriteColours(ObjectWriter& out, EncodedPage const& page) {
  ImageForm const& form = *page.form;
  if (form.colours == ImageColours::kInData) return;
  out.Format("/BitsPerComponent %d", form.bits_per_component);
  out.Line(("/ColorSpace " + ColourSpace(form, page.profile)).c_str());
  std::string const decode = Decode(form);
  if (!decode.empty()) out.Line(decode.c_str());
}

}  // namespace

DWORD WriteCodedImage(ObjectWriter& out, EncodedPage const& page) {
  if (page.profile != nullptr) WriteProfile(out, *page.profile);
  DWORD const image = out.Start(Body::kDictionary, LineEnd::kWritten);
  out.Lines({"/Type /XObject", "/Subtype /Image"});
  out.Format("/Width %d", page.width);
  out.Format("/Height %d", page.height);
  WriteColours(out, page);
  WriteFilter(out, page);
  WriteStream(out, {page.data, page.size});
  return out.ok() ? image : 0;
}

}  // namespace sorrelin
