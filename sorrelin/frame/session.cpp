// Construction and destruction of a session.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/document/object_fetch.h>
#include <sorrelin/frame/banner.h>
#include <sorrelin/frame/reader_state.h>
#include <sorrelin/frame/session.h>

#include <algorithm>
#include <iterator>

namespace {

// Of its own, because pdf_Release_PDF leaves the record behind.
SORRELIN_NOINLINE sorrelin::ReaderState* NewSideRecord() { return new sorrelin::ReaderState; }

}  // namespace

CCreatePDF::CCreatePDF() : m_hFile(sorrelin::InvalidChannel()), m_pReader(NewSideRecord()) {
  static_assert(std::size(sorrelin::kWideCreator) <= kCreatorUnits);
  std::copy(std::begin(sorrelin::kWideCreator), std::end(sorrelin::kWideCreator), m_szCreator);
  InitObjectList();
}

// Kept: the channel stays open; ClosePDFFile is what closes it.
CCreatePDF::~CCreatePDF() {
  sorrelin::DestroyReaderObjects(*m_pReader);
  delete m_pReader;
  m_pReader = nullptr;
}
