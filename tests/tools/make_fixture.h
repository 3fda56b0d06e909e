// A directory, the program run in it, and looks into what it made.
#ifndef TESTS_TOOLS_MAKE_FIXTURE_H_
#define TESTS_TOOLS_MAKE_FIXTURE_H_

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/pictures.h"
#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"

namespace test {

class MakeTest : public ::testing::Test {
 protected:
  std::string Path(std::string const& name) const { return (directory_ / name).string(); }
  std::string Out() const { return Path("out.pdf"); }

  // Runs a shell command in the directory.
  void Run(std::string const& command) const {
    ProgramResult const run =
        RunProgram({"sh", "-c", "cd \"$0\" && " + command, directory_.path().string()});
    ASSERT_EQ(run.exit_code, 0) << run.out << run.err;
  }

  // sorrelin make, with arguments as given.
  ProgramResult Make(std::vector<std::string> arguments, std::vector<BYTE> const& input = {},
                     std::vector<std::string> const& environment = {}) const {
    std::vector<std::string> all = {SORRELIN_TOOL, "make"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    ProgramResult const result = RunProgram(all, input, environment);
    if (result.exit_code == 1) ExpectRemedies(result.err);
    return result;
  }

  // Every line says what is wrong with what, and in parentheses what to do; or which pages were
  // changed.
  static void ExpectRemedies(std::string const& messages) {
    std::istringstream lines(messages);
    for (std::string line; std::getline(lines, line);) {
      EXPECT_THAT(line, ::testing::MatchesRegex("sorrelin: .+: (.+ \\(.+\\)|pages? [0-9, -]+)"))
          << messages;
    }
  }

  // sorrelin make out.pdf NAME OPTION..., which must succeed and have no problem to name.
  void MakeFrom(std::string const& name, std::vector<std::string> const& options = {}) const {
    std::vector<std::string> arguments = {Out(), Path(name), "--quiet"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    ProgramResult const result = Make(arguments);
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.out + result.err, "");
  }

  std::vector<BYTE> Document() const { return ReadAll(Out()); }

  bool DocumentHas(std::string const& text) const { return CountOf(text) > 0; }

  long CountOf(std::string const& text) const {
    std::vector<BYTE> const bytes = Document();
    std::string const document(bytes.begin(), bytes.end());
    long count = 0;
    for (size_t at = 0; (at = document.find(text, at)) != std::string::npos; ++at) ++count;
    return count;
  }

  // Whether the bytes are a whole stream of the document.
  bool HoldsStream(std::vector<BYTE> const& bytes) const {
    std::string stream = "stream\n";
    stream.append(bytes.begin(), bytes.end());
    stream += "\nendstream\n";
    return DocumentHas(stream);
  }

  long PageCount() const { return CountOf("/Type /Page\n"); }

  // A page as MuPDF shows it, which maps each pixel of a picture to one of the page.
  PixPtr Render(int width, int height, int page = 1) const {
    ProgramResult const result = RunProgram({"mutool", "draw", "-q", "-w", std::to_string(width),
                                             "-h", std::to_string(height), "-f", "-c", "rgb", "-o",
                                             Path("page.ppm"), Out(), std::to_string(page)});
    EXPECT_EQ(result.exit_code, 0) << result.err;
    return PixPtr(pixRead(Path("page.ppm").c_str()));
  }

  // Renders a page and compares each pixel with `colour`, by at most `tolerance` in any channel.
  void ExpectPage(int width, int height, ColourAt const& colour, int tolerance = 0,
                  int page = 1) const {
    PixPtr const pix = Render(width, height, page);
    ASSERT_NE(pix, nullptr);
    int wrong = 0;
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        l_uint32 shown = 0;
        pixGetPixel(pix.get(), x, y, &shown);
        if (Distance(shown >> 8, colour(x, y)) <= tolerance) continue;
        if (++wrong == 1) {
          ADD_FAILURE() << "pixel " << x << ", " << y << " is " << std::hex << (shown >> 8)
                        << " and not " << colour(x, y);
        }
      }
    }
    EXPECT_EQ(wrong, 0);
  }

  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(directory_.path())) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  TempDir directory_;

 private:
  static int Distance(DWORD a, DWORD b) {
    int most = 0;
    for (int shift = 0; shift <= 16; shift += 8) {
      int const x = static_cast<int>(a >> shift & 0xFF), y = static_cast<int>(b >> shift & 0xFF);
      most = std::max(most, std::abs(x - y));
    }
    return most;
  }
};

}  // namespace test

#endif  // TESTS_TOOLS_MAKE_FIXTURE_H_
