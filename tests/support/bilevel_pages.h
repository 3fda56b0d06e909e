// Pages of the kinds that are coded with Group 4, made anew each time and always the same.
#ifndef TESTS_SUPPORT_BILEVEL_PAGES_H_
#define TESTS_SUPPORT_BILEVEL_PAGES_H_

#include <tests/support/bilevel.h>

#include <cstdint>

namespace test {

// An A4 page of running text in Palatino, 10 points, about 2,900 characters with a heading and page
// number, as Leptonica's 300 dpi bitmap fonts show it. 600 dpi is the same page with its outlines
// interpolated. Other resolutions than 300 and 600 are not made.
Bilevel TextPage(int32_t dpi);

// The text page at 300 dpi as a scanner sees it: laid down half a degree askew, outlines frayed,
// specks in the white and in the black.
Bilevel ScannedPage();

// A4 at 300 dpi covered by a photograph-like picture in a clustered-dot screen of 45 degrees with
// about 53 lines per inch.
Bilevel HalftonePage();

// The same picture in dispersed dots (error diffusion), which suits no run-length code.
Bilevel DiffusedPage();

}  // namespace test

#endif  // TESTS_SUPPORT_BILEVEL_PAGES_H_
