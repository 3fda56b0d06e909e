// Key searches of the scanner: what is found, and what a search leaves in the buffer's last byte.
#include <gtest/gtest.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/syntax/scanner.h>
#include <tests/support/scan_buffer.h>

#include <functional>
#include <memory>
#include <string>

namespace {

using test::Cut;
using test::ScanBuffer;
using test::WithNuls;

class KeySearch : public testing::Test {
 protected:
  std::unique_ptr<CCreatePDF> const session_ = std::make_unique<CCreatePDF>();

  void SetUp() override { session_->PDF_SetLastError(PDF_ERROR_NONE); }
  int IsFlagSet(std::string const& text, char const* key) {
    ScanBuffer buffer(text);
    return session_->IsFlagSet(buffer.data(), buffer.size(), key);
  }
};

TEST_F(KeySearch, BeginningIsTheFirstMatch) {
  ScanBuffer buffer("<</Length1 5 /Length 7>>");
  EXPECT_EQ(session_->GetKeyBeginning(buffer.data(), buffer.size(), "Length"), buffer.data() + 3);
  EXPECT_EQ(session_->GetKeyBeginning(buffer.data(), buffer.size(), "/Width"), nullptr);
}

TEST_F(KeySearch, OffsetZeroIsAMatchAtTheStartAndAMiss) {
  ScanBuffer buffer("/Kids [3 0 R] /Count 1 ");
  EXPECT_EQ(session_->GetKeyBeginningByteOffset(buffer.data(), buffer.size(), "/Kids"), 0u);
  EXPECT_EQ(session_->GetKeyBeginningByteOffset(buffer.data(), buffer.size(), "/Parent"), 0u);
  EXPECT_EQ(session_->GetKeyBeginningByteOffset(buffer.data(), buffer.size(), "/Count"), 14u);
}

TEST_F(KeySearch, KeysAreFoundWhereverTheirTextStands) {
  EXPECT_EQ(IsFlagSet("<</ImageMask true>> ", "Image"), 1);
  EXPECT_EQ(IsFlagSet("[/PDF /ImageC] ", "Image"), 1);
  EXPECT_EQ(IsFlagSet("<</Title (an Image)>> ", "Image"), 1);
  EXPECT_EQ(IsFlagSet("<</A <</B <</Image 1>>>>>> ", "Image"), 1);
  EXPECT_EQ(IsFlagSet("<</image true>> ", "Image"), 0);
}

TEST_F(KeySearch, LastByteIsNeverPartOfAMatch) {
  EXPECT_EQ(IsFlagSet("/Image", "Image"), 0);
  EXPECT_EQ(IsFlagSet("/Image ", "Image"), 1);
  EXPECT_EQ(IsFlagSet("R", "R"), 0);
}

TEST_F(KeySearch, KeyBehindANulIsNotFound) {
  EXPECT_EQ(IsFlagSet(WithNuls("stream\n\0\1\2 /Image endstream "), "Image"), 0);
  EXPECT_EQ(IsFlagSet(WithNuls("/Image\0 "), "Image"), 1);
}

TEST_F(KeySearch, MissSetsNoError) {
  EXPECT_EQ(IsFlagSet("/Type ", "Image"), 0);
  EXPECT_EQ(session_->PDF_GetLastError(), DWORD{PDF_ERROR_NONE});
}

TEST_F(KeySearch, MissingArgumentsAreError2) {
  ScanBuffer b("/Type /Page ");
  std::function<bool()> const calls[] = {
      [&] { return session_->GetKeyBeginning(nullptr, b.size(), "k") == nullptr; },
      [&] { return session_->GetKeyBeginning(b.data(), 0, "k") == nullptr; },
      [&] { return session_->GetKeyBeginning(b.data(), b.size(), nullptr) == nullptr; },
      [&] { return session_->GetKeyBeginningByteOffset(nullptr, b.size(), "k") == 0; },
      [&] { return session_->GetKeyBeginningByteOffset(b.data(), 0, "k") == 0; },
      [&] { return session_->GetKeyBeginningByteOffset(b.data(), b.size(), nullptr) == 0; },
      [&] { return session_->IsFlagSet(nullptr, b.size(), "k") == 0; },
      [&] { return session_->IsFlagSet(b.data(), 0, "k") == 0; },
      [&] { return session_->IsFlagSet(b.data(), b.size(), nullptr) == 0; },
  };
  for (auto const& call : calls) {
    session_->PDF_SetLastError(PDF_ERROR_NONE);
    EXPECT_TRUE(call());
    EXPECT_EQ(session_->PDF_GetLastError(), DWORD{PDF_ERROR_INVALID_HANDLE});
  }
}

// One search of the scanner, on a buffer that holds "Key" or does not.
struct Search {
  char const* name;
  bool cuts_on_miss;
  std::function<int(CCreatePDF&, ScanBuffer&)> run;
};

DWORD g_first = 0;
DWORD g_second = 0;
DWORD g_array[4];

Search const kSearches[] = {
    {"GetKeyBeginning", false,
     [](CCreatePDF& s, ScanBuffer& b) {
       return s.GetKeyBeginning(b.data(), b.size(), "Key") != nullptr ? 1 : 0;
     }},
    {"GetKeyBeginningByteOffset", false,
     [](CCreatePDF& s, ScanBuffer& b) {
       return static_cast<int>(s.GetKeyBeginningByteOffset(b.data(), b.size(), "Key"));
     }},
    {"IsFlagSet", false,
     [](CCreatePDF& s, ScanBuffer& b) { return s.IsFlagSet(b.data(), b.size(), "Key"); }},
    {"GetKeyWithValue", false,
     [](CCreatePDF& s, ScanBuffer& b) {
       BYTE value[40];
       DWORD size = sizeof value;
       return s.GetKeyWithValue(b.data(), b.size(), "Key", value, &size);
     }},
    {"IsValueName", false,
     [](CCreatePDF&, ScanBuffer& b) {
       return sorrelin::IsValueName(b.data(), b.size(), "Key") ? 1 : 0;
     }},
    {"IsDictionary", false,
     [](CCreatePDF& s, ScanBuffer& b) {
       int flag = 0;
       return s.IsDictionary(b.data(), b.size(), flag, "Key");
     }},
    {"ParseKids", false,
     [](CCreatePDF& s, ScanBuffer& b) { return s.ParseKids(b.data(), b.size()); }},
    {"GetValue, two", true,
     [](CCreatePDF& s, ScanBuffer& b) {
       return s.GetValue(b.data(), b.size(), "Key", &g_first, &g_second);
     }},
    {"GetValue, one", true,
     [](CCreatePDF& s, ScanBuffer& b) { return s.GetValue(b.data(), b.size(), "Key", &g_first); }},
    {"GetValueFromArray", true,
     [](CCreatePDF& s, ScanBuffer& b) {
       return s.GetValueFromArray(b.data(), b.size(), "Key", &g_first, &g_second);
     }},
    {"GetNumericArray", true,
     [](CCreatePDF&, ScanBuffer& b) {
       return sorrelin::GetNumericArray(b.data(), b.size(), "Key", g_array, 2);
     }},
    {"GetStringValue", true,
     [](CCreatePDF& s, ScanBuffer& b) {
       char value[40];
       uint64_t size = sizeof value - 1;
       return s.GetStringValue(b.data(), b.size(), "Key", value, &size);
     }},
    {"IsReference", true,
     [](CCreatePDF& s, ScanBuffer& b) { return s.IsReference(b.data(), b.size(), "Key"); }},
    {"GetIntPairAfterKey", true,
     [](CCreatePDF&, ScanBuffer& b) {
       return sorrelin::GetIntPairAfterKey(b.data(), b.size(), "Key", &g_first, &g_second);
     }},
    {"GetIntAfterKey", true,
     [](CCreatePDF&, ScanBuffer& b) {
       return sorrelin::GetIntAfterKey(b.data(), b.size(), "Key", &g_first);
     }},
    {"IsValueReference", true,
     [](CCreatePDF&, ScanBuffer& b) {
       return sorrelin::IsValueReference(b.data(), b.size(), "Key") ? 1 : 0;
     }},
};

TEST_F(KeySearch, MissCutsTheBufferOfTheValueReadersOnly) {
  for (Search const& search : kSearches) {
    std::string const text = "<</Other 1 2 R]>>Z";
    ScanBuffer buffer(text);
    EXPECT_EQ(search.run(*session_, buffer), 0) << search.name;
    EXPECT_EQ(buffer.Now(), search.cuts_on_miss ? Cut(text) : text) << search.name;
  }
}

TEST_F(KeySearch, HitLeavesTheBufferAsItWas) {
  for (Search const& search : kSearches) {
    std::string const text = "/Key 1 2 R]  Kids[]Z";
    ScanBuffer buffer(text);
    search.run(*session_, buffer);
    EXPECT_EQ(buffer.Now(), text) << search.name;
  }
}

TEST_F(KeySearch, FirstValueAndProcSetCutTheBufferOnAMiss) {
  std::string const text = "no name 1 2 Z";
  ScanBuffer first(text);
  EXPECT_EQ(session_->GetFirstValue(first.data(), first.size(), &g_first, &g_second), 0);
  EXPECT_EQ(first.Now(), Cut(text));
  ScanBuffer proc_set(text);
  EXPECT_EQ(session_->GetProcSetData(proc_set.data(), proc_set.size()), 0);
  EXPECT_EQ(proc_set.Now(), Cut(text));
}

TEST_F(KeySearch, FirstValueAndProcSetKeepTheBufferOnAHit) {
  std::string const text = "/ProcSet [/ImageB] 1 2 Z";
  ScanBuffer buffer(text);
  EXPECT_EQ(session_->GetFirstValue(buffer.data(), buffer.size(), &g_first, &g_second), 1);
  EXPECT_EQ(session_->GetProcSetData(buffer.data(), buffer.size()), 1);
  EXPECT_EQ(buffer.Now(), text);
}

TEST_F(KeySearch, NamesOfMoreThan128BytesMatchByTheirFirst128) {
  ScanBuffer buffer("/" + std::string(127, 'k') + " 1 2 ");
  std::string const key(200, 'k');
  EXPECT_EQ(
      session_->GetValueFromArray(buffer.data(), buffer.size(), key.c_str(), &g_first, &g_second),
      1);
}

TEST_F(KeySearch, BufferContainsLooksAtTheLastByteToo) {
  ScanBuffer buffer("/Length");
  EXPECT_TRUE(sorrelin::BufferContains(buffer.data(), buffer.size(), "/Length"));
  EXPECT_FALSE(sorrelin::BufferContains(buffer.data(), buffer.size(), "/Width"));
  EXPECT_EQ(buffer.Now(), "/Length");
}

TEST_F(KeySearch, BufferContainsStopsAtANul) {
  ScanBuffer buffer(WithNuls("a\0/Length"));
  EXPECT_FALSE(sorrelin::BufferContains(buffer.data(), buffer.size(), "/Length"));
}

TEST_F(KeySearch, BufferContainsIsFalseForMissingArguments) {
  ScanBuffer b("/Length");
  EXPECT_FALSE(sorrelin::BufferContains(nullptr, b.size(), "/Length"));
  EXPECT_FALSE(sorrelin::BufferContains(b.data(), 0, "/Length"));
  EXPECT_FALSE(sorrelin::BufferContains(b.data(), b.size(), nullptr));
}

BYTE* Find(ScanBuffer& buffer, std::string const& pattern) {
  return sorrelin::FindBytes(buffer.data(), buffer.size(),
                             reinterpret_cast<BYTE const*>(pattern.data()), pattern.size());
}

TEST_F(KeySearch, FindBytesGoesOverNuls) {
  ScanBuffer buffer(WithNuls("a\0b\0c"));
  EXPECT_EQ(Find(buffer, WithNuls("\0c")), buffer.data() + 3);
  EXPECT_EQ(Find(buffer, "d"), nullptr);
  EXPECT_EQ(Find(buffer, WithNuls("c\0")), nullptr);
}

TEST_F(KeySearch, FindBytesNeedsABufferAndAPattern) {
  ScanBuffer buffer("abc");
  BYTE const pattern[] = {'a'};
  EXPECT_EQ(sorrelin::FindBytes(nullptr, 3, pattern, 1), nullptr);
  EXPECT_EQ(sorrelin::FindBytes(buffer.data(), 0, pattern, 1), nullptr);
  EXPECT_EQ(sorrelin::FindBytes(buffer.data(), 3, nullptr, 1), nullptr);
  EXPECT_EQ(sorrelin::FindBytes(buffer.data(), 3, pattern, 0), nullptr);
}

}  // namespace
