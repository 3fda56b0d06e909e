// The order of colour components.
#include <sorrelin/image/pixel_order.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace sorrelin {
namespace {

#if defined(__SSE2__)

// Five pixels in a register of 16 bytes: first bytes move up by two, third bytes down by two. The
// sixteenth byte comes out as 0 and is overwritten by the next step. Four times the speed of single
// bytes, which would be a good part of the time that it takes to inflate a page of few colours.
size_t CopyFives(BYTE* to, std::span<BYTE const> pixels) {
  constexpr size_t kStep = 15;
  __m128i const first = _mm_setr_epi8(0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0);
  __m128i const second = _mm_srli_si128(first, 1);
  __m128i const third = _mm_srli_si128(first, 2);
  size_t at = 0;
  for (; at + sizeof(__m128i) <= pixels.size(); at += kStep) {
    __m128i const rgb = _mm_loadu_si128(reinterpret_cast<__m128i const*>(pixels.data() + at));
    __m128i const ends = _mm_or_si128(_mm_and_si128(_mm_slli_si128(rgb, 2), first),
                                      _mm_and_si128(_mm_srli_si128(rgb, 2), third));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + at),
                     _mm_or_si128(ends, _mm_and_si128(rgb, second)));
  }
  return at;
}

#else

size_t CopyFives(BYTE*, std::span<BYTE const>) { return 0; }

#endif

}  // namespace

void CopySwapped(BYTE* to, std::span<BYTE const> pixels) {
  size_t at = CopyFives(to, pixels);
  for (; at + 2 < pixels.size(); at += 3) {
    to[at] = pixels[at + 2];
    to[at + 1] = pixels[at + 1];
    to[at + 2] = pixels[at];
  }
  if (at == pixels.size()) return;
  to[at] = 0;
  to[at + 1] = at + 1 < pixels.size() ? pixels[at + 1] : BYTE{0};
  to[at + 2] = pixels[at];
}

}  // namespace sorrelin
