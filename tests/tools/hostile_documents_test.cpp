// The verbs that read documents, on documents that are made to do harm: each is named, the next
// one is read, and neither memory nor time runs away.
#include <sys/resource.h>

#include <chrono>

#include "tests/tools/read_fixture.h"

namespace test {
namespace {

using ::testing::HasSubstr;

constexpr size_t kBombBytes = size_t{512} << 20;
// With what the sanitizers add.
constexpr long kMostKilobytes = 300'000;
// The library's opening inflates up to 128 MiB and 64 times the document, and holds that twice
// while its block grows.
constexpr long kMostKilobytesOfAnOpening = 900'000;

std::string const kGrey =
    "/Subtype/Image /Width 2 /Height 2 /BitsPerComponent 8 /ColorSpace /DeviceGray";

// kBombBytes of one byte, deflated; piece by piece, as programs start with their parent's memory.
std::string Bomb(char byte) {
  z_stream stream{};
  deflateInit(&stream, 1);
  std::string const piece(size_t{1} << 20, byte);
  std::string room(piece.size(), '\0');
  std::string packed;
  for (size_t done = 0; done < kBombBytes; done += piece.size()) {
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(piece.data()));
    stream.avail_in = static_cast<uInt>(piece.size());
    stream.next_out = reinterpret_cast<Bytef*>(room.data());
    stream.avail_out = static_cast<uInt>(room.size());
    deflate(&stream, done + piece.size() < kBombBytes ? Z_SYNC_FLUSH : Z_FINISH);
    packed.append(room, 0, room.size() - stream.avail_out);
  }
  deflateEnd(&stream);
  return packed;
}

class HostileDocuments : public ReadTest {
 protected:
  struct Outcome {
    std::string text;  // all that was said
    bool extracted = false;
  };

  // Has the document counted, described and extracted, with a good one after it. A sanitizer's
  // report would be lost with the child's messages, so it goes to a file.
  Outcome ReadBy(std::string const& name) const {
    std::vector<std::string> const environment = {
        "ASAN_OPTIONS=allocator_may_return_null=1:log_path=" + Path("report"),
        "UBSAN_OPTIONS=log_path=" + Path("report")};
    WriteDocument("good.pdf", OnePage{.image = kGrey, .data = "abcd"}.Build());
    Outcome outcome;
    for (std::vector<std::string> arguments :
         {std::vector<std::string>{"count", Path(name), Path("good.pdf")},
          {"info", Path(name)},
          {"info", "--json", Path(name)},
          {"extract", Path(name), "--output", Path("x%d.png"), "--force"},
          {"extract", Path(name), "--output", Path("x.tif"), "--force"}}) {
      std::string const verb = arguments[0];
      arguments.insert(arguments.begin(), SORRELIN_TOOL);
      ProgramResult const result = RunProgram(arguments, {}, environment);
      EXPECT_TRUE(result.exit_code == 0 || result.exit_code == 1) << verb << result.signal;
      EXPECT_EQ(result.exit_code == 1, result.err.starts_with("sorrelin: ")) << result.err;
      bool const next_is_read = result.out.find(Path("good.pdf") + ": 1\n") != std::string::npos;
      EXPECT_EQ(next_is_read, verb == "count");
      outcome.text += result.out + result.err;
    }
    for (std::string const& file : Names()) EXPECT_FALSE(file.starts_with("report")) << file;
    outcome.extracted = std::filesystem::exists(Path("x1.png"));
    return outcome;
  }

  Outcome ReadBuilt(PdfBuilder const& pdf) const {
    WriteDocument("in.pdf", pdf);
    return ReadBy("in.pdf");
  }

