// /DecodeParms as the reader of cross-reference and object streams takes it.
#include <gtest/gtest.h>
#include <sorrelin/document/decode_parms.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using sorrelin::CcittDecodeParms;
using sorrelin::CDecodeParms;
using Bytes = std::vector<BYTE>;
using Predictor = CDecodeParms::CDecodeParmsPredictor;

struct Parsed {
  explicit Parsed(std::string const& first, std::string const& second = {}) : parms(nullptr) {
    Parse(first);
    if (!second.empty()) Parse(second);
  }
  void Parse(std::string text) {
    result = parms.ParseDecodeParms(reinterpret_cast<BYTE*>(text.data()), text.size());
  }
  Predictor const* operator->() const { return parms.Predictor(); }
  bool empty() const { return parms.Predictor() == nullptr; }
  CDecodeParms parms;
  int result = 0;
};

TEST(DecodeParms, EmptyDictionaryCreatesNothing) {
  for (char const* text : {"<<>>", "<< >>", "", "<", "<<", "<< /Other 1 >>"}) {
    Parsed const parsed(text);
    EXPECT_EQ(parsed.result, 1);
    EXPECT_TRUE(parsed.empty()) << text;
    EXPECT_FALSE(parsed.parms.HasPredictor());
  }
}

TEST(DecodeParms, PredictorTakesItsThreeCompanions) {
  Parsed const parsed("<</Predictor 12 /Colors 3 /BitsPerComponent 4 /Columns 5 >>");
  EXPECT_EQ(parsed->m_nPredictor, 12u);
  EXPECT_EQ(parsed->m_nColors, 3u);
  EXPECT_EQ(parsed->m_nBitsPerComponent, 4u);
  EXPECT_EQ(parsed->m_nColumns, 5u);
  EXPECT_EQ(parsed->m_nEarlyChange, 1u);
  EXPECT_EQ(parsed->m_nColorTransform, -1);
  EXPECT_TRUE(parsed.parms.HasPredictor());
}

TEST(DecodeParms, PredictorAloneHasDefaults) {
  Parsed const parsed("<</Predictor 2 >>");
  EXPECT_EQ(parsed->m_nPredictor, 2u);
  EXPECT_EQ(parsed->m_nColors, 1u);
  EXPECT_EQ(parsed->m_nBitsPerComponent, 8u);
  EXPECT_EQ(parsed->m_nColumns, 1u);
}

TEST(DecodeParms, PredictorBelowTwoCreatesNothing) {
  EXPECT_TRUE(Parsed("<</Predictor 1 >>").empty());
  EXPECT_TRUE(Parsed("<</Predictor 0 >>").empty());
  EXPECT_TRUE(Parsed("<</Predictor -5 >>").empty());
}

// The brackets are taken off by their number of bytes, and the byte that then ends the text is not
// part of a value. A value of several digits is found whole all the same: it is taken out of the
// text once more where it looks like the start of a reference.
TEST(DecodeParms, LastDigitInsideTheBracketsIsLostIfItIsTheOnlyOne) {
  EXPECT_EQ(Parsed("<</Predictor 12 /Columns 4>>")->m_nColumns, 0u);
  EXPECT_EQ(Parsed("<</Columns 4/Predictor 12>>")->m_nPredictor, 12u);
  EXPECT_EQ(Parsed("<</Columns 4/Predictor 12>>")->m_nColumns, 4u);
}

TEST(DecodeParms, TextWithoutBracketsIsTakenWhole) {
  EXPECT_EQ(Parsed("/Predictor 12 ")->m_nPredictor, 12u);
}

TEST(DecodeParms, CcittKeyAloneCreatesAPredictorOfOne) {
  Parsed const parsed("<</K -1 >>");
  EXPECT_EQ(parsed->m_nPredictor, 1u);
  ASSERT_NE(parsed->m_pCcitt, nullptr);
  EXPECT_EQ(parsed->m_pCcitt->nEncodeType, 4u);
  EXPECT_FALSE(parsed.parms.HasPredictor());
}

TEST(DecodeParms, CcittDefaults) {
  Parsed const parsed("<</K 0 >>");
  CcittDecodeParms const& ccitt = *parsed->m_pCcitt;
  EXPECT_EQ(ccitt.nEncodeType, 3u);
  EXPECT_EQ(ccitt.nColumns, 1728);
  EXPECT_EQ(ccitt.bEndOfLine, 0u);
  EXPECT_EQ(ccitt.bEncodedByteAlign, 0u);
  EXPECT_EQ(ccitt.nRows, 0);
  EXPECT_EQ(ccitt.bEndOfBlock, 1u);
  EXPECT_EQ(ccitt.bBlackIs1, 0u);
  EXPECT_EQ(ccitt.nDamagedRowsBeforeError, 0);
}

struct CcittRow {
  char const* name;
  char const* text;
  std::function<int64_t(CcittDecodeParms const&)> field;
  int64_t value;
};
class CcittKey : public testing::TestWithParam<CcittRow> {};

