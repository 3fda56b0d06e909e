// The classic cross-reference section and trailer of a new document (ISO 32000-1, 7.5.4, 7.5.5):
// entries of 19 characters and a line end, which is 20 bytes with LF.
#include <sorrelin/frame/session_state.h>

#include <cstdio>
#include <string>

int sorrelin::SessionState::WriteXref() {
  DWORD const table = ReserveOneObject();
  if (table == 0) return 0;
  // The table's own row holds its offset and gets no entry.
  m_Objects.Change(table).nOffset = m_nFilePos;
  bool const written = WriteToPDFFile("xref", 1) != 0 &&
                       WriteFormatted(1, "0 %d", static_cast<int>(table)) &&
                       WriteXrefEntries(table) && WriteNewTrailer(table) && WriteXrefOffset(table);
  return written ? 1 : 0;
}

bool sorrelin::SessionState::WriteXrefEntries(DWORD nTable) {
  std::string entries;
  AddXrefEntry(entries, 0, 65535, false);
  for (DWORD object = 1; object < nTable; ++object) {
    ObjectEntry const row = m_Objects[object];
    AddXrefEntry(entries, row.nOffset, row.nGeneration, row.bInUse != 0);
  }
  return WriteText(entries);
}

// Kept: numbers are written as signed 32-bit values, so an offset of 2 GiB or more is negative.
void sorrelin::SessionState::AddXrefEntry(std::string& entries, DWORD nOffset, DWORD nGeneration,
                                          bool in_use) const {
  char entry[40];
  std::snprintf(entry, sizeof entry, "%.10d %.5d %c %s", static_cast<int>(nOffset),
                static_cast<int>(nGeneration), in_use ? 'n' : 'f',
                m_bUseChar13 != 0 ? "\r\n" : "\n");
  entries += entry;
}

// In one write, where a document has as many entries as objects.
bool sorrelin::SessionState::WriteText(std::string const& text) {
  return WriteRawDataToPDFFile(reinterpret_cast<BYTE const*>(text.data()),
                               static_cast<DWORD>(text.size())) != 0;
}

// Kept: the Info object is object 1 of every new document.
bool sorrelin::SessionState::WriteNewTrailer(DWORD nTable) {
  return WriteLines({"trailer", "<<"}) && WriteFormatted(1, "/Size %d", static_cast<int>(nTable)) &&
         WriteFormatted(1, "/Root %d 0 R", static_cast<int>(GetCatalogObjectNr())) &&
         WriteFormatted(1, "/Info %d 0 R", 1) && WriteToPDFFile(">>", 1) != 0;
}

bool sorrelin::SessionState::WriteXrefOffset(DWORD nTable) {
  return WriteToPDFFile("startxref", 1) != 0 &&
         WriteFormatted(1, "%d", static_cast<int>(m_Objects[nTable].nOffset)) &&
         WriteToPDFFile("%%EOF", 1) != 0;
}
