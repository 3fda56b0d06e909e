// Expected updates: what an update writes after a document, put together from objects that are
// written out by hand.
#ifndef TESTS_WRITER_UPDATE_GOLDEN_H_
#define TESTS_WRITER_UPDATE_GOLDEN_H_

#include <map>
#include <string>
#include <vector>

#include "tests/support/dib.h"
#include "tests/support/golden.h"

namespace test {

// A page of 2 by 2 points that is stored as it is.
inline Block SmallPage() {
  return MakeDib({.width = 2, .height = 2, .bits = 24, .x_per_metre = 2835},
                 [](LONG, LONG) { return 0x010203u; });
}

// The objects of SmallPage; the page itself is the fourth.
inline std::vector<std::string> SmallPageObjects(long first, long parent) {
  auto const number = [&](long offset) { return std::to_string(first + offset); };
  std::string const rows("\x01\x02\x03\x01\x02\x03\x01\x02\x03\x01\x02\x03");
  return {
      number(0) + " 0 obj\n[/PDF /ImageC ] \nendobj\n",
      number(1) +
          " 0 obj\n<<\n/Type /XObject\n/Subtype /Image\n/Width 2\n/Height 2\n/BitsPerComponent 8\n"
          "/ColorSpace /DeviceRGB\n/Length " +
          number(2) + " 0 R \n>>\nstream\n" + rows + ">\nendstream\nendobj\n",
      number(2) + " 0 obj\n14\nendobj\n",
      number(3) + " 0 obj\n<<\n/Type /Page\n/Parent " + std::to_string(parent) +
          " 0 R\n/MediaBox [0 0 2 2]\n/Resources <<\n/XObject << /Im" + number(1) + " " +
          number(1) + " 0 R >> \n/ProcSet " + number(0) + " 0 R\n>>\n/Contents " + number(4) +
          " 0 R\n>>\nendobj\n",
      number(4) + " 0 obj\n<< /Length " + number(5) +
          " 0 R >>\nstream\n1.0000 0.0000 0.0000 1.0000 0.0000 0.0000 cm\n"
          "2.0000 0.0000 0.0000  2.0000 0.0000 0.0000 cm\n/Im" +
          number(1) + " Do\nendstream\nendobj\n",
      number(5) + " 0 obj\n" + std::to_string(98 + number(1).size()) + "\nendobj\n"};
}

inline std::string CatalogObject(long number, long pages, long outlines) {
  return std::to_string(number) + " 0 obj\n<<\n/Type /Catalog\n/Pages " + std::to_string(pages) +
         " 0 R\n/Outlines " + std::to_string(outlines) + " 0 R\n>>\nendobj\n";
}

// Rows of the table by object number, without their last blank.
using TableRows = std::map<long, std::string>;

inline std::string UsedRow(size_t offset) {
  return Line("%010ld %05ld n", static_cast<long>(offset), 0);
}

// Objects at `start`, the table of `rows` and of their own places, and the trailer; the catalog is
// the last object. `keys` follow /Root in the trailer.
inline std::string GoldenUpdate(size_t start, std::vector<std::string> const& objects,
                                TableRows rows, std::string const& keys) {
  std::string text;
  long last = 0;
  for (std::string const& object : objects) {
    last = std::stol(object);
    rows[last] = UsedRow(start + text.size());
    text += object;
  }
  size_t const table = start + text.size();
  text += Line("xref\n0 %ld\n", last + 1);
  for (long object = 0; object <= last; ++object) {
    text += (rows.contains(object) ? rows[object] : "0000000000 00000 f") + " \n";
  }
  return text + Line("trailer\n<<\n/Size %ld\n/Root %ld 0 R\n", last + 1, last) + keys +
         ">>\nstartxref\n" + std::to_string(table) + "\n%%EOF\n";
}

}  // namespace test

#endif  // TESTS_WRITER_UPDATE_GOLDEN_H_