TEST_P(CcittKey, IsRead) {
  Parsed const parsed(GetParam().text);
  ASSERT_FALSE(parsed.empty());
  ASSERT_NE(parsed->m_pCcitt, nullptr);
  EXPECT_EQ(GetParam().field(*parsed->m_pCcitt), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, CcittKey,
    testing::Values(
        CcittRow{"Group4", "<</K -1 >>", [](auto& c) { return c.nEncodeType; }, 4},
        CcittRow{"Mixed", "<</K 1 >>", [](auto& c) { return c.nEncodeType; }, 65539},
        CcittRow{"OtherK", "<</K 2 >>", [](auto& c) { return c.nEncodeType; }, 3},
        CcittRow{"Columns", "<</Columns 100 >>", [](auto& c) { return c.nColumns; }, 100},
        CcittRow{"Row", "<</Row 50 >>", [](auto& c) { return c.nRows; }, 50},
        CcittRow{"RowsIsNotRow", "<</K 0 /Rows 50 >>", [](auto& c) { return c.nRows; }, 0},
        CcittRow{"EndOfLine", "<</EndOfLine true >>", [](auto& c) { return c.bEndOfLine; }, 1},
        CcittRow{"ByteAlign", "<</EncodedByteAlign true >>",
                 [](auto& c) { return c.bEncodedByteAlign; }, 1},
        CcittRow{"EndOfBlock", "<</EndOfBlock false >>", [](auto& c) { return c.bEndOfBlock; }, 0},
        CcittRow{"BlackIs1", "<</BlackIs1 true >>", [](auto& c) { return c.bBlackIs1; }, 1},
        CcittRow{"NoBoolean", "<</K 0 /BlackIs1 yes >>", [](auto& c) { return c.bBlackIs1; }, 0},
        CcittRow{"DamagedRows", "<</DamagedRowsBeforeError 3 >>",
                 [](auto& c) { return c.nDamagedRowsBeforeError; }, 3}),
    [](auto const& row) { return row.param.name; });

TEST(DecodeParms, PredictorOfTwoOrMoreDropsCcittValues) {
  EXPECT_EQ(Parsed("<</Predictor 12 /K -1 /Columns 5 >>")->m_pCcitt, nullptr);
}

TEST(DecodeParms, NegativeSizesStoreNoCcittValues) {
  for (char const* text :
       {"<</K -1 /Columns -1 >>", "<</K -1 /Row -1 >>", "<</K -1 /DamagedRowsBeforeError -1 >>"}) {
    Parsed const parsed(text);
    EXPECT_EQ(parsed->m_nPredictor, 1u);
    EXPECT_EQ(parsed->m_pCcitt, nullptr) << text;
  }
}

TEST(DecodeParms, EarlyChangeAndColorTransformCreateAPredictorOfOne) {
  Parsed const early("<</EarlyChange 0 >>");
  EXPECT_EQ(early->m_nPredictor, 1u);
  EXPECT_EQ(early->m_nEarlyChange, 0u);
  // The predictor stood before the CCITT values were stored.
  EXPECT_NE(early->m_pCcitt, nullptr);
  Parsed const transform("<</ColorTransform 1 >>");
  EXPECT_EQ(transform->m_nPredictor, 1u);
  EXPECT_EQ(transform->m_nColorTransform, 1);
  EXPECT_EQ(transform->m_pCcitt, nullptr);
}

// Kept: a section without parameters is read with those of the section before.
TEST(DecodeParms, SecondDictionaryAddsToTheFirst) {
  Parsed const none("<</Predictor 12 /Columns 4 >>", "<</Colors 3 >>");
  EXPECT_EQ(none->m_nPredictor, 12u);
  EXPECT_EQ(none->m_nColumns, 4u);
  Parsed const again("<</Predictor 12 /Columns 4 >>", "<</Predictor 15 >>");
  EXPECT_EQ(again->m_nPredictor, 15u);
  EXPECT_EQ(again->m_nColumns, 1u);
}

struct PredictorRow {
  DWORD predictor;
  int result;
};

TEST(Predictor, OnlyTenToFifteenAreUndone) {
  for (auto const& [predictor, result] : {PredictorRow{2, 0},
                                          {3, 0},
                                          {9, 0},
                                          {10, 1},
                                          {11, 1},
                                          {12, 1},
                                          {13, 1},
                                          {14, 1},
                                          {15, 1},
                                          {16, 0},
                                          {255, 0}}) {
    CDecodeParms parms(nullptr);
    std::string text = "<</Predictor " + std::to_string(predictor) + " /Columns 2 >>";
    parms.ParseDecodeParms(reinterpret_cast<BYTE*>(text.data()), text.size());
    Bytes data{1, 5, 5};
    EXPECT_EQ(parms.ApplyPredictor(data), result) << predictor;
    EXPECT_EQ(data, result ? (Bytes{5, 10, 5}) : (Bytes{1, 5, 5})) << predictor;
  }
}

TEST(Predictor, OfOneDoesNothing) {
  CDecodeParms parms(nullptr);
  std::string text = "<</K -1 >>";
  parms.ParseDecodeParms(reinterpret_cast<BYTE*>(text.data()), text.size());
  Bytes data{1, 5, 5};
  EXPECT_EQ(parms.ApplyPredictor(data), 1);
  EXPECT_EQ(data, (Bytes{1, 5, 5}));
}

}  // namespace
