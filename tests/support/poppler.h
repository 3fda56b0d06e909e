// A way round poppler's identifiers in tests: they are random bytes that depend on the name of the
// file and the time, and one that has a NUL hides the catalog from the library.
#ifndef TESTS_SUPPORT_POPPLER_H_
#define TESTS_SUPPORT_POPPLER_H_

// A line for the shell: runs a command that takes the document's name as its last word, until
// out.pdf is a document without a NUL behind its table.
#define UNTIL_WITHOUT_NUL(command)                                               \
  "for n in 1 2 3 4 5 6 7 8 9; do " command                                      \
  " try$n.pdf && "                                                               \
  "[ $(tail -c 400 try$n.pdf | tr -dc '\\000' | wc -c) = 0 ] && break; done && " \
  "mv try$n.pdf out.pdf"

#endif  // TESTS_SUPPORT_POPPLER_H_
