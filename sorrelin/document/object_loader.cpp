// The way to an object by number.
#include <sorrelin/document/document_file.h>
#include <sorrelin/document/indexed_objects.h>
#include <sorrelin/document/loaded_object.h>
#include <sorrelin/document/object_loader.h>
#include <sorrelin/document/object_table.h>
#include <sorrelin/platform/codes.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/syntax/byte_view.h>
#include <sorrelin/syntax/value_scan.h>

#include <algorithm>
#include <new>
#include <string_view>

namespace sorrelin {

namespace {

constexpr std::string_view kEndobj = "endobj";
constexpr DWORD kFirstLook = 512;
constexpr DWORD kMostLook = 64 * 1024;

// Size of the object in the `bytes` bytes at `offset`: through "endobj" and one byte more, if no
// NUL precedes it.
DWORD SizeThroughEndobj(DocumentFile& file, DWORD offset, DWORD bytes) {
  DWORD wanted = kFirstLook;
  for (DWORD at = 0; at < bytes;) {
    DWORD const look = std::min(wanted, bytes - at);
    auto const seen = file.Look(offset + at, look);
    if (!seen || seen->size() < look) return bytes;
    std::string_view const text = ByteView{seen->data(), seen->size()}.Text();
    size_t const found = text.find(kEndobj);
    if (found != std::string_view::npos) {
      return at + static_cast<DWORD>(found + kEndobj.size() + 1);
    }
    if (text.size() < look || at + look == bytes) return bytes;
    at += look - static_cast<DWORD>(kEndobj.size() - 1);
    wanted = std::min(4 * wanted, kMostLook);
  }
  return bytes;
}

// A new, unlocked block of the file's bytes; null if the file has fewer, or none are asked for.
HGLOBAL ReadBlock(DocumentFile& file, DWORD offset, DWORD bytes) {
  if (bytes == 0) return nullptr;
  OwnedBlock block(GlobalAlloc(GHND, bytes));
  bool read = false;
  {
    LockedBlock const lock(block.get());
    if (!lock) throw std::bad_alloc();
    read = file.Read(offset, lock.bytes().data(), bytes) == bytes;
  }
  return read ? block.Release() : nullptr;
}

}  // namespace

HGLOBAL ObjectLoader::Load(DWORD number) { return Fetch(number).block.Release(); }

LoadedObject ObjectLoader::Open(DWORD number) { return LoadedObject(Fetch(number)); }

bool ObjectLoader::Lacks(DWORD number, std::string_view key) { return indexed_.Lacks(number, key); }

DWORD ObjectLoader::SizeOf(DWORD number) {
  if (number == 0) return 0;
  ObjectBytes const object = indexed_.Fetch(number, 0);
  if (object.valid) return static_cast<DWORD>(GlobalSize(object.block.get()));
  return TableSize(number);
}

ObjectBytes ObjectLoader::Fetch(DWORD number) {
  if (number == 0) return {};
  ObjectBytes object = indexed_.Fetch(number, 0);
  if (!object.valid) object = {OwnedBlock(LoadFromTable(number))};
  return object;
}

bool ObjectLoader::ReadNumber(std::span<BYTE> text, char const* key, DWORD* value) {
  if (!IsReferenceAfter(text, key)) return FindNumber(text, key, value);
  DWORD number = 0;
  DWORD generation = 0;
  return FindPair(text, key, &number, &generation) && ReadNumberOf(number, value);
}

bool ObjectLoader::ReadNumberOf(DWORD number, DWORD* value) {
  LoadedObject const object = Open(number);
  return object && FindNumber(object.text(), "obj", value);
}

// From the row's offset to the next one in the table, or to the document's end; less if an "endobj"
// can be seen in it. An offset after the end gives a size that no read delivers.
DWORD ObjectLoader::TableSize(DWORD number) {
  if (!file_.IsOpen()) return 0;
  DWORD const offset = table_[number].nOffset;
  DWORD const end = table_.NextOffsetAbove(offset, file_.Size());
  if (offset > end) return end - offset;
  return SizeThroughEndobj(file_, offset, end - offset);
}

// Leaves the channel after the bytes that it read.
HGLOBAL ObjectLoader::LoadFromTable(DWORD number) {
  DWORD const offset = table_[number].nOffset;
  if (!file_.IsOpen()) {
    // The system's error becomes that of an invalid handle.
    file_.SeekTo(offset);
    if (offset != 0) file_.Note(PDF_ERROR_SYSTEM);
    return nullptr;
  }
  // A seek fails only for an offset that reads as a negative number; the others save the call.
  // Where the file was closed under the session, ReadBlock fails.
  if (static_cast<LONG>(offset) < 0 && !file_.SeekTo(offset)) {
    file_.Note(PDF_ERROR_SYSTEM);
    return nullptr;
  }
  WorkBudget& work = file_.work();
  if (work.IsOpening() && work.IsUsedUp()) return nullptr;
  DWORD const size = TableSize(number);
  DWORD const held = file_.Size() - std::min(file_.Size(), offset);
  // A size that the document does not hold costs an opening nothing: nothing is read.
  bool const allowed = size <= held && (!work.IsOpening() || work.Spend(size));
  HGLOBAL const block = allowed ? ReadBlock(file_, offset, size) : nullptr;
  if (block == nullptr && !file_.SeekTo(offset)) file_.Note(PDF_ERROR_SYSTEM);
  file_.SeekTo(offset + std::min(size, held));
  return block;
}

}  // namespace sorrelin
