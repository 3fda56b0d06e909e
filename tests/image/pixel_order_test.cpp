// The exchange of red and blue.
#include <gtest/gtest.h>
#include <sorrelin/image/pixel_order.h>
#include <tests/support/dib.h>

namespace test {
namespace {

// Every size around the steps of a register, with guard bytes after the last pixel.
TEST(CopySwapped, ExchangesFirstAndThirdByteAtEverySize) {
  for (size_t size = 0; size <= 100; ++size) {
    Bytes pixels(size);
    for (size_t i = 0; i < size; ++i) pixels[i] = static_cast<BYTE>(i + 1);
    size_t const whole = (size + 2) / 3 * 3;
    Bytes out(whole + 16, 0xEE);
    sorrelin::CopySwapped(out.data(), pixels);
    pixels.resize(whole);  // missing bytes count as 0
    for (size_t i = 0; i < whole; ++i) EXPECT_EQ(out[i], pixels[i / 3 * 3 + 2 - i % 3]) << size;
    for (size_t i = whole; i < out.size(); ++i) EXPECT_EQ(out[i], 0xEE) << size;
  }
}

}  // namespace
}  // namespace test
