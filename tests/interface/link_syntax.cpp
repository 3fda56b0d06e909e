// A program of the layer syntax, which links it and the platform layer alone.
#include <sorrelin/syntax/typed_lookup.h>

#include <string>

int main() {
  std::string text = "/K 42 >>";
  auto const value = sorrelin::FindTypedNumber(
      nullptr, {reinterpret_cast<BYTE*>(text.data()), text.size()}, "/K", sorrelin::kTypeInteger);
  return value == 42 ? 0 : 1;
}
