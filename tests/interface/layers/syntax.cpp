// A number in an object's text, without the layers above.
#include <sorrelin/syntax/value_scan.h>

#include <cstring>
#include <vector>

int main() {
  char const text[] = "<</Count 7 >>";
  std::vector<BYTE> bytes(text, text + sizeof text);
  DWORD count = 0;
  return sorrelin::FindNumber(bytes, "Count", &count) && count == 7 ? 0 : 1;
}
