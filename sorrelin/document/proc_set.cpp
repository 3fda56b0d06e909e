// The image kinds that a /ProcSet names.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/document/document_file.h>
#include <sorrelin/document/loaded_object.h>
#include <sorrelin/document/object_loader.h>
#include <sorrelin/document/object_table.h>
#include <sorrelin/document/proc_set.h>
#include <sorrelin/platform/codes.h>
#include <sorrelin/syntax/byte_view.h>
#include <sorrelin/syntax/value_scan.h>

#include <algorithm>
#include <vector>

namespace sorrelin {

namespace {

constexpr char kKey[] = "ProcSet";

enum class Form { kNone, kArray, kReference, kName };

// What the first telling byte from `at` on says of the value.
Form FormOfValue(ByteView text, uint64_t at) {
  for (; at < text.size; ++at) {
    BYTE const c = text[at];
    if (c == '[') return Form::kArray;
    if (c == '/') return Form::kName;
    if (IsDigitChar(c)) return Form::kReference;
  }
  return Form::kNone;
}

// Kept: the whole text is asked, not the array alone.
DWORD FlagsOf(std::span<BYTE> text) {
  DWORD flags = 0;
  if (HoldsKey(text, "ImageC")) flags |= 4;
  if (HoldsKey(text, "ImageI")) flags |= 2;
  if (HoldsKey(text, "ImageB")) flags |= 1;
  return flags;
}

Status ReadArrayObject(ObjectLoader& objects, DWORD number, DWORD& flags) {
  DWORD const offset = objects.table()[number].nOffset;
  if (offset == 0) return Status::Failed();
  // The size comes first: looking for it may move the channel. Of an object that ends after the
  // document one byte more than there is counts as the rest.
  uint64_t const object_bytes = objects.SizeOf(number);
  FileChannel* const channel = objects.file().channel();
  DWORD const document_bytes = ChannelGetSize(channel, nullptr);
  uint64_t const held = document_bytes - std::min(document_bytes, offset);
  std::vector<BYTE> text(static_cast<size_t>(std::min(object_bytes, held + 1)));
  if (!objects.file().SeekTo(offset)) return Status::Failed(PDF_ERROR_SYSTEM);
  DWORD count = 0;
  ChannelRead(channel, text.data(), static_cast<DWORD>(text.size()), &count, nullptr);
  if (count == 0) return Status::Failed();
  flags = FlagsOf(text);
  return Status::Ok();
}

}  // namespace

Status ReadProcSet(ObjectLoader& objects, std::span<BYTE> text, DWORD& flags) {
  uint64_t const match = FindKey(text.data(), text.size(), kKey, LastByte::kTerminatedOnMiss);
  if (match == kNotFound) return Status::Failed();
  Form const form = FormOfValue({text.data(), text.size()}, match);
  if (form == Form::kNone) return Status::Failed();
  flags = 0;
  if (form == Form::kName) return Status::Failed(PDF_ERROR_INVALID_HANDLE);
  if (form == Form::kReference) {
    DWORD number = 0;
    if (!FindNumber(text, kKey, &number)) return Status::Failed(PDF_ERROR_PROC_SET);
    return ReadArrayObject(objects, number, flags);
  }
  flags = FlagsOf(text);
  return Status::Ok();
}

}  // namespace sorrelin
