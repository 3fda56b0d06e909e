// The thread's last error and the texts of error numbers.
#include <gtest/gtest.h>
#include <sorrelin/platform/error.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <thread>

namespace {

constexpr DWORD kFlags = 0x1300;

struct Message {
  DWORD length;
  std::string text;
};

Message TextOf(DWORD error) {
  char* text = nullptr;
  DWORD const length =
      FormatMessageA(kFlags, nullptr, error, 0x400, reinterpret_cast<char*>(&text), 0, nullptr);
  Message const message{length, text != nullptr ? text : ""};
  EXPECT_EQ(LocalFree(text), nullptr);
  return message;
}

TEST(LastError, IsWhatWasSet) {
  SetLastError(6009);
  EXPECT_EQ(GetLastError(), 6009u);
  SetLastError(0);
  EXPECT_EQ(GetLastError(), 0u);
}

TEST(LastError, BelongsToItsThread) {
  SetLastError(5);
  DWORD fresh = 77;
  std::thread([&] {
    fresh = GetLastError();
    SetLastError(38);
  }).join();
  EXPECT_EQ(fresh, 0u);
  EXPECT_EQ(GetLastError(), 5u);
}

TEST(FormatMessage, MissingFileReadsAsTheSystemSays) {
  EXPECT_EQ(TextOf(2).text, std::strerror(ENOENT));
}

TEST(FormatMessage, NumbersReadAsTheErrnoTheyStandFor) {
  EXPECT_EQ(TextOf(3).text, std::strerror(ENOENT));
  EXPECT_EQ(TextOf(4).text, std::strerror(EMFILE));
  EXPECT_EQ(TextOf(5).text, std::strerror(EACCES));
  EXPECT_EQ(TextOf(8).text, std::strerror(ENOMEM));
  EXPECT_EQ(TextOf(19).text, std::strerror(EROFS));
  EXPECT_EQ(TextOf(80).text, std::strerror(EEXIST));
  EXPECT_EQ(TextOf(112).text, std::strerror(ENOSPC));
  EXPECT_EQ(TextOf(206).text, std::strerror(ENAMETOOLONG));
  EXPECT_EQ(TextOf(223).text, std::strerror(EFBIG));
  EXPECT_EQ(TextOf(1117).text, std::strerror(EIO));
}

TEST(FormatMessage, NumbersWithoutErrnoHaveTextsOfTheirOwn) {
  EXPECT_EQ(TextOf(38).text, "The end of the file was reached");
  EXPECT_EQ(TextOf(157).text, "The memory block is empty");
  EXPECT_EQ(TextOf(158).text, "The memory block is not locked");
  EXPECT_EQ(TextOf(1168).text, "Not found");
  EXPECT_EQ(TextOf(6009).text, "The document is read-only");
}

TEST(FormatMessage, UnknownNumberIsNamed) {
  EXPECT_EQ(TextOf(4711).text, "System error 4711");
  EXPECT_EQ(TextOf(0xFFFFFFFF).text, "System error 4294967295");
}

TEST(FormatMessage, EveryDeclaredNumberHasALineWithoutItsEnd) {
  for (DWORD const error : {0u,   2u,   3u,   4u,   5u,   6u,   8u,    19u,   31u,  32u,  38u,
                            50u,  80u,  87u,  109u, 112u, 122u, 123u,  126u,  127u, 131u, 132u,
                            145u, 157u, 158u, 183u, 206u, 223u, 1117u, 1168u, 6009u}) {
    Message const message = TextOf(error);
    EXPECT_EQ(message.length, message.text.size());
    EXPECT_FALSE(message.text.empty()) << error;
    EXPECT_EQ(message.text.find_first_of("\r\n"), std::string::npos) << error;
    EXPECT_NE(message.text, "System error " + std::to_string(error));
  }
}

TEST(FormatMessage, SuccessLeavesTheLastError) {
  SetLastError(38);
  TextOf(2);
  EXPECT_EQ(GetLastError(), 38u);
}

TEST(FormatMessage, OtherFlagsAreRefused) {
  char buffer[100] = "kept";
  for (DWORD const flags : {0u, 0x1000u, 0x1200u, 0x1100u, 0x0300u, 0x1301u}) {
    SetLastError(0);
    EXPECT_EQ(FormatMessageA(flags, nullptr, 2, 0x400, buffer, sizeof buffer, nullptr), 0u);
    EXPECT_EQ(GetLastError(), 87u);
  }
  EXPECT_STREQ(buffer, "kept");
  EXPECT_EQ(FormatMessageA(kFlags, nullptr, 2, 0x400, nullptr, 0, nullptr), 0u);
}

TEST(LocalFree, OfNullIsHarmless) { EXPECT_EQ(LocalFree(nullptr), nullptr); }

}  // namespace
