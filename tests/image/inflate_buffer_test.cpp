// The inflation of whole zlib streams.
#include <gtest/gtest.h>
#include <sorrelin/image/inflate_buffer.h>
#include <tests/support/pdf_builder.h>

namespace {

using sorrelin::InflateBuffer;
using test::Bytes;

std::string Mixed(size_t bytes) {
  std::string text(bytes, '\0');
  uint32_t state = 1;
  for (char& c : text) c = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
  return text;
}

struct Inflated {
  explicit Inflated(std::string const& source, std::optional<uint64_t> size = std::nullopt,
                    uint64_t work_given = UINT64_MAX)
      : work(work_given) {
    Bytes const bytes = test::ToBytes(source);
    output = {1, 2, 3};
    result = InflateBuffer(bytes, size.value_or(bytes.size()), output, work);
  }
  int result;
  Bytes output;
  uint64_t work;  // what is left of it
};

TEST(InflateBuffer, GivesExactlyWhatWasPacked) {
  for (size_t const bytes : {0u, 1u, 4095u, 4096u, 4097u, 100000u}) {
    std::string const text = Mixed(bytes);
    Inflated const inflated(test::Deflate(text));
    EXPECT_EQ(inflated.result, 0);
    EXPECT_EQ(test::ToText(inflated.output), text) << bytes;
  }
}

TEST(InflateBuffer, ManyTimesTheSourceComesOut) {
  Inflated const inflated(test::Deflate(std::string(5000000, 'x')));
  EXPECT_EQ(inflated.result, 0);
  EXPECT_EQ(inflated.output.size(), 5000000u);
}

TEST(InflateBuffer, BytesBehindTheStreamDoNotMatter) {
  Inflated const inflated(test::Deflate("text") + "more");
  EXPECT_EQ(inflated.result, 0);
  EXPECT_EQ(test::ToText(inflated.output), "text");
}

TEST(InflateBuffer, SourceOfSizeZeroIsEmpty) {
  Inflated const inflated(test::Deflate("text"), 0);
  EXPECT_EQ(inflated.result, 0);
  EXPECT_TRUE(inflated.output.empty());
}

TEST(InflateBuffer, StreamThatIsCutIsResultNine) {
  std::string const packed = test::Deflate(Mixed(500));
  for (size_t size = 1; size < packed.size(); ++size) {
    EXPECT_EQ(Inflated(packed, size).result, 9) << size;
    EXPECT_EQ(Inflated(packed.substr(0, size)).result, 9) << size;
  }
}

TEST(InflateBuffer, OtherDataAreResultNine) {
  EXPECT_EQ(Inflated("87cURD]i,\"Ebo80~>").result, 9);
  EXPECT_EQ(Inflated(std::string(100, '\0')).result, 9);
}

TEST(InflateBuffer, DamagedChecksumIsResultNine) {
  std::string packed = test::Deflate("text");
  packed.back() = static_cast<char>(packed.back() + 1);
  EXPECT_EQ(Inflated(packed).result, 9);
  EXPECT_TRUE(Inflated(packed).output.empty());
}

// The checksum of "f" times 255 ends in a 0 byte for some count; that byte may be missing.
TEST(InflateBuffer, WhatTheSourceLacksOfItsSizeReadsAsZero) {
  std::string packed;
  for (size_t count = 1; packed.empty() || packed.back() != '\0'; ++count) {
    packed = test::Deflate(std::string(count, 'f'));
  }
  std::string const cut = packed.substr(0, packed.size() - 1);
  EXPECT_EQ(Inflated(cut).result, 9);
  EXPECT_EQ(Inflated(cut, packed.size()).result, 0);
  EXPECT_EQ(Inflated(cut, uint64_t{1} << 40).result, 0);
}

TEST(InflateBuffer, TakesWhatComesOutOffTheWork) {
  Inflated const inflated(test::Deflate(std::string(50000, 'x')), std::nullopt, 70000);
  EXPECT_EQ(inflated.result, 0);
  EXPECT_EQ(inflated.work, 20000u);
}

TEST(InflateBuffer, WorkThatJustSufficesIsEnough) {
  for (size_t const bytes : {1u, 4096u, 50000u}) {
    std::string const packed = test::Deflate(std::string(bytes, 'x'));
    Inflated const enough(packed, std::nullopt, bytes);
    EXPECT_EQ(enough.result, 0);
    EXPECT_EQ(enough.output.size(), bytes);
    EXPECT_EQ(enough.work, 0u);
    Inflated const short_by_one(packed, std::nullopt, bytes - 1);
    EXPECT_EQ(short_by_one.result, 2);
    EXPECT_TRUE(short_by_one.output.empty());
    EXPECT_EQ(short_by_one.work, 0u);
  }
}

TEST(InflateBuffer, DamagedStreamCostsWhatItHeldBeforeTheDamage) {
  std::string const packed = test::Deflate(std::string(50000, 'x'));
  Inflated const inflated(packed.substr(0, packed.size() - 1), std::nullopt, 70000);
  EXPECT_EQ(inflated.result, 9);
  EXPECT_EQ(inflated.work, 20000u);
}

TEST(InflateBuffer, OneGiBIsTheMostThatComesOut) {
  EXPECT_EQ(sorrelin::kMostInflated, 1024u * 1024u * 1024u);
}

TEST(InflateBuffer, EndlessZerosBehindACutStreamEnd) {
  std::string const packed = test::Deflate(Mixed(50000));
  Inflated const inflated(packed.substr(0, packed.size() / 2), uint64_t{1} << 40);
  EXPECT_NE(inflated.result, 0);
}

}  // namespace
