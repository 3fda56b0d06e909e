// A bitmap coded and decoded, without the layers above.
#include <sorrelin/image/decoders.h>
#include <sorrelin/image/encoders.h>

#include <cstring>

int main() {
  sorrelin::OwnedBlock const bitmap(GlobalAlloc(GHND, 40 + 4));
  {
    sorrelin::LockedBlock const block(bitmap.get());
    BITMAPINFOHEADER const header{40, 1, 1, 1, 24, 0, 0, 0, 0, 0, 0};
    std::memcpy(block.bytes().data(), &header, sizeof header);
    block.bytes()[40] = 9;
  }
  DWORD size = 0;
  sorrelin::DibView dib(bitmap.get());
  sorrelin::Result<sorrelin::OwnedBlock> const coded = sorrelin::EncodeRaw(dib, size);
  auto const decoded = sorrelin::DecodeRaw(coded.value().get(), {1, 1, 4, nullptr}, {});
  sorrelin::LockedBlock const block(decoded.value().get());
  return size == 3 && block.bytes().size() == 44 && block.bytes()[40] == 9 ? 0 : 1;
}
