// Documents of other makers and damaged ones, made from a seed.
#ifndef TESTS_COMPARISON_FOREIGN_H_
#define TESTS_COMPARISON_FOREIGN_H_

#include <tests/comparison/written.h>

namespace comparison {

// A document as other programs write it: classic sections or streams, object streams, predictors,
// either line end, one to three pages with images.
Bytes ForeignDocument(Dice& dice);

// A few bytes changed, a piece left out or doubled, or the end cut off.
void Damage(Dice& dice, Bytes& document);

}  // namespace comparison

#endif  // TESTS_COMPARISON_FOREIGN_H_
