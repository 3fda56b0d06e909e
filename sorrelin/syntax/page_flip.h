// Whether a page's content stream draws its image upside down. The stream's text is tokenized, not
// interpreted: only the transformation matrix and its stack are followed.
#ifndef SORRELIN_SYNTAX_PAGE_FLIP_H_
#define SORRELIN_SYNTAX_PAGE_FLIP_H_

#include <sorrelin/platform/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace sorrelin {

// 1 if the vertical scale of the matrix is below 0 at the first "Do" of a zero-terminated text;
// 0 otherwise, also for null and for a text without "Do".
int IsPageContentFlipped(char const* text);

// The same test on a text that comes in pieces.
class PageFlipTest {
 public:
  // Takes the next bytes; the text ends at the first NUL. False when no more are needed.
  bool Feed(std::span<BYTE const> text);
  // Ends the text and gives the answer.
  int Finish();

 private:
  // The part of a matrix that decides: displacements do not reach d.
  struct Matrix {
    double a = 1;
    double b = 0;
    double c = 0;
    double d = 1;
  };

  void EndToken();
  void Concatenate();
  void Save();
  void Restore();

  static constexpr size_t kOperands = 6;
  static constexpr size_t kTokenBytes = 512;  // kept of a token; numbers are shorter

  Matrix matrix_;
  std::vector<Matrix> saved_;
  std::array<double, kOperands> operands_{};  // values of the last tokens, a ring
  size_t next_ = 0;                           // place of the next one
  bool full_ = false;                         // as many have been read
  std::array<char, kTokenBytes> token_;
  size_t token_bytes_ = 0;
  bool ended_ = false;
  bool flipped_ = false;
};

}  // namespace sorrelin

#endif  // SORRELIN_SYNTAX_PAGE_FLIP_H_
