// Looks into, and sets, the private members of the cross-reference classes.
#ifndef TESTS_SUPPORT_XREF_PROBE_H_
#define TESTS_SUPPORT_XREF_PROBE_H_

#include <sorrelin/document/cxref_parser.h>
#include <sorrelin/document/cxref_stm.h>
#include <sorrelin/document/object_stream.h>

#include <list>
#include <set>
#include <string>
#include <vector>

struct XrefProbe {
  using Stm = sorrelin::CXRefStm;
  static int32_t& StartXref(Stm& x) { return x.m_nStartXref; }
  static std::vector<sorrelin::OffsetMark>& Marks(Stm& x) { return x.m_Marks; }
  static std::set<DWORD>& PrevOffsets(Stm& x) { return x.m_PrevOffsets; }
  static std::set<uint64_t>& PendingOffsets(Stm& x) { return x.m_PendingOffsets; }
  static DWORD EntryLength(Stm& x) { return x.m_nEntryLength; }
  static DWORD TableSize(Stm& x) { return x.m_nTableSize; }
  static DWORD PrevOffset(Stm& x) { return x.m_nPrevOffset; }
  static DWORD HybridOffset(Stm& x) { return x.m_nHybridOffset; }
  static std::vector<std::string>& FilterNames(Stm& x) { return x.m_FilterNames; }
  static DWORD (&FieldWidth(Stm& x))[3] { return x.m_nFieldWidth; }
  static std::list<sorrelin::XRefSubsection>& Subsections(Stm& x) { return x.m_Subsections; }
  static DWORD RecordCount(Stm& x) { return x.m_nRecordCount; }
  static std::vector<sorrelin::XRefRecord>& Records(Stm& x) { return x.m_Records; }
  static DWORD& Length(Stm& x) { return x.m_nLength; }
  static DWORD& Size(Stm& x) { return x.m_nSize; }
  static uint64_t DecodedSize(Stm& x) { return x.m_nDecodedSize; }
  static std::vector<BYTE>& DecodedData(Stm& x) { return x.m_DecodedData; }
  static sorrelin::CDecodeParms& DecodeParms(Stm& x) { return *x.m_pDecodeParms; }

  static DWORD WriteIndex(sorrelin::CXrefParser& p) { return p.m_nWriteIndex; }
  static DWORD ChunkSize(sorrelin::CXrefParser& p) { return p.m_nChunkSize; }

  static size_t StreamCount(sorrelin::ObjectStreamList& l) { return l.streams_.size(); }
  static bool Holds(sorrelin::ObjectStreamList& l, uint64_t offset) {
    return l.Find(offset) != nullptr;
  }
  static sorrelin::ObjectStreamReader const& Stream(sorrelin::ObjectStreamList& l,
                                                    uint64_t offset) {
    return *l.Find(offset);
  }
  static std::vector<std::string> const& FilterNames(sorrelin::ObjectStreamReader const& r) {
    return r.filter_names_;
  }
  static DWORD ObjectCount(sorrelin::ObjectStreamReader const& r) { return r.object_count_; }
  static std::optional<std::pair<DWORD, DWORD>> Extends(sorrelin::ObjectStreamReader const& r) {
    return r.extends_;
  }
};

#endif  // TESTS_SUPPORT_XREF_PROBE_H_
