// The byte scanner: each of its operations on a block of exactly the input's bytes, of which all
// but the last must be unchanged.
//
// The input is a line with the key that is looked for, then the bytes of an object.
#include <sorrelin/frame/session.h>
#include <sorrelin/syntax/scanner.h>

#include <cstring>
#include <vector>

#include "fuzz/fuzz_input.h"

namespace {

class Scan {
 public:
  Scan(std::string key, fuzz::Data bytes) : key_(std::move(key)), bytes_(bytes) {}

  // Runs one operation on a copy of its own.
  template <typename Operation>
  void Try(Operation operation) const {
    fuzz::Copy copy(bytes_);
    operation(copy.data(), copy.size(), key_.c_str());
    size_t const kept = bytes_.size() - 1;
    fuzz::Require(std::memcmp(copy.data(), bytes_.data(), kept) == 0,
                  "the scanner writes in front of the last byte");
  }

 private:
  std::string key_;
  fuzz::Data bytes_;
};

CCreatePDF& Session() {
  static auto const session = std::make_unique<CCreatePDF>();
  return *session;
}

void RequireInside(BYTE const* found, BYTE const* data, DWORD size) {
  fuzz::Require(found == nullptr || (found >= data && found < data + size), "a find outside");
}

void TryNumbers(Scan const& scan) {
  DWORD a = 0;
  DWORD b = 0;
  CCreatePDF& s = Session();
  scan.Try([&](BYTE* d, DWORD n, char const* key) { s.GetValue(d, n, key, &a); });
  scan.Try([&](BYTE* d, DWORD n, char const* key) { s.GetValue(d, n, key, &a, &b); });
  scan.Try([&](BYTE* d, DWORD n, char const*) { s.GetFirstValue(d, n, &a, &b); });
  scan.Try([&](BYTE* d, DWORD n, char const* key) { s.GetValueFromArray(d, n, key, &a, &b); });
  scan.Try(
      [&](BYTE* d, DWORD n, char const* key) { sorrelin::GetIntPairAfterKey(d, n, key, &a, &b); });
  scan.Try(
      [&](BYTE* d, DWORD n, char const*) { sorrelin::GetIntPairAfterKey(d, n, nullptr, &a, &b); });
  scan.Try([&](BYTE* d, DWORD n, char const* key) { sorrelin::GetIntAfterKey(d, n, key, &a); });
  for (DWORD const count : {1u, 4u, 6u}) {
    scan.Try([&](BYTE* d, DWORD n, char const* key) {
      std::vector<DWORD> values(count);
      sorrelin::GetNumericArray(d, n, count == 6 ? nullptr : key, values.data(), count);
    });
  }
}

void TryKeys(Scan const& scan) {
  CCreatePDF& s = Session();
  scan.Try([&](BYTE* d, DWORD n, char const* key) {
    RequireInside(s.GetKeyBeginning(d, n, key), d, n);
  });
  scan.Try([&](BYTE* d, DWORD n, char const* key) {
    fuzz::Require(s.GetKeyBeginningByteOffset(d, n, key) < n, "an offset outside");
  });
  scan.Try([&](BYTE* d, DWORD n, char const* key) { s.IsFlagSet(d, n, key); });
  scan.Try([&](BYTE* d, DWORD n, char const* key) { s.IsReference(d, n, key); });
  scan.Try([&](BYTE* d, DWORD n, char const* key) {
    int dictionary = 0;
    s.IsDictionary(d, n, dictionary, key);
  });
  scan.Try([&](BYTE* d, DWORD n, char const*) { s.GetObjectType(d, n); });
  scan.Try([&](BYTE* d, DWORD n, char const*) { s.GetProcSetData(d, n); });
  scan.Try([&](BYTE* d, DWORD n, char const* key) { sorrelin::BufferContains(d, n, key); });
  scan.Try([&](BYTE* d, DWORD n, char const* key) { sorrelin::IsValueName(d, n, key); });
  scan.Try([&](BYTE* d, DWORD n, char const* key) { sorrelin::IsValueReference(d, n, key); });
  scan.Try([&](BYTE* d, DWORD n, char const* key) {
    auto const* pattern = reinterpret_cast<BYTE const*>(key);
    RequireInside(sorrelin::FindBytes(d, n, pattern, std::strlen(key)), d, n);
  });
}

// Values are copied into blocks of exactly the room that is passed.
void TryCopies(Scan const& scan) {
  CCreatePDF& s = Session();
  for (size_t const room : {0u, 3u, 127u}) {
    scan.Try([&](BYTE* d, DWORD n, char const* key) {
      std::vector<char> value(room + 1);
      uint64_t size = room;
      s.GetStringValue(d, n, key, value.data(), &size);
    });
    scan.Try([&](BYTE* d, DWORD n, char const* key) {
      std::vector<BYTE> value(room + 1);
      DWORD size = static_cast<DWORD>(room);
      s.GetKeyWithValue(d, n, key, value.data() + 1, &size);
    });
  }
  scan.Try([&](BYTE* d, DWORD n, char const*) {
    char* table = nullptr;
    sorrelin::ListDictionaryKeys(d, n, &table);
    std::free(table);
  });
  scan.Try([&](BYTE* d, DWORD n, char const* key) {
    WCHAR* wide = nullptr;
    char* narrow = nullptr;
    uint64_t length = 0;
    if (s.GetStringValue2W(d, n, key, &wide, &length) != 0) std::free(wide);
    if (s.GetStringValue2A(d, n, key, &narrow, &length) != 0) std::free(narrow);
  });
}

void TryTexts(std::string const& text) {
  char* name = nullptr;
  if (sorrelin::ParseName(text.c_str(), &name) != 0) std::free(name);
  for (char const opening : {'(', '<', '['}) {
    char* out = nullptr;
    uint64_t length = 0;
    if (sorrelin::ExtractBracketed(text.c_str(), text.size(), opening, &out, &length) != 0) {
      std::free(out);
    }
  }
  if (text.size() >= 2) {
    std::vector<BYTE> out(text.size() / 2 - 1);
    sorrelin::DecodeHexString(text.c_str(), text.size(), out.data());
  }
  sorrelin::IsAllDigits(text.c_str());
  sorrelin::IsNumericText(text.c_str(), 0);
  sorrelin::IsNumericText(text.c_str(), 5);
  DWORD number = 0;
  DWORD generation = 0;
  sorrelin::ParseObjectHeader(text.c_str(), &number, &generation);
  std::free(sorrelin::AnsiToWide(text.c_str()));
}

}  // namespace

int LLVMFuzzerTestOneInput(uint8_t const* bytes, size_t size) {
  if (fuzz::HoldsEndlessNumber({bytes, size})) return 0;
  fuzz::Cursor input({bytes, size});
  std::string const key = input.Line();
  if (key.empty() || input.Rest().empty()) return 0;
  Scan const scan(key, input.Rest());
  TryNumbers(scan);
  TryKeys(scan);
  TryCopies(scan);
  TryTexts(std::string(fuzz::TextOf(input.Rest())));
  return 0;
}
