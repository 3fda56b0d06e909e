// Expected documents: objects written out by hand in the order of the file, to which this adds the
// header, the cross-reference section and the trailer with the offsets that follow.
#ifndef TESTS_SUPPORT_GOLDEN_H_
#define TESTS_SUPPORT_GOLDEN_H_

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace test {

inline std::string Line(char const* format, long a, long b = 0) {
  char line[64];
  std::snprintf(line, sizeof line, format, a, b);
  return line;
}

// `text` with every LF turned into `eol`.
inline std::string WithEol(std::string const& text, std::string const& eol) {
  std::string result;
  for (char const c : text) c == '\n' ? result += eol : result += c;
  return result;
}

inline constexpr char kGoldenHeader[] = "%PDF-1.7\n\x25\x63\xFE\xFE\xFE\xFE\n";

inline constexpr char kGoldenInfo[] =
    "1 0 obj\n<<\n/CreationDate (D:00000000000000)\n"
    "/Producer (Sorrelin.dll v13, 1, 0, 972, Ferrowell Software LLC.)\n"
    "/Creator (PDF Printer Driver, Sorrelin 13.1)\n"
    "/Title (Converted Document)\n>>\nendobj\n";

inline constexpr char kGoldenOutlines[] = "2 0 obj\n<<\n/Type /Outlines\n/Count 0\n>>\nendobj\n";

// `objects` begin with their number; the catalog is the last. Stream bytes hold no LF but those
// that are line ends.
inline std::string GoldenDocument(std::vector<std::string> const& objects,
                                  std::string const& eol = "\n") {
  std::string document = WithEol(kGoldenHeader, eol);
  std::map<long, long> offsets;
  long last = 0;
  for (std::string const& object : objects) {
    last = std::stol(object);
    offsets[last] = static_cast<long>(document.size());
    document += WithEol(object, eol);
  }
  long const start = static_cast<long>(document.size());
  long const size = offsets.rbegin()->first + 1;
  std::string tail = Line("xref\n0 %ld\n0000000000 65535 f \n", size);
  for (long object = 1; object < size; ++object) {
    tail += offsets.count(object) != 0 ? Line("%010ld 00000 n \n", offsets[object])
                                       : "0000000000 00000 f \n";
  }
  tail += Line("trailer\n<<\n/Size %ld\n/Root %ld 0 R\n", size, last) + "/Info 1 0 R\n>>\n";
  return document + WithEol(tail + Line("startxref\n%ld\n", start) + "%%EOF\n", eol);
}

}  // namespace test

#endif  // TESTS_SUPPORT_GOLDEN_H_
