// The model of a document's cross-reference.
#include <sorrelin/document/cxref.h>

#include <algorithm>

namespace sorrelin {

namespace {

// Marks count by the low 32 bits of their offset, as signed numbers.
int32_t SortKey(OffsetMark const& mark) { return static_cast<int32_t>(mark.nOffset); }

}  // namespace

void CXRef::FinishExtents() {
  std::stable_sort(m_Marks.begin(), m_Marks.end(), [](OffsetMark const& a, OffsetMark const& b) {
    return SortKey(a) < SortKey(b);
  });
  for (size_t i = 0; i + 1 < m_Marks.size(); ++i) {
    if (m_Marks[i].pExtent == nullptr) continue;
    m_Marks[i].pExtent->nEnd = static_cast<DWORD>(m_Marks[i + 1].nOffset);
  }
}

}  // namespace sorrelin
