// The verbs that read documents, run on documents of make and on handmade ones.
#ifndef TESTS_TOOLS_READ_FIXTURE_H_
#define TESTS_TOOLS_READ_FIXTURE_H_

#include <random>

#include "tests/support/page_document.h"
#include "tests/tools/make_fixture.h"

namespace test {

class ReadTest : public MakeTest {
 protected:
  // sorrelin with arguments as given.
  ProgramResult Run(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), SORRELIN_TOOL);
    ProgramResult const result = RunProgram(std::move(arguments));
    if (result.exit_code == 1) ExpectRemedies(result.err);
    return result;
  }

  // sorrelin extract out.pdf OPTION..., which must succeed and say nothing.
  void ExtractAll(std::vector<std::string> options) const {
    options.insert(options.begin(), {"extract", Out()});
    ProgramResult const result = Run(options);
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.out + result.err, "");
  }

  // A picture of random samples, at 144 dots per inch.
  static PixPtr Noise(int width, int height, int depth, bool palette = false) {
    PixPtr pix(pixCreate(width, height, depth));
    std::minstd_rand random(static_cast<unsigned>(width * 64 + depth));
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        unsigned const value = static_cast<unsigned>(random() >> 3);
        pixSetPixel(pix.get(), x, y, depth == 32 ? value << 8 : value & ((1u << depth) - 1));
      }
    }
    if (palette) {
      PixColormap* const map = pixcmapCreate(depth);
      for (int i = 0; i < 1 << depth; ++i) pixcmapAddColor(map, i, 255 - i, i * 7 & 255);
      pixSetColormap(pix.get(), map);
    }
    pixSetResolution(pix.get(), 144, 144);
    return pix;
  }

  void WritePix(std::string const& name, PixPtr const& pix) const {
    ASSERT_EQ(pixWrite(Path(name).c_str(), pix.get(), IFF_PNG), 0);
  }

  PixPtr ReadPix(std::string const& name) const { return PixPtr(pixRead(Path(name).c_str())); }

  // Whether the file shows the same pixels.
  bool Shows(std::string const& name, PixPtr const& pix) const {
    PixPtr const read = ReadPix(name);
    l_int32 same = 0;
    return read != nullptr && pixEqual(read.get(), pix.get(), &same) == 0 && same == 1;
  }

  void WriteDocument(std::string const& name, PdfBuilder pdf,
                     ClassicOptions const& options = {}) const {
    pdf.Classic(options);
    WriteAll(Path(name), pdf.Document());
  }

  // A document whose /Size ends the process that reads it.
  void WriteDeadly(std::string const& name) const {
    PdfBuilder pdf;
    AddPageTree(pdf, 1);
    pdf.Object(1, "<</Type/Catalog /Pages " + std::string(100, '2') + " 0 R >>");
    WriteDocument(name, pdf);
  }
};

}  // namespace test

#endif  // TESTS_TOOLS_READ_FIXTURE_H_
