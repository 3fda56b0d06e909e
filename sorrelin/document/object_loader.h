// The way to an object by number: through the index of a document that was opened by the stream
// route, else through the object table.
#ifndef SORRELIN_DOCUMENT_OBJECT_LOADER_H_
#define SORRELIN_DOCUMENT_OBJECT_LOADER_H_

#include <sorrelin/platform/types.h>

#include <span>
#include <string_view>

namespace sorrelin {

class DocumentFile;
class IndexedObjects;
class LoadedObject;
class ObjectTable;
struct ObjectBytes;

// Both operations may move the channel's position.
class ObjectLoader {
 public:
  ObjectLoader(DocumentFile& file, IndexedObjects& indexed, ObjectTable& table)
      : file_(file), indexed_(indexed), table_(table) {}

  // An object's text in a new, unlocked block; null for object 0, and for one that cannot be read.
  // Notes code 1 where the channel cannot be positioned.
  HGLOBAL Load(DWORD number);
  ObjectBytes Fetch(DWORD number);
  LoadedObject Open(DWORD number);

  // Whether the object's text is known to lack `key`, a name, without loading it.
  bool Lacks(DWORD number, std::string_view key);

  // The bytes of an object's text; 0 for object 0.
  // Kept: in a document of the stream route a size costs a whole fetch.
  DWORD SizeOf(DWORD number);

  // The number after `key`, or in the object that a reference after it names. Terminates, see
  // value_scan.h.
  bool ReadNumber(std::span<BYTE> text, char const* key, DWORD* value);
  // The number that an object consists of.
  bool ReadNumberOf(DWORD number, DWORD* value);

  DocumentFile& file() { return file_; }
  ObjectTable& table() { return table_; }

 private:
  DWORD TableSize(DWORD number);
  HGLOBAL LoadFromTable(DWORD number);

  DocumentFile& file_;
  IndexedObjects& indexed_;
  ObjectTable& table_;
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_OBJECT_LOADER_H_
