// A program of the layer document, which links it and those below it alone.
#include <sorrelin/document/object_loader.h>

#include <memory>
#include <string>

int main() {
  std::string const document = "%PDF-1.4 3 0 obj (a) endobj ";
  sorrelin::FileChannel* const channel =
      sorrelin::ChannelAttachMemory(document.data(), static_cast<DWORD>(document.size()), true);
  sorrelin::DocumentFile file;
  file.SetChannel(channel, sorrelin::DocumentFile::Growth::kFixed);
  sorrelin::IndexedObjects indexed(file);
  auto const table = std::make_unique<sorrelin::ObjectTable>();
  table->Change(3).nOffset = 9;
  bool const found =
      sorrelin::ObjectLoader(file, indexed, *table).Open(3).Front() == "3 0 obj (a) endobj ";
  sorrelin::ChannelClose(channel);
  delete channel;
  return found ? 0 : 1;
}
