// What callers may ask for, what the row callbacks see, and how they end the work.
#include <gmock/gmock.h>
#include <tests/siblings/cadwick_support.h>

#include <thread>

using namespace test;

namespace {

Picture const kPicture = RandomPicture(50, 10, 3);

struct Request {
  int32_t width;
  int32_t height;
  int32_t compression;
};

int TryEncode(Request const& request) {
  Block const block(GlobalAlloc(GHND, 1));
  OpenMemory const file(block);
  Giver giver{&kPicture, 0, -1, {}};
  int const result = EncodeCcittImage(file, request.width, request.height, request.compression,
                                      &giver, Giver::Call);
  EXPECT_TRUE(giver.asked.empty());
  return result;
}

int TryDecode(Request const& request) {
  Block const block = BlockOf(Encode(kPicture));
  OpenMemory const file(block);
  Taker taker{{request.width, {}}};
  int const result = DecodeCcittImage(file, request.width, request.height, request.compression,
                                      &taker, Taker::Call);
  EXPECT_EQ(taker.picture.height(), 0);
  return result;
}

}  // namespace

TEST(CadwickRequest, SizesAndCodingOutsideTheLimitsAreRefused) {
  for (Request const& request :
       {Request{0, 10, 4}, Request{10, 0, 4}, Request{-1, 10, 4}, Request{10, -1, 4},
        Request{INT32_MIN, INT32_MIN, 4}, Request{CADWICK_MAX_WIDTH + 1, 1, 4},
        Request{CADWICK_MAX_WIDTH, 2049, 4}, Request{17, INT32_MAX, 4}, Request{10, 10, 3},
        Request{10, 10, 0}}) {
    EXPECT_EQ(TryEncode(request), 0);
    EXPECT_EQ(TiffError(), CADWICK_BAD_ARGUMENT) << request.width << " x " << request.height;
    EXPECT_EQ(TryDecode(request), 0);
    EXPECT_EQ(TiffError(), CADWICK_BAD_ARGUMENT) << request.width << " x " << request.height;
    EXPECT_EQ(CcittRowsDecoded(), 0);
  }
}

TEST(CadwickRequest, CallbackIsNeeded) {
  Block const block = BlockOf(Encode(kPicture));
  OpenMemory const file(block);
  EXPECT_EQ(DecodeCcittImage(file, 50, 10, CCITT_GROUP4, nullptr, nullptr), 0);
  EXPECT_EQ(TiffError(), CADWICK_BAD_ARGUMENT);
  EXPECT_EQ(EncodeCcittImage(file, 50, 10, CCITT_GROUP4, nullptr, nullptr), 0);
  EXPECT_EQ(TiffError(), CADWICK_BAD_ARGUMENT);
}

TEST(CadwickRequest, LargestSizesAreServed) {
  Picture const wide = RandomPicture(CADWICK_MAX_WIDTH, 1, 4, 100000);
  EXPECT_EQ(Decode(Encode(wide), CADWICK_MAX_WIDTH, 1).picture, wide);
  Decoded const high = Decode(Bits("1 1 1"), 16, INT32_MAX);
  EXPECT_EQ(high.error, CADWICK_DATA_ENDED);
  EXPECT_EQ(high.rows_told, 3);
  EXPECT_EQ(Decode(Bits("1 1 1"), CADWICK_MAX_WIDTH, 2048).rows_told, 3);
}

TEST(CadwickRequest, EncoderAsksForEachRowOnceFromTheTop) {
  Block const block(GlobalAlloc(GHND, 1));
  OpenMemory const file(block);
  Giver giver{&kPicture, 0, -1, {}};
  EXPECT_EQ(EncodeCcittImage(file, 50, 10, CCITT_GROUP4, &giver, Giver::Call), 1);
  EXPECT_THAT(giver.asked, testing::ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9));
}

TEST(CadwickRequest, RowThatIsNotSuppliedEndsTheCoding) {
  Block const block(GlobalAlloc(GHND, 1));
  OpenMemory const file(block);
  Giver giver{&kPicture, 0, 4, {}};
  EXPECT_EQ(EncodeCcittImage(file, 50, 10, CCITT_GROUP4, &giver, Giver::Call), 0);
  EXPECT_EQ(TiffError(), CADWICK_STOPPED);
  EXPECT_EQ(giver.asked.back(), 4);
}

TEST(CadwickRequest, RowsPastTheSuppliersLastEndTheCoding) {
  Block const block(GlobalAlloc(GHND, 1));
  OpenMemory const file(block);
  Giver giver{&kPicture, 0, -1, {}};
  EXPECT_EQ(EncodeCcittImage(file, 50, 11, CCITT_GROUP4, &giver, Giver::Call), 0);
  EXPECT_EQ(TiffError(), CADWICK_STOPPED);
}

TEST(CadwickRequest, DecoderStopsWhenTheCallbackDoes) {
  Block const block = BlockOf(Encode(kPicture));
  OpenMemory const file(block);
  Taker taker{{50, {}}, 4};
  EXPECT_EQ(DecodeCcittImage(file, 50, 10, CCITT_GROUP4, &taker, Taker::Call), 0);
  EXPECT_EQ(TiffError(), CADWICK_STOPPED);
  EXPECT_EQ(taker.picture.height(), 4);
  EXPECT_TRUE(taker.in_order);
}

TEST(CadwickRequest, StopAtTheLastRowIsAFailureToo) {
  Block const block = BlockOf(Encode(kPicture));
  OpenMemory const file(block);
  Taker taker{{50, {}}, 10};
  EXPECT_EQ(DecodeCcittImage(file, 50, 10, CCITT_GROUP4, &taker, Taker::Call), 0);
  EXPECT_EQ(TiffError(), CADWICK_STOPPED);
}

TEST(CadwickRequest, ErrorIsTheThreadsLastFailure) {
  Decode({}, 8, 1);
  EXPECT_EQ(Decode(Encode(kPicture), 50, 10).result, 1);
  EXPECT_EQ(TiffError(), CADWICK_DATA_ENDED) << "a success changed it";
  int elsewhere = -1;
  int rows_elsewhere = -1;
  std::thread([&] {
    elsewhere = TiffError();
    rows_elsewhere = CcittRowsDecoded();
  }).join();
  EXPECT_EQ(elsewhere, CADWICK_OK);
  EXPECT_EQ(rows_elsewhere, 0);
}
