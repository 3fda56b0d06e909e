// /DecodeParms as the reader knows it: predictor and CCITT parameters.
#ifndef SORRELIN_DOCUMENT_DECODE_PARMS_H_
#define SORRELIN_DOCUMENT_DECODE_PARMS_H_

#include <sorrelin/platform/types.h>
#include <sorrelin/syntax/object_source.h>

#include <cstdint>
#include <memory>
#include <span>

namespace sorrelin {

struct CcittDecodeParms {
  DWORD nEncodeType = 3;  // 4 for /K -1, 65539 for /K 1
  int32_t nColumns = 1728;
  DWORD bEndOfLine = 0;
  DWORD bEncodedByteAlign = 0;
  int32_t nRows = 0;
  DWORD bEndOfBlock = 1;
  DWORD bBlackIs1 = 0;
  int32_t nDamagedRowsBeforeError = 0;
};

class CDecodeParms {
 public:
  struct CDecodeParmsPredictor {
    virtual ~CDecodeParmsPredictor() = default;

    DWORD m_nPredictor = 1;
    DWORD m_nColors = 1;
    DWORD m_nBitsPerComponent = 8;
    DWORD m_nColumns = 1;
    DWORD m_nEarlyChange = 1;
    std::unique_ptr<CcittDecodeParms> m_pCcitt;
    std::unique_ptr<BYTE[]> m_pExtra;  // nothing assigns it
    int32_t m_nColorTransform = -1;
  };

  // References are looked for in `objects`, which may be null.
  explicit CDecodeParms(ObjectSource* objects) : m_pObjects(objects) {}

  // Takes over what the dictionary's text says; what it does not say stays as it was. Always 1. The
  // text's last byte is written.
  int ParseDecodeParms(BYTE* text, uint64_t size);

  // Whether ApplyPredictor has something to do.
  bool HasPredictor() const { return m_pPredictor != nullptr && m_pPredictor->m_nPredictor != 1; }

  // Undoes the rows of `data` in place, one after the other without their tags; bytes after the
  // last row stay as they were. 1, or 0 with the data partly undone.
  int ApplyPredictor(std::span<BYTE> data) const;

  // Null until a key was seen.
  CDecodeParmsPredictor const* Predictor() const { return m_pPredictor.get(); }

 private:
  CDecodeParmsPredictor& EnsurePredictor();
  void ParsePredictor(BYTE* text, uint64_t size);
  void ParseCcitt(BYTE* text, uint64_t size);
  void SetCcittParams(CcittDecodeParms const& params);
  template <typename Value>
  bool Read(BYTE* text, uint64_t size, char const* key, DWORD type, Value& value) const;

  std::unique_ptr<CDecodeParmsPredictor> m_pPredictor;
  ObjectSource* m_pObjects;  // not owned
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_DECODE_PARMS_H_
