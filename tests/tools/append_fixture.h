// A small document and pictures to append to it.
#ifndef TESTS_TOOLS_APPEND_FIXTURE_H_
#define TESTS_TOOLS_APPEND_FIXTURE_H_

#include <unistd.h>

#include "tests/tools/read_fixture.h"

namespace test {

class AppendTest : public ReadTest {
 protected:
  using Bytes = std::vector<BYTE>;

  // sorrelin append, with arguments as given.
  ProgramResult Append(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "append");
    return Run(std::move(arguments));
  }
  // The same by a user who may not do what only the system's administrator may.
  ProgramResult AppendAsUser(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {SORRELIN_TOOL, "append"});
    if (geteuid() == 0) {
      arguments.insert(arguments.begin(), {"setpriv", "--bounding-set=-all", "--inh-caps=-all"});
    }
    return RunProgram(std::move(arguments));
  }

  // Must succeed and say nothing.
  void AppendTo(std::string const& document, std::vector<std::string> const& names,
                std::vector<std::string> const& options = {}) const {
    EXPECT_EQ(WhatAppendSays(document, names, options), "");
  }

  // Must succeed.
  std::string WhatAppendSays(std::string const& document, std::vector<std::string> const& names,
                             std::vector<std::string> const& options = {}) const {
    std::vector<std::string> arguments = {Path(document)};
    for (std::string const& name : names) arguments.push_back(Path(name));
    arguments.insert(arguments.end(), options.begin(), options.end());
    ProgramResult const result = Append(arguments);
    EXPECT_EQ(result.exit_code, 0) << result.err;
    return result.out + result.err;
  }

  // A picture that is another one for each number.
  static PixPtr Picture(int number) { return Noise(16 + number, 24, 8); }
  void WritePicture(std::string const& name, int number) const { WritePix(name, Picture(number)); }

  // out.pdf with the pictures 0 to count - 1 as its pages.
  void MakeDocument(int count) const {
    for (int i = 0; i < count; ++i) {
      WritePicture("old.png", i);
      AppendTo("out.pdf", {"old.png"});
    }
    std::filesystem::remove(Path("old.png"));
  }

  std::string CountPages(std::string const& name = "out.pdf") const {
    return Run({"count", Path(name)}).out;
  }

  // Whether the document has the old bytes and more after them.
  bool GrewFrom(Bytes const& old) const {
    Bytes const now = Document();
    return now.size() > old.size() && std::equal(old.begin(), old.end(), now.begin());
  }

  // Fails with a line that has `reason` about `document`, and leaves every byte and nothing else.
  void ExpectRefused(std::string const& document, std::string const& reason,
                     std::vector<std::string> const& options = {}) const {
    WritePicture("new.png", 50);
    Bytes const before = ReadAll(Path(document));
    std::vector<std::string> const names = Names();
    std::vector<std::string> arguments = {Path(document), Path("new.png")};
    arguments.insert(arguments.end(), options.begin(), options.end());
    ProgramResult const result = Append(arguments);
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.err, ::testing::HasSubstr("sorrelin: " + Path(document) + ": "));
    EXPECT_THAT(result.err, ::testing::HasSubstr(reason));
    EXPECT_EQ(ReadAll(Path(document)), before);
    EXPECT_EQ(Names(), names);
  }
  // The same with a copy and in place.
  void ExpectRefusedBothWays(std::string const& document, std::string const& reason) const {
    ExpectRefused(document, reason, {"--no-rewrite"});
    ExpectRefused(document, reason, {"--in-place"});
  }
};

}  // namespace test

#endif  // TESTS_TOOLS_APPEND_FIXTURE_H_