  // Of any process that this one has waited for, those of the program's children included.
  static long PeakKilobytes() {
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    return usage.ru_maxrss;
  }
};

// Comes first, since the peak is that of all programs before. Rows that are all alike take a bit
// each, so that a little data fills a large page.
TEST_F(HostileDocuments, LargeGroup4PageIsReadInStrips) {
  std::string const rows(60'000 / 8, '\xFF');
  WriteDocument("in.pdf", OnePage{.image = "/Subtype/Image /Width 60000 /Height 60000 "
                                           "/BitsPerComponent 1 /ColorSpace /DeviceGray "
                                           "/Filter /CCITTFaxDecode /DecodeParms <</K -1 "
                                           "/Columns 60000>>",
                                  .data = rows + std::string("\x00\x10\x01", 3)}
                              .Build());
  for (char const* const name : {"x.tif", "x.png"}) {
    EXPECT_EQ(Run({"extract", Path("in.pdf"), "--output", Path(name)}).exit_code, 0);
  }
  EXPECT_EQ(Run({"extract", Path("in.pdf"), "--output", Path("k"), "--format", "keep"}).exit_code,
            0);
  EXPECT_LT(PeakKilobytes(), 200 * 1024);
}

// Readers hold two rows of each predictor.
TEST_F(HostileDocuments, RowsOfPredictorsTakeNoMemory) {
  for (std::string const filter : {"LZWDecode", "FlateDecode"}) {
    for (std::string const predictor : {"2", "15"}) {
      std::string const parms =
          "<</Predictor " + predictor + " /Columns 1000000000 /Colors 4 /BitsPerComponent 16>>";
      Outcome const outcome =
          ReadBuilt(OnePage{.image = kGrey + " /Filter [/" + filter + " /" + filter +
                                     "] /DecodeParms [" + parms + parms + "]",
                            .data = "\x80\x0B\x60\x50\x22\x0C\x0C\x85\x01"}
                        .Build());
      EXPECT_FALSE(outcome.extracted);
      EXPECT_THAT(outcome.text, HasSubstr("page 1: "));
      EXPECT_LT(PeakKilobytes(), kMostKilobytes) << filter << predictor;
    }
  }
}

TEST_F(HostileDocuments, PictureThatInflatesBeyondItsSizeIsNamed) {
  Outcome const outcome =
      ReadBuilt(OnePage{.image = kGrey + " /Filter /FlateDecode", .data = Bomb('x')}.Build());
  EXPECT_THAT(outcome.text, HasSubstr("page 1: its data are longer than its picture"));
  EXPECT_LT(PeakKilobytes(), kMostKilobytes);
}

TEST_F(HostileDocuments, ContentThatInflatesWithoutEndIsReadInPart) {
  auto pdf = OnePage{.image = kGrey, .data = "abcd", .content = "x"}.Build();
  pdf.Stream(5, "/Filter /FlateDecode", Bomb(' '));
  EXPECT_TRUE(ReadBuilt(pdf).extracted);
  EXPECT_LT(PeakKilobytes(), kMostKilobytes);
}

TEST_F(HostileDocuments, PaletteThatInflatesWithoutEndIsReadInPart) {
  auto pdf = OnePage{.image =
                         "/Subtype/Image /Width 2 /Height 2 /BitsPerComponent 8 "
                         "/ColorSpace [/Indexed /DeviceRGB 255 7 0 R]",
                     .data = "abcd"}
                 .Build();
  pdf.Stream(7, "/Filter /FlateDecode", Bomb('\x80'));
  EXPECT_TRUE(ReadBuilt(pdf).extracted);
  EXPECT_LT(PeakKilobytes(), kMostKilobytes);
}

TEST_F(HostileDocuments, ObjectStreamThatInflatesWithoutEndIsBounded) {
  PdfBuilder pdf("%PDF-1.5");
  pdf.ObjectStream(5, {{1, "<</Type/Catalog /Pages 2 0 R >>"}});
  pdf.Object(2, "<</Type/Pages /Kids [3 0 R ] /Count 1 >>");
  pdf.Object(3, "<</Type/Page /Parent 2 0 R >>");
  pdf.Stream(6, "/Type/ObjStm /N 1 /First 5 /Filter /FlateDecode", Bomb(' '));
  pdf.Row(3, {2, 6, 0});
  pdf.XrefStream(9);
  WriteAll(Path("in.pdf"), pdf.Document());
  EXPECT_FALSE(ReadBy("in.pdf").extracted);
  EXPECT_LT(PeakKilobytes(), kMostKilobytesOfAnOpening);
}

TEST_F(HostileDocuments, SizesThatNoDataCouldFillTakeNoMemory) {
  for (std::string const keys :
       {"/Width 40000 /Height 40000", "/Width 2000000000 /Height 2000000000",
        "/Width 40000 /Height 40000 /Filter /FlateDecode",
        "/Width 40000 /Height 40000 /Filter /RunLengthDecode",
        "/Width 40000 /Height 40000 /Filter /DCTDecode",
        "/Width 1600000 /Height 10000 /BitsPerComponent 1 /Filter /CCITTFaxDecode "
        "/DecodeParms <</K -1 /Columns 1600000>>"}) {
    EXPECT_FALSE(ReadBuilt(OnePage{.image = kGrey + " " + keys, .data = "abcd"}.Build()).extracted)
        << keys;
  }
  EXPECT_LT(PeakKilobytes(), kMostKilobytes);
}

TEST_F(HostileDocuments, JpegThatPromisesMoreThanItHoldsTakesNoMemory) {
  auto jpeg = MakeJpeg({.width = 8, .height = 8, .components = 1},
                       [](int x, int y, int) { return unsigned(x * y); });
  for (size_t at = 2; at + 8 < jpeg.size(); ++at) {
    if (jpeg[at] != 0xFF || jpeg[at + 1] != 0xC0) continue;
    for (size_t i = 5; i < 9; i += 2) jpeg[at + i] = 0x9C;  // 40,000 by 40,000
    for (size_t i = 6; i < 9; i += 2) jpeg[at + i] = 0x40;
    break;
  }
  Outcome const outcome =
      ReadBuilt(OnePage{.image = kGrey + " /Width 40000 /Height 40000 /Filter /DCTDecode",
                        .data = std::string(jpeg.begin(), jpeg.end())}
                    .Build());
  EXPECT_THAT(outcome.text, HasSubstr("cannot be decoded"));
  EXPECT_LT(PeakKilobytes(), kMostKilobytes);
}

TEST_F(HostileDocuments, ValuesThatLeadBackToThemselvesEnd) {
  for (std::string const keys :
       {"/Length 7 0 R", "/ColorSpace 7 0 R", "/Filter 7 0 R", "/Filter [7 0 R 7 0 R]",
        "/DecodeParms 7 0 R /Filter /FlateDecode", "/Width 7 0 R", "/Decode [7 0 R 7 0 R]",
        "/ColorSpace [/Indexed 7 0 R 255 7 0 R]", "/ColorSpace [/ICCBased 4 0 R]",
        "/SMask 4 0 R"}) {
    auto pdf = OnePage{.image = kGrey + " " + keys, .data = "abcd"}.Build();
    pdf.Object(7, "7 0 R");
    ReadBuilt(pdf);
  }
}

TEST_F(HostileDocuments, TreesThatLeadBackToThemselvesEnd) {
  for (std::string const kids : {"2 0 R", "3 0 R 2 0 R 3 0 R", "8 0 R 3 0 R"}) {
    auto pdf = OnePage{.image = kGrey, .data = "abcd"}.Build();
    pdf.Object(2, "<</Type/Pages /Kids [" + kids + " ] /Count 3 /Parent 2 0 R >>");
    pdf.Object(3, "<</Type/Page /Parent 3 0 R /Contents 3 0 R /Resources 3 0 R >>");
    pdf.Object(8, "<</Type/Pages /Kids [2 0 R ] /Count 1 /Parent 8 0 R >>");
    ReadBuilt(pdf);
  }
}

TEST_F(HostileDocuments, SectionsThatLeadBackToThemselvesEnd) {
  auto pdf = OnePage{.image = kGrey, .data = "abcd"}.Build();
  WriteDocument("in.pdf", pdf, {.prev = pdf.Size()});
  EXPECT_TRUE(ReadBy("in.pdf").extracted);
}

// Wherever the run of digits is, the program does not end with its child.
TEST_F(HostileDocuments, RunsOf100DigitsAreNamedAndTheNextDocumentIsRead) {
  std::string const run(100, '7');
  for (int const place : {1, 2, 3, 4, 5}) {
    auto pdf = OnePage{.image = kGrey, .data = "abcd", .content = "/Im0 Do"}.Build();
    if (place == 1) pdf.Object(1, "<</Type/Catalog /Pages " + run + " 0 R >>");
    if (place == 2) pdf.Object(2, "<</Type/Pages /Kids [3 0 R ] /Count " + run + " >>");
    if (place == 3) pdf.Object(2, "<</Type/Pages /Kids [" + run + " 0 R ] /Count 1 >>");
    if (place == 4) pdf.Stream(4, kGrey, "abcd", run);
    if (place == 5) pdf.Stream(4, "/Subtype/Image /Width " + run, "abcd");
    EXPECT_FALSE(ReadBuilt(pdf).extracted) << place;
  }
}

// Pages may share what is large: the work of all pages together is bounded.
TEST_F(HostileDocuments, PagesThatShareALargeContentAreLeftOutAtSomePoint) {
  constexpr DWORD kPages = 2000;
  PdfBuilder pdf;
  std::string kids;
  for (DWORD i = 0; i < kPages; ++i) kids += std::to_string(10 + i) + " 0 R ";
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  pdf.Object(2, "<</Type/Pages /Kids [" + kids + "] /Count " + std::to_string(kPages) + " >>");
  pdf.Stream(3, "/Filter /FlateDecode", Deflate(std::string(size_t{1} << 20, ' ') + "/A Do"));
  pdf.Stream(4, kGrey, "abcd");
  for (DWORD i = 0; i < kPages; ++i) {
    pdf.Object(10 + i,
               "<</Type/Page /Parent 2 0 R /Contents 3 0 R "
               "/Resources <</XObject <</A 4 0 R>> >> >>");
  }
  WriteDocument("in.pdf", pdf);
  auto const start = std::chrono::steady_clock::now();
  ProgramResult const result = Run({"info", Path("in.pdf")});
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(40));
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_THAT(result.out, HasSubstr("! is left out: the document takes too much work to read\n"));
}

TEST_F(HostileDocuments, CutDocumentsAreNamed) {
  WritePix("in.png", Noise(20, 20, 8, true));
  MakeFrom("in.png");
  auto const whole = Document();
  for (size_t size : {size_t{0}, size_t{1}, size_t{9}, size_t{60}, whole.size() / 2,
                      whole.size() - 30, whole.size() - 8}) {
    WriteAll(Path("in.pdf"), {whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size)});
    Outcome const outcome = ReadBy("in.pdf");
    EXPECT_THAT(outcome.text, HasSubstr("in.pdf: ")) << size;
  }
}

