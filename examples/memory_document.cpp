// Makes a document of two bilevel pages in memory, coded with Group 4, and writes it to a file.
// memory_document FILE
#include <sorrelin/session.hpp>

#include <cstdio>
#include <fstream>

namespace {

constexpr LONG kSize = 800;
constexpr double kDpi = 300;

// A disc, black on white: a bit 1 is white.
sorrelin::Bitmap MakeDisc(LONG radius) {
  sorrelin::Bitmap disc(kSize, kSize, 1, kDpi);
  for (LONG y = 0; y < kSize; ++y) {
    auto const row = disc.Row(y);
    for (LONG x = 0; x < kSize; ++x) {
      LONG const dx = x - kSize / 2;
      LONG const dy = y - kSize / 2;
      if (dx * dx + dy * dy > radius * radius) {
        row[static_cast<size_t>(x / 8)] |= static_cast<BYTE>(0x80 >> (x % 8));
      }
    }
  }
  return disc;
}

sorrelin::MemoryDocument MakeDocument() {
  sorrelin::Session session;
  session.CreateInMemory(64 * 1024);
  for (LONG const radius : {100, 300}) {
    session.AddPage(MakeDisc(radius), sorrelin::PageCoding::Group4());
  }
  return session.FinishInMemory();
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fprintf(stderr, "usage: memory_document FILE\n");
    return 2;
  }
  try {
    sorrelin::MemoryDocument const document = MakeDocument();
    std::ofstream file(arguments[1], std::ios::binary);
    file.write(reinterpret_cast<char const*>(document.data()),
               static_cast<std::streamsize>(document.size()));
    return file.flush() ? 0 : 1;
  } catch (sorrelin::Error const& error) {
    std::fprintf(stderr, "%s (code %u)\n", error.what(), static_cast<unsigned>(error.code()));
    return 1;
  }
}
