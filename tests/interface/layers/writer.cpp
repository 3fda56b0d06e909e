// A document written without a session.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/document/document_facts.h>
#include <sorrelin/document/object_table.h>
#include <sorrelin/writer/cross_reference.h>
#include <sorrelin/writer/object_writer.h>
#include <sorrelin/writer/skeleton.h>

#include <memory>
#include <string>

int main() {
  auto const table = std::make_unique<sorrelin::ObjectTable>();
  sorrelin::Output output;
  output.channel = sorrelin::ChannelOpenMemory(100);
  sorrelin::DocumentFacts facts;
  sorrelin::ObjectWriter out(output, *table);
  bool const written = WriteOutlines(out, facts, 0).value() == 1 &&
                       WriteCatalog(out, facts, 0, 1).value() == 2 &&
                       WriteCrossReference(out, facts, sorrelin::EntryRoom(output)).ok();
  std::string const text(reinterpret_cast<char*>(output.channel->buffer.pData), output.offset);
  sorrelin::ChannelClose(output.channel);
  delete output.channel;
  return written &&
                 text.starts_with("1 0 obj\n<<\n/Type /Outlines\n/Count 0\n>>\nendobj\n2 0 obj") &&
                 text.ends_with("startxref\n" + std::to_string((*table)[3].nOffset) + "\n%%EOF\n")
             ? 0
             : 1;
}
