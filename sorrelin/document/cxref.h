// The model of a document's cross-reference: for every object number where the object is and in
// which form, and the byte range that each plain object takes.
#ifndef SORRELIN_DOCUMENT_CXREF_H_
#define SORRELIN_DOCUMENT_CXREF_H_

#include <sorrelin/document/document_file.h>
#include <sorrelin/document/extent_map.h>
#include <sorrelin/platform/types.h>

#include <cstdint>
#include <memory>
#include <set>
#include <span>
#include <vector>

struct XrefProbe;

namespace sorrelin {

class CXrefParser;

// Rows of a session's object table, which bound the index.
inline constexpr DWORD kIndexRows = 90050;

// One element of the object index. All zero: no section named the object.
struct XRefObjectEntry {
  uint64_t nOffset = 0;   // type 1: of the object header; type 2: number of the object stream
  DWORD nGeneration = 0;  // type 2: index in the object stream
  DWORD nType = 0;        // 0 free or unknown, 1 plain, 2 in an object stream
};

// An offset at which something begins. Without an extent it only ends the object before it.
struct OffsetMark {
  uint64_t nOffset = 0;
  ObjectExtent* pExtent = nullptr;  // not owned: an element of the extent map
};

// A pair of /Index.
struct XRefSubsection {
  DWORD nFirst = 0;
  DWORD nCount = 0;
};

// A record of a cross-reference stream.
struct XRefRecord {
  DWORD nType = 0;
  DWORD nField2 = 0;
  DWORD nField3 = 0;
};

class CXRef {
 public:
  explicit CXRef(DocumentFile& file) : m_File(file) {}
  virtual ~CXRef() = default;
  CXRef(CXRef const&) = delete;
  CXRef& operator=(CXRef const&) = delete;

  std::vector<XRefObjectEntry>& ObjectIndex() { return m_ObjectIndex; }
  // An element of zeros for a number that the index does not reach.
  XRefObjectEntry EntryOf(DWORD number) const {
    return number < m_ObjectIndex.size() ? m_ObjectIndex[number] : XRefObjectEntry{};
  }
  ExtentMap& Extents() { return m_Extents; }
  // Null until the newest section was read, and for a document without the key.
  ObjectId const* Root() const { return m_pRoot.get(); }
  ObjectId const* Info() const { return m_pInfo.get(); }
  int32_t StartXref() const { return m_nStartXref; }

  // Sorts the marks and ends each extent at the next mark.
  void FinishExtents();

  // Recovery

  // Whether `text` and what follows it, blanks or NULs up to `size` bytes, can be an object: "obj"
  // before "endobj", or before a ">" at its end.
  static int IsObjectTextValid(std::span<BYTE const> text, uint64_t size);
  // Replaces index, extents and marks by what a scan of the document for " obj" finds. All stay as
  // they were where memory is short.
  void RebuildByScan();
  // Whether the scan was made; a second one could only find the same.
  bool IsRebuilt() const { return m_bRebuilt; }
  // Enters the object whose header ends at `position`, the blank before "obj".
  void RegisterScannedObject(CXrefParser& parser, DWORD position);

 protected:
  friend struct ::XrefProbe;

  DocumentFile& m_File;
  DWORD m_nTableSize = 0;  // no route fills it
  std::vector<XRefObjectEntry> m_ObjectIndex;
  int32_t m_nStartXref = 0;  // offset of the newest section
  ExtentMap m_Extents;
  std::vector<OffsetMark> m_Marks;  // sorted when all sections are read
  std::unique_ptr<ObjectId> m_pRoot;
  std::unique_ptr<ObjectId> m_pInfo;
  DWORD m_nPrevOffset = 0;              // no route fills it
  std::set<DWORD> m_PrevOffsets;        // no route fills it; a scan takes each for a boundary
  std::set<uint64_t> m_PendingOffsets;  // no route fills it
  DWORD m_nEntryLength = 20;            // no route reads it

 private:
  void ScanForObjects();
  void AddBoundary(uint64_t offset);

  bool m_bRebuilt = false;
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_CXREF_H_
