// Ways round the random identifiers that other programs write into their trailers. A NUL in one
// hides the catalog from the library, and a bracket in one is where an update cuts it.
#ifndef TESTS_SUPPORT_RANDOM_IDS_H_
#define TESTS_SUPPORT_RANDOM_IDS_H_

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/run_program.h"

// A line for the shell: runs a command of poppler's that takes the document's name as its last
// word, until out.pdf is a document with no NUL and one closing bracket after its table.
#define UNTIL_IDENTIFIER_IS_PLAIN(command)                                        \
  "for n in 1 2 3 4 5 6 7 8 9; do " command                                       \
  " try$n.pdf && "                                                                \
  "[ $(tail -c 160 try$n.pdf | tr -dc '\\000]' | wc -c) = 1 ] && break; done && " \
  "mv try$n.pdf out.pdf"

namespace test {

// Writes a document by Ghostscript, whose arguments end with `source`, until its identifier is
// hexadecimal, as all but a few are.
inline void WriteByGhostscript(std::string const& name, std::vector<std::string> const& source) {
  std::vector<std::string> command = {"gs",
                                      "-q",
                                      "-dBATCH",
                                      "-dNOPAUSE",
                                      "-sDEVICE=pdfwrite",
                                      "-dCompatibilityLevel=1.4",
                                      "-sOutputFile=" + name};
  command.insert(command.end(), source.begin(), source.end());
  for (int i = 0; i < 9; ++i) {
    ASSERT_EQ(RunProgram(command).exit_code, 0);
    std::vector<BYTE> const bytes = ReadAll(name);
    if (std::string(bytes.begin(), bytes.end()).find("/ID [<") != std::string::npos) return;
  }
  FAIL() << "no hexadecimal identifier";
}

}  // namespace test

#endif  // TESTS_SUPPORT_RANDOM_IDS_H_
