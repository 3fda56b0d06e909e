// The stream route to the object index: cross-reference streams from the newest section back.
#ifndef SORRELIN_DOCUMENT_CXREF_STM_H_
#define SORRELIN_DOCUMENT_CXREF_STM_H_

#include <sorrelin/document/cxref.h>
#include <sorrelin/document/decode_parms.h>
#include <sorrelin/syntax/object_source.h>

#include <list>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace sorrelin {

// All steps give 1, or 0 for failure; none sets an error code.
class CXRefStm : public CXRef {
 public:
  // References in the dictionaries of sections are looked for in `objects`, which may be null.
  CXRefStm(DocumentFile& file, ObjectSource* objects);
  ~CXRefStm() override = default;

  // Where the reading starts

  // Looks for startxref in the last bytes of the document and takes its number for the offset of
  // the newest section.
  int ReadStartXref();
  // Whether a classic table is at the offset (null: of the newest section) or near it, in which
  // case the newest section's offset moves onto it.
  int IsClassicTableAt(DWORD const* offset);
  // Looks for a table's keyword around the offset, backward or forward, and moves the offset onto
  // it.
  int SearchXrefKeyword(DWORD* offset, bool backward);

  // One section

  // Reads the section's object: at Prev() if `older`, else of the newest section.
  int LoadSection(bool hybrid, bool older);
  // /Root and /Info of the section in hand. 0 without /Root.
  int ReadTrailerKeys();
  // /Length, /Filter, /W, /Size, /Index and /Prev. 0 without /Length or /Size. Throws
  // SorrelinStringError for an /Index of an odd number of tokens.
  int ParseStreamDict();
  int DecodeRecords();
  // Merges the records into the index. 0 when the index is beyond the object table, see IsTooLarge.
  int MergeRecords();
  // Whether a section's index or its number of records is beyond the object table.
  bool IsTooLarge() const { return m_bTooLarge; }
  // Lets go of the last section's bytes and records.
  void ReleaseSection();

  std::vector<BYTE>& SectionText() { return m_SectionText; }
  uint64_t& Prev() { return m_nPrev; }

 private:
  friend struct ::XrefProbe;

  std::string ReadFlat(uint64_t offset, DWORD bytes);
  void ReadFieldWidths();
  void ReadIndexArray();
  bool InflateSection();
  bool UndoPredictor();
  // False for more records than the object table has rows, and when no work is left for them.
  bool ReadRecords();
  void MergeRecord(DWORD number, XRefRecord const& record);

  ObjectSource* m_pObjects;  // not owned
  std::vector<std::string> m_FilterNames;
  DWORD m_nHybridOffset = 0;  // no route fills it
  DWORD m_nFieldWidth[3] = {};
  std::list<XRefSubsection> m_Subsections;
  DWORD m_nRecordCount = 0;
  std::vector<XRefRecord> m_Records;
  DWORD m_nLength = 0;
  std::vector<BYTE> m_RawData;  // of the m_nLength bytes those that the section holds
  uint64_t m_nDecodedSize = 0;
  std::vector<BYTE> m_DecodedData;  // what it lacks of m_nDecodedSize reads as 0
  uint64_t m_nPrev = 0;             // 0 ends the chain
  std::vector<BYTE> m_SectionText;
  std::unique_ptr<CDecodeParms> m_pDecodeParms;
  DWORD m_nSize = 0;
  bool m_bTooLarge = false;
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_CXREF_STM_H_
