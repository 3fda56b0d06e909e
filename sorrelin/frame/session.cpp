// Construction and destruction of a session.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/frame/banner.h>
#include <sorrelin/frame/reader_state.h>
#include <sorrelin/frame/session.h>

#include <algorithm>
#include <iterator>

CCreatePDF::CCreatePDF()
    : m_hFile(sorrelin::InvalidChannel()), m_pReader(new sorrelin::ReaderState) {
  static_assert(std::size(sorrelin::kWideCreator) <= kCreatorUnits);
  std::copy(std::begin(sorrelin::kWideCreator), std::end(sorrelin::kWideCreator), m_szCreator);
  InitObjectList();
}

// Kept: the channel and the reader's objects stay; ClosePDFFile is what ends them.
CCreatePDF::~CCreatePDF() {
  delete m_pReader;
  m_pReader = nullptr;
}
