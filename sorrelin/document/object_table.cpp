// The object table.
#include <sorrelin/document/object_table.h>

namespace sorrelin {

void ObjectTable::Clear() {
  rows_.fill({});
  by_offset_.Clear();
}

}  // namespace sorrelin
