// A channel over memory, without the layers above.
#include <sorrelin/channel/file_channel.h>

#include <cstring>

int main() {
  sorrelin::FileChannel* const channel = sorrelin::ChannelAttachMemory("text", 4, true);
  char text[5] = {};
  DWORD count = 0;
  bool const read = sorrelin::ChannelRead(channel, text, 4, &count, nullptr) != 0;
  delete channel;
  return read && std::strcmp(text, "text") == 0 ? 0 : 1;
}
