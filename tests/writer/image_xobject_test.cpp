// The image XObject's template, line by line, and the compression vocabulary.
#include <gtest/gtest.h>

#include "tests/support/document.h"
#include "tests/support/short_file.h"

namespace {

using test::MemoryDocument;

BYTE const kData[] = {'d', 'a', 't', 'a'};

_FILTER FilterOf(DWORD compression) { return {compression, {}}; }

_IMAGE_PARAMETERS Params(int bits, int decode = 1, int mask = 0) {
  return {17, 22, bits, decode, mask};
}

std::string Image(_IMAGE_PARAMETERS const& params, _FILTER const& filter) {
  MemoryDocument document;
  document.OpenBare();
  document->SetCurrentObject(11);
  document->CreateImageXObject(params, kData, sizeof kData, filter);
  return document.Text();
}

TEST(ImageXObject, ColorImageWithFlate) {
  EXPECT_EQ(Image(Params(24), FilterOf(4)),
            "12 0 obj\n<<\n/Type /XObject\n/Subtype /Image\n/Width 17\n/Height 22\n"
            "/BitsPerComponent 8\n/ColorSpace /DeviceRGB\n/Length 13 0 R \n"
            "/Filter /FlateDecode\n>>\nstream\ndata>\nendstream\nendobj\n13 0 obj\n6\nendobj\n");
}

TEST(ImageXObject, BilevelCcittImageHasItsParameterBlock) {
  MemoryDocument document;
  document.OpenBare();
  _FILTER filter = FilterOf(6);
  document->SetCCITTFilterParams(&filter.CcittParams, 18, 23, _CCITT_ENCODE_TYPE{-1}, 0, 0, 0, 1,
                                 0);
  EXPECT_EQ(document->CreateImageXObject(Params(1, 0, 1), kData, 4, filter), 1u);
  EXPECT_EQ(document.Text(),
            "1 0 obj\n<<\n/Type /XObject\n/Subtype /Image\n/Width 17\n/Height 22\n"
            "/BitsPerComponent 1\n/Decode [1 0]\n/ColorSpace /DeviceGray\n/Length 2 0 R \n"
            "/Filter /CCITTFaxDecode\n/DecodeParms\n<<\n/K -1\n/BlackIs1 false\n/Columns 18\n"
            "/Rows 22\n/EndOfLine false\n/EncodedByteAlign false\n/Columns 17\n/EndOfBlock true\n"
            "/DamagedRowsBeforeError 0\n>>\n/ImageMask true\n>>\nstream\ndata>\nendstream\nendobj\n"
            "2 0 obj\n6\nendobj\n");
}

TEST(ImageXObject, EveryBooleanOfTheBlockIsWritten) {
  _FILTER filter = FilterOf(2048);
  filter.CcittParams = {6, _CCITT_ENCODE_TYPE{4}, 1, 1, 8, 9, 0, 1, 7};
  std::string const text = Image(Params(1), filter);
  EXPECT_NE(text.find("/K 4\n/BlackIs1 true\n/Columns 8\n/Rows 22\n/EndOfLine true\n"
                      "/EncodedByteAlign true\n/Columns 17\n/EndOfBlock false\n"
                      "/DamagedRowsBeforeError 7\n"),
            std::string::npos);
}

TEST(ImageXObject, IndexedImageNamesTheObjectBehindItsLength) {
  EXPECT_NE(Image(Params(8), FilterOf(0)).find("/ColorSpace [/Indexed /DeviceRGB 255 14 0 R ]\n"),
            std::string::npos);
}

TEST(ImageXObject, IdentifierAndFlagWriteTheSameBytes) {
  for (auto const& [identifier, flag] :
       {std::pair{0u, 32u}, {4u, 512u}, {5u, 1024u}, {7u, 4096u}}) {
    EXPECT_EQ(Image(Params(24), FilterOf(identifier)), Image(Params(24), FilterOf(flag)));
  }
}

TEST(ImageXObject, NoCompressionHasNoFilterLine) {
  for (DWORD const compression : {0u, 32u}) {
    EXPECT_EQ(Image(Params(24), FilterOf(compression)).find("/Filter"), std::string::npos);
  }
}

TEST(ImageXObject, IndexedImageWithJpeg) {
  EXPECT_EQ(Image(Params(8), FilterOf(7)),
            "12 0 obj\n<<\n/Type /XObject\n/Subtype /Image\n/Width 17\n/Height 22\n"
            "/BitsPerComponent 8\n/ColorSpace [/Indexed /DeviceRGB 255 14 0 R ]\n"
            "/Length 13 0 R \n/Filter /DCTDecode\n>>\nstream\ndata>\nendstream\nendobj\n"
            "13 0 obj\n6\nendobj\n");
}

TEST(ImageXObject, IndexedImageWithRunLengths) {
  EXPECT_EQ(Image(Params(8), FilterOf(1024)),
            "12 0 obj\n<<\n/Type /XObject\n/Subtype /Image\n/Width 17\n/Height 22\n"
            "/BitsPerComponent 8\n/ColorSpace [/Indexed /DeviceRGB 255 14 0 R ]\n"
            "/Length 13 0 R \n/Filter /RunLengthDecode\n>>\nstream\ndata>\nendstream\nendobj\n"
            "13 0 obj\n6\nendobj\n");
}

TEST(ImageXObject, OtherDepthHas8BitsAndNoColorSpace) {
  EXPECT_EQ(Image(Params(4), FilterOf(0)),
            "12 0 obj\n<<\n/Type /XObject\n/Subtype /Image\n/Width 17\n/Height 22\n"
            "/BitsPerComponent 8\n/Length 13 0 R \n>>\nstream\ndata>\nendstream\nendobj\n"
            "13 0 obj\n6\nendobj\n");
}

TEST(ImageXObject, UnsupportedCompressionIsError15InAnObjectBegun) {
  for (DWORD const compression : {1u, 2u, 3u, 16u, 64u, 128u, 256u, 2049u, 513u}) {
    MemoryDocument document;
    document.OpenBare();
    EXPECT_EQ(document->CreateImageXObject(Params(24), kData, 4, FilterOf(compression)), 0u);
    EXPECT_EQ(document->PDF_GetLastError(), 15u) << compression;
    EXPECT_TRUE(document.Text().ends_with("/Length 2 0 R \n")) << compression;
  }
}

TEST(ImageXObject, CcittRecordOfAnotherTypeIsError15InAnObjectBegun) {
  for (int32_t const type : {0, 5, 7, 2048, -6}) {
    MemoryDocument document;
    document.OpenBare();
    _FILTER filter = FilterOf(6);
    filter.CcittParams.FilterType = type;
    EXPECT_EQ(document->CreateImageXObject(Params(1), kData, 4, filter), 0u);
    EXPECT_EQ(document->PDF_GetLastError(), 15u) << type;
    EXPECT_TRUE(document.Text().ends_with("/Length 2 0 R \n")) << type;
  }
}

TEST(ImageXObject, NoBytesIsError8BehindTheDictionary) {
  MemoryDocument document;
  document.OpenBare();
  EXPECT_EQ(document->CreateImageXObject(Params(24), kData, 0, FilterOf(0)), 0u);
  EXPECT_EQ(document->PDF_GetLastError(), 8u);
  std::string const text = document.Text();
  EXPECT_EQ(text.substr(text.size() - 10), ">>\nstream\n");
}

_FILTER FilledFilter(DWORD compression) {
  return {compression, {6, _CCITT_ENCODE_TYPE{-1}, 0, 0, 8, 9, 1, 0, 0}};
}

TEST(ImageXObject, WriteThatFailsAnywhereFailsTheImage) {
  test::ExpectEveryWriteToCount([](CCreatePDF& s) {
    return s.CreateImageXObject(Params(1), kData, sizeof kData, FilledFilter(6));
  });
  test::ExpectEveryWriteToCount([](CCreatePDF& s) {
    return s.CreateImageXObject(Params(8), kData, sizeof kData, FilledFilter(4));
  });
}

TEST(ImageXObject, NullDataWritesNothing) {
  MemoryDocument document;
  document.OpenBare();
  EXPECT_EQ(document->CreateImageXObject(Params(24), nullptr, 4, FilterOf(0)), 0u);
  EXPECT_EQ(document.Text(), "");
}

TEST(CcittParams, NegativeNumbersAreError16AndLeaveTheRecord) {
  MemoryDocument document;
  struct Row {
    int columns, rows, damaged;
  };
  for (Row const& row : {Row{-1, 1, 1}, Row{1, -1, 1}, Row{1, 1, -1}}) {
    _CCITT_FILTER_PARAMS params{};
    EXPECT_EQ(document->SetCCITTFilterParams(&params, row.columns, row.rows, _CCITT_ENCODE_TYPE{-1},
                                             0, 0, 0, 1, row.damaged),
              0);
    EXPECT_EQ(document->PDF_GetLastError(), 16u);
    EXPECT_EQ(params.FilterType, 0);
  }
}

TEST(CcittParams, AnyKIsTakenAndAnOlderErrorCleared) {
  MemoryDocument document;
  _CCITT_FILTER_PARAMS params{};
  EXPECT_EQ(document->SetCCITTFilterParams(&params, 1, 2, _CCITT_ENCODE_TYPE{77}, 3, 4, 5, 6, 7),
            1);
  EXPECT_EQ(document->PDF_GetLastError(), 0u);
  EXPECT_EQ(params.FilterType, 6);
  EXPECT_EQ(params.K, 77);
  EXPECT_EQ(params.Columns, 1);
  EXPECT_EQ(params.Rows, 2);
  EXPECT_EQ(params.BlackIs1, 3);
  EXPECT_EQ(params.EndOfLine, 4);
  EXPECT_EQ(params.EncodedByteAlign, 5);
  EXPECT_EQ(params.EndOfBlock, 6);
  EXPECT_EQ(params.DamagedRowsBeforeError, 7);
  EXPECT_EQ(document->SetCCITTFilterParams(nullptr, -1, 2, _CCITT_ENCODE_TYPE{0}, 0, 0, 0, 0, 0),
            0);
  EXPECT_EQ(document->PDF_GetLastError(), 7u);
}

struct Predicate {
  int (CCreatePDF::*test)(DWORD);
  DWORD identifier;
  DWORD flag;
};

TEST(Compression, PredicatesTakeTheIdentifierOrTheFlagBit) {
  MemoryDocument document;
  CCreatePDF& s = document.session();
  for (Predicate const& p : {Predicate{&CCreatePDF::IsCompession_NO_COMPRESSION, 0, 32},
                             Predicate{&CCreatePDF::IsCompession_ASCII_HEX_DECODE, 1, 64},
                             Predicate{&CCreatePDF::IsCompession_ASCII_85_DECODE, 2, 128},
                             Predicate{&CCreatePDF::IsCompession_LZW_DECODE, 3, 256},
                             Predicate{&CCreatePDF::IsCompession_FLAT_DECODE, 4, 512},
                             Predicate{&CCreatePDF::IsCompession_RUNLENGTH_DECODE, 5, 1024},
                             Predicate{&CCreatePDF::IsCompession_CCITT_FAX_DECODE, 6, 2048},
                             Predicate{&CCreatePDF::IsCompession_DCT_JPEG_DECODE, 7, 4096}}) {
    for (DWORD value = 0; value <= 8192; ++value) {
      ASSERT_EQ((s.*p.test)(value), value == p.identifier || (value & p.flag) != 0 ? 1 : 0)
          << p.flag << " " << value;
    }
  }
  EXPECT_EQ(s.IsCompession_NOT_SPECIFIED(16), 1);
  EXPECT_EQ(s.IsCompession_NOT_SPECIFIED(0), 0);
  EXPECT_EQ(s.IsCompession_CCITT_FAX_DECODE(2049), 1);
}

TEST(ImageXObject, FilterIsRefusedBeforeMissingBytes) {
  _FILTER other_type = FilterOf(6);
  other_type.CcittParams.FilterType = 5;
  for (_FILTER const& filter : {other_type, FilterOf(3)}) {
    MemoryDocument document;
    document.OpenBare();
    EXPECT_EQ(document->CreateImageXObject(Params(24), kData, 0, filter), 0u);
    EXPECT_EQ(document->PDF_GetLastError(), 15u) << filter.Compression;
  }
}

TEST(ImageXObject, NullDataLeaveAnOlderCodeAndTakeNoNumber) {
  MemoryDocument document;
  document.OpenBare();
  document->PDF_SetLastError(20);
  EXPECT_EQ(document->CreateImageXObject(Params(24), nullptr, 4, FilterOf(0)), 0u);
  EXPECT_EQ(document->PDF_GetLastError(), 20u);
  EXPECT_EQ(document->GetCurrentObject(), 0u);
  EXPECT_EQ(document.Text(), "");
}

}  // namespace
