// Construction, destruction and assignment of a session.
#include <sorrelin/frame/session.h>
#include <sorrelin/frame/session_state.h>

#include <new>

using sorrelin::SessionState;

namespace {

SessionState* NewState() {
  try {
    return new SessionState;
  } catch (std::bad_alloc const&) {
    return nullptr;
  }
}

}  // namespace

CCreatePDF::CCreatePDF() : m_pState(NewState()) {}

// Kept: the channel stays open; ClosePDFFile is what closes it.
CCreatePDF::~CCreatePDF() { delete m_pState; }

CCreatePDF& CCreatePDF::operator=(CCreatePDF const& other) {
  if (m_pState != nullptr && other.m_pState != nullptr) {
    *m_pState = *other.m_pState;
  } else if (this != &other) {
    delete m_pState;
    m_pState =
        other.m_pState != nullptr ? new (std::nothrow) SessionState(*other.m_pState) : nullptr;
  }
  return *this;
}
