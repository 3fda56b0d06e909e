// The document under way.
#include <sorrelin/document/reader_state.h>
#include <sorrelin/writer/draft.h>

namespace sorrelin {

ObjectLoader Draft::Objects() const {
  reader.file.TakeNote();
  return {reader.file, reader.objects, table};
}

ObjectWriter Draft::Writer() const {
  reader.file.Forget();
  return {output, table};
}

}  // namespace sorrelin
