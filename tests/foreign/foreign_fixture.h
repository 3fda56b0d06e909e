// Documents that other programs write, with two readers of their pictures beside ours: pdfimages,
// and the picture files that the documents were made of.
#ifndef TESTS_FOREIGN_FOREIGN_FIXTURE_H_
#define TESTS_FOREIGN_FOREIGN_FIXTURE_H_

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/frame/session.h>

#include <string>
#include <vector>

#include "tests/support/dib_content.h"
#include "tests/support/pictures.h"
#include "tests/support/pnm.h"
#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"

namespace test {

inline constexpr int kWidth = 203;
inline constexpr int kHeight = 57;

// 0xRRGGBB, top row first.
struct Pixels {
  int width = 0;
  int height = 0;
  std::vector<DWORD> colours;
};

Pixels UpsideDown(Pixels pixels);
// One below the other.
Pixels Stacked(std::vector<Pixels> const& pictures);

// What the library makes of a page.
struct LoadedPage {
  bool opened = false;
  bool loaded = false;
  DWORD error = 0;    // the last one
  DibContent bitmap;  // if loaded
  Pixels pixels;      // by its colour table
  LONG x_per_metre = 0;
};

class ForeignTest : public ::testing::Test {
 protected:
  // Writes the pictures that documents are made of, each `kWidth` by `kHeight`:
  //   bits.png bits.tif g4.tif g3.tif      black and white
  //   grey.png grey.tif grey.jpg grey16.png
  //   palette.png palette.tif palette4.png 40 and 10 colours
  //   colour.png colour.tif colour.jpg inks.jpg alpha.png
  //   even.png                             colour, 200 by 57
  void SetUp() override;

  std::string Path(std::string const& name) const { return (directory_ / name).string(); }

  // Runs a line of shell in the directory; it must succeed.
  void Shell(std::string const& line) const;
  ProgramResult Tool(std::vector<std::string> arguments) const;

  // What pdfimages gives of out.pdf, in its order.
  std::vector<Pixels> Witness() const;
  // What a picture file shows.
  Pixels Source(std::string const& name) const;
  // A picture that the tool has written, in the form of PNM.
  Pixels Extracted(std::string const& name) const;

  LoadedPage Load(std::string const& name, DWORD page) const;

  // The bytes of the first picture's stream, inflated if they are deflated.
  std::string StreamBytes() const;
  // Of the first picture of out.pdf, as pdfimages lists it; columns count from 1.
  std::string Listed(int column) const;
  std::string PagesByPdfinfo(std::string const& name) const;

  TempDir directory_;
};

// The largest difference in any channel, or kOtherSize.
inline constexpr int kOtherSize = 256;
int Difference(Pixels const& a, Pixels const& b);

}  // namespace test

#endif  // TESTS_FOREIGN_FOREIGN_FIXTURE_H_