// What such a trailer says of encryption cannot be known.
TEST_F(HostileDocuments, DocumentWithATrailerThatIsNoneIsNotRead) {
  for (std::string const key : {"", " /Encrypt 9 0 R"}) {
    WriteDocument("in.pdf", OnePage{.image = kGrey, .data = "abcd"}.Build(),
                  {.keys = "/Root 1 0 R" + key + " /ID [<zz>)"});
    EXPECT_FALSE(ReadBy("in.pdf").extracted);
  }
}

TEST_F(HostileDocuments, EncryptedDocumentsOfEveryFormAreRead) {
  WritePix("in.png", Noise(20, 20, 1));
  MakeFrom("in.png");
  for (std::string const way : {"--linearize", "--object-streams=generate"}) {
    for (std::string const bits : {"40", "128", "256"}) {
      RunProgram({"qpdf", "--warning-exit-0", way, "--allow-weak-crypto", "--encrypt", "", "owner",
                  bits, "--", Out(), Path("in.pdf")});
      ASSERT_TRUE(std::filesystem::exists(Path("in.pdf")));
      EXPECT_TRUE(ReadBy("in.pdf").extracted) << way << bits;
      std::filesystem::remove(Path("x1.png"));
      std::filesystem::remove(Path("in.pdf"));
    }
  }
}

}  // namespace
}  // namespace test
