// The parsing of /DecodeParms, and the undoing of the predictor.
#include <sorrelin/document/decode_parms.h>
#include <sorrelin/image/predictor.h>
#include <sorrelin/syntax/typed_lookup.h>

#include <algorithm>

namespace sorrelin {

namespace {

constexpr uint64_t kOpening = 2;             // "<<"
constexpr uint64_t kBothBrackets = 4;        // "<<" and ">>"
constexpr DWORD kEncodeTypeGroup4 = 4;       // /K -1
constexpr DWORD kEncodeTypeMixed = 0x10003;  // /K 1

}  // namespace

int CDecodeParms::ParseDecodeParms(BYTE* text, uint64_t size) {
  if (size > 0 && text[0] == '<') {
    text += std::min(size, kOpening);
    size -= std::min(size, kBothBrackets);
  }
  ParsePredictor(text, size);
  ParseCcitt(text, size);
  int32_t transform = 0;
  if (Read(text, size, "/ColorTransform", kTypeInteger, transform)) {
    EnsurePredictor().m_nColorTransform = transform;
  }
  return 1;
}

int CDecodeParms::ApplyPredictor(std::span<BYTE> data) const {
  if (!HasPredictor()) return 1;
  CDecodeParmsPredictor const& parms = *m_pPredictor;
  if (parms.m_nPredictor < 10 || parms.m_nPredictor > 15) return 0;
  return DecodePngRows({parms.m_nColumns, parms.m_nColors, parms.m_nBitsPerComponent}, data);
}

void CDecodeParms::ParsePredictor(BYTE* text, uint64_t size) {
  int32_t predictor = 0;
  if (Read(text, size, "/Predictor", kTypeInteger, predictor) && predictor >= 2) {
    m_pPredictor = std::make_unique<CDecodeParmsPredictor>();
    m_pPredictor->m_nPredictor = static_cast<DWORD>(predictor);
    Read(text, size, "/Colors", kTypeInteger, m_pPredictor->m_nColors);
    Read(text, size, "/BitsPerComponent", kTypeInteger, m_pPredictor->m_nBitsPerComponent);
    Read(text, size, "/Columns", kTypeInteger, m_pPredictor->m_nColumns);
  }
  DWORD early_change = 0;
  if (Read(text, size, "/EarlyChange", kTypeInteger, early_change)) {
    EnsurePredictor().m_nEarlyChange = early_change;
  }
}

void CDecodeParms::ParseCcitt(BYTE* text, uint64_t size) {
  CcittDecodeParms params;
  int32_t k = 0;
  bool found = Read(text, size, "/K", kTypeInteger, k);
  if (found && k == -1) params.nEncodeType = kEncodeTypeGroup4;
  if (found && k == 1) params.nEncodeType = kEncodeTypeMixed;
  found |= Read(text, size, "/Columns", kTypeInteger, params.nColumns);
  // Kept: the key lacks its last letter, and a key must be followed by a separator, so that the
  // rows of an ordinary dictionary are not seen; decoders go by the image's height.
  found |= Read(text, size, "/Row", kTypeInteger, params.nRows);
  found |=
      Read(text, size, "/DamagedRowsBeforeError", kTypeInteger, params.nDamagedRowsBeforeError);
  found |= Read(text, size, "/EndOfLine", kTypeBoolean, params.bEndOfLine);
  found |= Read(text, size, "/EncodedByteAlign", kTypeBoolean, params.bEncodedByteAlign);
  found |= Read(text, size, "/EndOfBlock", kTypeBoolean, params.bEndOfBlock);
  found |= Read(text, size, "/BlackIs1", kTypeBoolean, params.bBlackIs1);
  if (found) EnsurePredictor();
  if (m_pPredictor != nullptr && m_pPredictor->m_nPredictor == 1) SetCcittParams(params);
}

void CDecodeParms::SetCcittParams(CcittDecodeParms const& params) {
  if (params.nColumns < 0 || params.nRows < 0 || params.nDamagedRowsBeforeError < 0) return;
  if (m_pPredictor->m_pCcitt == nullptr) {
    m_pPredictor->m_pCcitt = std::make_unique<CcittDecodeParms>();
  }
  *m_pPredictor->m_pCcitt = params;
}

CDecodeParms::CDecodeParmsPredictor& CDecodeParms::EnsurePredictor() {
  if (m_pPredictor == nullptr) m_pPredictor = std::make_unique<CDecodeParmsPredictor>();
  return *m_pPredictor;
}

template <typename Value>
bool CDecodeParms::Read(BYTE* text, uint64_t size, char const* key, DWORD type,
                        Value& value) const {
  auto const number = FindTypedNumber(m_pObjects, {text, static_cast<size_t>(size)}, key, type);
  if (number) value = static_cast<Value>(*number);
  return number.has_value();
}

}  // namespace sorrelin
