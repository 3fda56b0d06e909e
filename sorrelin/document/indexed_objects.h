// The objects of a document that was opened by the stream route, fetched through its index.
#ifndef SORRELIN_DOCUMENT_INDEXED_OBJECTS_H_
#define SORRELIN_DOCUMENT_INDEXED_OBJECTS_H_

#include <sorrelin/platform/types.h>
#include <sorrelin/syntax/object_source.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace sorrelin {

class CXRef;
class DocumentFile;
class ObjectStreamList;
struct ObjectBytes;
struct ObjectId;
struct XRefObjectEntry;

class IndexedObjects : public ObjectSource {
 public:
  explicit IndexedObjects(DocumentFile& file);
  ~IndexedObjects();
  IndexedObjects(IndexedObjects const&) = delete;
  IndexedObjects& operator=(IndexedObjects const&) = delete;

  // Takes the index of another document, which may still be empty. `used` is whether fetches go
  // through it.
  void Open(std::unique_ptr<CXRef> index, bool used);
  // Forgets the document, and what was remembered of its bytes.
  void Close();

  // Null when no document is open.
  CXRef* index() const { return index_.get(); }
  ObjectStreamList* streams() const { return streams_.get(); }
  bool IsUsed() const { return used_; }

  // The object's text from its header through "endobj", with a NUL after it; empty and invalid if
  // the index does not know the object, is not used, or the fetch would cost too much. Moves the
  // channel's position. Throws SorrelinStringError when memory for an object out of an object
  // stream is short.
  ObjectBytes Fetch(DWORD number, DWORD generation);

  // Whether the object is in an object stream, and its text is known to lack `key`, a name: so much
  // is seen without a copy. True costs what a fetch does. Moves the channel's position.
  bool Lacks(DWORD number, std::string_view key);

  std::optional<std::string> TextOf(DWORD number) override;

 private:
  DWORD StreamOffset(XRefObjectEntry const& entry);
  bool FetchIndexed(ObjectId id, ObjectBytes& out);
  bool FetchPlain(ObjectId id, ObjectBytes& out);

  DocumentFile& file_;
  std::unique_ptr<CXRef> index_;
  std::unique_ptr<ObjectStreamList> streams_;
  bool used_ = false;
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_INDEXED_OBJECTS_H_
