// Around a piece that reads: scan.pdf has two pages of 64 x 48 grey pixels at 300 dpi.
#include <sorrelin/session.hpp>

#include <cstdio>

static void WriteScan() {
  sorrelin::Session session;
  session.Create("scan.pdf");
  for (int page = 0; page < 2; ++page) session.AddPage(sorrelin::Bitmap(64, 48, 8, 300));
  session.Finish();
}

int main() try {
  WriteScan();
/* BLOCK */
  return 0;
} catch (sorrelin::Error const& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
