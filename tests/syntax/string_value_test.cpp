// Tokens and value texts after a key.
#include <gtest/gtest.h>
#include <sorrelin/frame/session.h>
#include <tests/support/scan_buffer.h>

#include <functional>
#include <memory>
#include <string>

namespace {

using test::ScanBuffer;
using test::WithNuls;

constexpr DWORD kUnsetSize = 77;

class Values : public testing::Test {
 protected:
  std::unique_ptr<CCreatePDF> const session_ = std::make_unique<CCreatePDF>();

  void SetUp() override { session_->PDF_SetLastError(PDF_ERROR_NONE); }

  // The token, or "-" and the size that came back.
  std::string Token(std::string const& text, char const* key, uint64_t capacity = 20) {
    ScanBuffer buffer(text);
    std::string value(static_cast<size_t>(capacity) + 1, '#');
    uint64_t size = capacity;
    if (session_->GetStringValue(buffer.data(), buffer.size(), key, value.data(), &size) == 0) {
      return "-" + std::to_string(size);
    }
    EXPECT_EQ(value[static_cast<size_t>(size)], '\0');
    return value.substr(0, static_cast<size_t>(size));
  }

  // The text from the key on, or "-" and the size that came back.
  std::string WithKey(std::string const& text, char const* key, DWORD capacity = kUnsetSize) {
    ScanBuffer buffer(text);
    std::string value(capacity, '#');
    DWORD size = capacity;
    BYTE* const out = reinterpret_cast<BYTE*>(value.data());
    if (session_->GetKeyWithValue(buffer.data(), buffer.size(), key, out, &size) == 0) {
      return "-" + std::to_string(size);
    }
    EXPECT_EQ(size, capacity);
    return value.substr(0, value.find('\0'));
  }
};

TEST_F(Values, EmptyKeyWithAnEmptyValueIsAnEmptyText) {
  EXPECT_EQ(WithKey("/X 1 ", "", 4), "");
  EXPECT_EQ(WithKey("/X 1 ", "", 0), "-1");
}

TEST_F(Values, TokenBehindAKey) {
  struct {
    char const* what;
    std::string text;
    char const* key;
    std::string expected;
  } const rows[] = {
      {"plain", "/BlackIs1 true/K -1 ", "/BlackIs1", "true"},
      {"key without its slash", "/BlackIs1 true ", "BlackIs1", "true"},
      {"names are passed", "/Type /Page /Parent 3 0 R ", "/Type", "3"},
      {"the rest of a longer key is passed", "/TypeX /Y true ", "/Type", "true"},
      {"match begins with a separator", " X true ", " X", "X"},
      {"other byte ends a token", "/K true) ", "/K", "true"},
      {"bracket separates", "/K[true] ", "/K", "true"},
      {"NUL ends a token", WithNuls("/K true\0 "), "/K", "true"},
      {"point ends a token", "/K 12.5 ", "/K", "12"},
      {"other byte hides what touches it", "/K (abc cd ", "/K", "cd"},
      {"and again: the second one hides the blank", "/K (ab) cd ef ", "/K", "ef"},
      {"other byte hides the byte behind it, a blank too", "/K / ab cd ", "/K", "cd"},
      {"letters behind the hidden byte", "/K -a b ", "/K", "b"},
      {"tab is an other byte", "/K \tab cd ", "/K", "cd"},
  };
  for (auto const& row : rows) EXPECT_EQ(Token(row.text, row.key), row.expected) << row.what;
}

TEST_F(Values, NoTokenStoresSizeZero) {
  EXPECT_EQ(Token("/BlackIs1", "/Black"), "-0") << "no separator behind the key";
  EXPECT_EQ(Token("/Type /Page", "/Type"), "-0") << "only a name";
  EXPECT_EQ(Token("/K true", "/K"), "-0") << "the buffer ends in the token";
}

TEST_F(Values, TokenAtTheEndIsReadBehindALateMatch) { EXPECT_EQ(Token("xx/K true", "/K"), "true"); }

TEST_F(Values, MissingKeyLeavesTheSizeAndTheError) {
  EXPECT_EQ(Token("/Type /Page ", "/BlackIs1"), "-20");
  EXPECT_EQ(session_->PDF_GetLastError(), DWORD{PDF_ERROR_NONE});
}

TEST_F(Values, TokenThatDoesNotFitReportsItsLength) {
  EXPECT_EQ(Token("/BlackIs1 true ", "/BlackIs1", 3), "-4");
  EXPECT_EQ(Token("/BlackIs1 true ", "/BlackIs1", 4), "true");
}

TEST_F(Values, TokenArgumentsAreChecked) {
  ScanBuffer b("/K true ");
  char value[9];
  uint64_t size = 8;
  CCreatePDF& s = *session_;
  std::function<int()> const calls[] = {
      [&] { return s.GetStringValue(nullptr, b.size(), "K", value, &size); },
      [&] { return s.GetStringValue(b.data(), 0, "K", value, &size); },
      [&] { return s.GetStringValue(b.data(), b.size(), nullptr, value, &size); },
      [&] { return s.GetStringValue(b.data(), b.size(), "K", nullptr, &size); },
  };
  for (auto const& call : calls) {
    size = 8;
    s.PDF_SetLastError(PDF_ERROR_NONE);
    EXPECT_EQ(call(), 0);
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(s.PDF_GetLastError(), DWORD{PDF_ERROR_INVALID_HANDLE});
  }
  s.PDF_SetLastError(PDF_ERROR_NONE);
  EXPECT_EQ(s.GetStringValue(b.data(), b.size(), "K", value, nullptr), 0);
  EXPECT_EQ(s.PDF_GetLastError(), DWORD{PDF_ERROR_INVALID_HANDLE});
}

TEST_F(Values, KeyWithItsValue) {
  struct {
    char const* what;
    std::string text;
    char const* key;
    std::string expected;
  } const rows[] = {
      {"a blank ends a value", "<</Encrypt 5 0 R>>", "/Encrypt", "/Encrypt 5"},
      {"a slash ends a value", "/ID<ab>/X ", "/ID", "/ID<ab>"},
      {"a bracket ends a value", "/ID<ab>[x ", "/ID", "/ID<ab>"},
      {"NUL ends a value", WithNuls("/ID<ab>\0x"), "/ID", "/ID<ab>"},
      {"uncounted bracket, blank inside", "/ID [<a> <b>] ", "/ID", "/ID [<a>"},
      {"uncounted bracket, closed again", "/ID [<a>][ /X ", "/ID", "/ID [<a>]["},
      {"dictionary is taken whole", "/E <</A [1 2]/B (x y)>> /X ", "/E", "/E <</A [1 2]/B (x y)>>"},
      {"dictionary in a dictionary", "/E <</A <</B 1>> >> /X ", "/E", "/E <</A <</B 1>> >>"},
      {"the value may be empty", "/E /X ", "/E", "/E "},
  };
  for (auto const& row : rows) EXPECT_EQ(WithKey(row.text, row.key), row.expected) << row.what;
}

TEST_F(Values, ValueThatRunsToTheEndStoresSizeZero) {
  EXPECT_EQ(WithKey("/ID [<a><b>] /X 1 /Y 2 >> ", "/ID"), "-0") << "bracket depth is -1";
  EXPECT_EQ(WithKey("/E <<</A 1>> /X ", "/E"), "-0") << "three open count twice";
  EXPECT_EQ(WithKey("/E <</A <</B 1>>>> /X ", "/E"), "-0") << "four closed count three times";
  EXPECT_EQ(WithKey("xx/Encrypt 5", "/Encrypt"), "-0") << "no end within the size";
}

TEST_F(Values, ValueThatDoesNotFitReportsItsSizeWithTheNul) {
  EXPECT_EQ(WithKey("/Encrypt 5 0 R ", "/Encrypt", 10), "-11");
  EXPECT_EQ(WithKey("/Encrypt 5 0 R ", "/Encrypt", 11), "/Encrypt 5");
}

TEST_F(Values, MissingKeyLeavesTheSize) {
  EXPECT_EQ(WithKey("/Encrypt 5 0 R ", "/ID"), "-77");
  EXPECT_EQ(session_->PDF_GetLastError(), DWORD{PDF_ERROR_NONE});
}

TEST_F(Values, KeyWithValueArgumentsAreChecked) {
  ScanBuffer b("/K true ");
  BYTE value[9];
  DWORD size = 8;
  CCreatePDF& s = *session_;
  std::function<int()> const calls[] = {
      [&] { return s.GetKeyWithValue(nullptr, b.size(), "K", value, &size); },
      [&] { return s.GetKeyWithValue(b.data(), 0, "K", value, &size); },
      [&] { return s.GetKeyWithValue(b.data(), b.size(), nullptr, value, &size); },
      [&] { return s.GetKeyWithValue(b.data(), b.size(), "K", nullptr, &size); },
  };
  for (auto const& call : calls) {
    size = 8;
    s.PDF_SetLastError(PDF_ERROR_NONE);
    EXPECT_EQ(call(), 0);
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(s.PDF_GetLastError(), DWORD{PDF_ERROR_INVALID_HANDLE});
  }
  s.PDF_SetLastError(PDF_ERROR_NONE);
  EXPECT_EQ(s.GetKeyWithValue(b.data(), b.size(), "K", value, nullptr), 0);
  EXPECT_EQ(s.PDF_GetLastError(), DWORD{PDF_ERROR_INVALID_HANDLE});
}

}  // namespace
