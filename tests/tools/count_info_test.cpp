// sorrelin count and sorrelin info.
#include <sstream>

#include "tests/tools/read_fixture.h"

namespace test {
namespace {

using ::testing::HasSubstr;

class CountAndInfo : public ReadTest {
 protected:
  void MakeTwo() const {
    WritePix("1.png", Noise(72, 36, 1));
    WritePix("2.png", Noise(144, 72, 32));
    EXPECT_EQ(Make({Out(), Path("1.png"), Path("2.png"), "--title", "K\xC3\xA4se \"1\"",
                    "--keywords", "a, b"})
                  .exit_code,
              0);
  }
};

TEST_F(CountAndInfo, CountOfOneDocumentIsANumber) {
  MakeTwo();
  ProgramResult const result = Run({"count", Out()});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(result.out, "2\n");
  EXPECT_EQ(result.err, "");
}

TEST_F(CountAndInfo, CountOfSeveralNamesThemAndGoesOnBehindBrokenOnes) {
  MakeTwo();
  WriteDeadly("deadly.pdf");
  WriteAll(Path("no.pdf"), {'%', 'P', 'D', 'F'});
  ProgramResult const result =
      Run({"count", Out(), Path("deadly.pdf"), Path("no.pdf"), Path("missing.pdf"), Out()});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.out, Out() + ": 2\n" + Out() + ": 2\n");
  EXPECT_THAT(result.err,
              HasSubstr("deadly.pdf: cannot be opened: it is damaged beyond repair (qpdf "));
  EXPECT_THAT(result.err,
              HasSubstr("no.pdf: cannot be opened: it is not a PDF document (name one)\n"));
  EXPECT_THAT(
      result.err,
      HasSubstr("missing.pdf: cannot be opened: No such file or directory (check the name)\n"));
}

// Shell commands that print something about "$1".
std::vector<std::string> PrintingCalls() {
  std::vector<std::string> calls = {"\"$0\" help"};
  for (std::string const verb : {"count", "info", "info --json"}) {
    calls.push_back("\"$0\" " + verb + " \"$1\"");
  }
  return calls;
}

TEST_F(CountAndInfo, FullDiskIsNamed) {
  MakeTwo();
  for (std::string const& call : PrintingCalls()) {
    ProgramResult const full = RunProgram({"sh", "-c", call + " >/dev/full", SORRELIN_TOOL, Out()});
    EXPECT_EQ(full.exit_code, 1) << call;
    EXPECT_THAT(full.err, HasSubstr("sorrelin: standard output: cannot be written: No space"));
  }
}

TEST_F(CountAndInfo, ReaderThatHasGoneIsNotNamed) {
  MakeTwo();
  for (std::string const& call : PrintingCalls()) {
    ProgramResult const gone =
        RunProgram({"sh", "-c", "{ sleep 0.2; " + call + "; } | true", SORRELIN_TOOL, Out()});
    EXPECT_EQ(gone.err, "") << call;
  }
}

TEST_F(CountAndInfo, WhatIsNoFileIsNamedForWhatItIs) {
  std::filesystem::create_directory(Path("folder.pdf"));
  ProgramResult const result = Run({"count", Path("folder.pdf"), "-"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(
      result.err,
      "sorrelin: " + Path("folder.pdf") +
          ": cannot be opened: it is a directory (name a document)\n"
          "sorrelin: -: cannot be opened: documents are not read from standard input (save it "
          "as a file)\n");
}

TEST_F(CountAndInfo, DeviceIsNamedForWhatItIs) {
  ProgramResult const result = Run({"count", "/dev/null"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.err,
            "sorrelin: /dev/null: cannot be opened: it is not a regular file (save it "
            "as one)\n");
}

TEST_F(CountAndInfo, InfoTellsTextsAndPages) {
  MakeTwo();
  ProgramResult const result = Run({"info", Out()});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(result.out,
            "Pages:       2\n"
            "Title:       K\xC3\xA4se \"1\"\n"
            "Keywords:    a, b\n"
            "\n"
            "  page         points         pixels  depth  compression  dpi\n"
            "     1          36x18          72x36      1  flate        144x144\n"
            "     2          72x36         144x72     24  flate        144x144\n");
}

TEST_F(CountAndInfo, InfoAsJsonHasItsKeysInOrder) {
  WritePix("1.png", Noise(72, 36, 1));
  MakeFrom("1.png", {"--author", "A\"B", "--compression", "g4"});
  ProgramResult const result = Run({"info", "--json", Out()});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(result.out, "{\n  \"file\": \"" + Out() +
                            "\",\n"
                            "  \"pages\": 1,\n"
                            "  \"encrypted\": false,\n"
                            "  \"title\": \"Converted Document\",\n"
                            "  \"author\": \"A\\\"B\",\n"
                            "  \"subject\": \"\",\n"
                            "  \"keywords\": \"\",\n"
                            "  \"page\": [\n"
                            "    {\n"
                            "      \"number\": 1,\n"
                            "      \"width_points\": 36,\n"
                            "      \"height_points\": 18,\n"
                            "      \"rotate\": 0,\n"
                            "      \"width_pixels\": 72,\n"
                            "      \"height_pixels\": 36,\n"
                            "      \"depth\": 1,\n"
                            "      \"compression\": \"g4\",\n"
                            "      \"dpi_x\": 144,\n"
                            "      \"dpi_y\": 144,\n"
                            "      \"problem\": null\n"
                            "    }\n"
                            "  ]\n"
                            "}\n");
}

TEST_F(CountAndInfo, InfoTellsWhyAPictureIsNotRead) {
  WriteDocument("in.pdf", OnePage{.image = "/Subtype/Image /Width 2 /Height 1 /BitsPerComponent 8 "
                                           "/ColorSpace /Pattern /Filter /FlateDecode"}
                              .Build());
  ProgramResult const text = Run({"info", Path("in.pdf")});
  EXPECT_EQ(text.exit_code, 0);
  EXPECT_THAT(text.out, HasSubstr("2x1      -  flate"));
  EXPECT_THAT(text.out, HasSubstr("! its colours are in a space that is not read (Pattern)"));
  ProgramResult const json = Run({"info", "--json", Path("in.pdf")});
  EXPECT_THAT(json.out, HasSubstr("\"depth\": null"));
  EXPECT_THAT(json.out, HasSubstr("\"problem\": \"its colours"));
}

TEST_F(CountAndInfo, EncryptedDocumentIsReadWithTheEmptyPassword) {
  MakeTwo();
  RunProgram({"qpdf", "--warning-exit-0", "--encrypt", "", "", "128", "--use-aes=y", "--", Out(),
              Path("e.pdf")});
  ProgramResult const text = Run({"info", Path("e.pdf")});
  EXPECT_THAT(text.out, ::testing::StartsWith("Pages:       2\nEncrypted:   yes\nTitle:       K"));
  EXPECT_THAT(text.out, HasSubstr("72x36      1  flate        144x144"));
  EXPECT_THAT(Run({"info", "--json", Path("e.pdf")}).out, HasSubstr("\"encrypted\": true"));
  EXPECT_EQ(Run({"count", Path("e.pdf")}).out, "2\n");
}

TEST_F(CountAndInfo, PasswordComesFromAFile) {
  MakeTwo();
  RunProgram({"qpdf", "--warning-exit-0", "--encrypt", "secret", "owner", "256", "--", Out(),
              Path("e.pdf")});
  ProgramResult const refused = Run({"info", Path("e.pdf")});
  EXPECT_EQ(refused.exit_code, 1);
  EXPECT_THAT(refused.err, HasSubstr("e.pdf: is encrypted, and the password is not the one"));
  WriteAll(Path("password"), {'s', 'e', 'c', 'r', 'e', 't', '\n', 'x'});
  ProgramResult const read = Run({"info", Path("e.pdf"), "--password-file", Path("password")});
  EXPECT_EQ(read.exit_code, 0);
  EXPECT_THAT(read.out, HasSubstr("144x144"));
  EXPECT_EQ(Run({"info", Path("e.pdf"), "--password-file", Path("none")}).exit_code, 2);
}

class Encryption : public CountAndInfo, public ::testing::WithParamInterface<char const*> {};

INSTANTIATE_TEST_SUITE_P(Ways, Encryption,
                         ::testing::Values("40", "128 --use-aes=n", "128 --use-aes=y", "256"));

TEST_P(Encryption, PasswordOpensTheDocument) {
  MakeTwo();
  WriteAll(Path("right"), {'s', 'e', 'c', 'r', 'e', 't', '\n'});
  WriteAll(Path("wrong"), {'s', 'e', 'c', 'r', 'e', 't', 's', '\n'});
  RunProgram({"sh", "-c",
              std::string("qpdf --warning-exit-0 --allow-weak-crypto --encrypt secret owner ") +
                  GetParam() + " -- '" + Out() + "' '" + Path("e.pdf") + "'"});
  EXPECT_EQ(Run({"count", Path("e.pdf")}).out, "2\n");
  std::vector<std::string> const verbs[] = {{"info"},
                                            {"extract", "--force", "--output", Path("x%d.png")}};
  for (std::vector<std::string> arguments : verbs) {
    arguments.push_back(Path("e.pdf"));
    ProgramResult const closed = Run(arguments);
    EXPECT_EQ(closed.exit_code, 1);
    EXPECT_THAT(closed.err, HasSubstr("e.pdf: is encrypted"));
    arguments.insert(arguments.end(), {"--password-file", Path("wrong")});
    EXPECT_EQ(Run(arguments).exit_code, 1);
    arguments.back() = Path("right");
    ProgramResult const open = Run(arguments);
    EXPECT_EQ(open.exit_code, 0) << open.err;
  }
}

// The library counts encrypted documents whose page tree is not in object streams.
TEST_F(CountAndInfo, CountTakesThePasswordOfEncryptedObjectStreams) {
  MakeTwo();
  RunProgram({"qpdf", "--warning-exit-0", "--object-streams=generate", "--encrypt", "secret",
              "owner", "256", "--", Out(), Path("e.pdf")});
  WriteAll(Path("right"), {'s', 'e', 'c', 'r', 'e', 't', '\n'});
  WriteAll(Path("wrong"), {'w', 'r', 'o', 'n', 'g', '\n'});
  for (std::vector<std::string> const& option :
       {std::vector<std::string>{}, {"--password-file", Path("wrong")}}) {
    std::vector<std::string> arguments = {"count", Path("e.pdf")};
    arguments.insert(arguments.end(), option.begin(), option.end());
    ProgramResult const closed = Run(arguments);
    EXPECT_EQ(closed.exit_code, 1);
    EXPECT_THAT(closed.err, HasSubstr("e.pdf: is encrypted, and the password is not the one"));
  }
  ProgramResult const open = Run({"count", "--password-file", Path("right"), Path("e.pdf"), Out()});
  EXPECT_EQ(open.exit_code, 0) << open.err;
  EXPECT_EQ(open.out, Path("e.pdf") + ": 2\n" + Out() + ": 2\n");
}

// The stated number may be far beyond the pages that there are.
TEST_F(CountAndInfo, PagesThatAreNotListedAreToldAtOnce) {
  PdfBuilder pdf;
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  pdf.Object(2, "<</Type/Pages /Kids [3 0 R ] /Count 4000000000 >>");
  pdf.Object(3, "<</Type/Page /Parent 2 0 R >>");
  WriteDocument("in.pdf", pdf);
  ProgramResult const result = Run({"info", Path("in.pdf")});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_THAT(result.out, HasSubstr("! has no picture of its own"));
  EXPECT_THAT(result.out, HasSubstr("! further pages are not in the document\n"));
}

TEST_F(CountAndInfo, DeadlyDocumentIsNamedByInfo) {
  WriteDeadly("deadly.pdf");
  ProgramResult const result = Run({"info", Path("deadly.pdf")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "sorrelin: " + Path("deadly.pdf") +
                            ": cannot be opened: it is damaged beyond repair"
                            " (qpdf in.pdf out.pdf may mend it)\n");
}

// The library is led astray by an identifier with a NUL, and by offsets that are wrong.
TEST_F(CountAndInfo, DocumentsThatTheLibraryDoesNotOpenAreCounted) {
  PdfBuilder pdf = OnePage{}.Build();
  WriteDocument("zero.pdf", pdf, {.keys = std::string("/ID [(a\0b) (ab)] /Root 1 0 R", 28)});
  WriteDocument("off.pdf", OnePage{}.Build());
  auto bytes = ReadAll(Path("off.pdf"));
  bytes.insert(bytes.begin() + 9, 20, ' ');
  WriteAll(Path("off.pdf"), bytes);
  for (char const* const name : {"zero.pdf", "off.pdf"}) {
    EXPECT_EQ(Run({"count", Path(name)}).out, "1\n") << name;
  }
}

TEST_F(CountAndInfo, HelpOfEveryVerbFits80Columns) {
  for (char const* const verb : {"count", "info", "extract"}) {
    ProgramResult const result = Run({verb, "--help"});
    EXPECT_EQ(result.exit_code, 0);
    std::istringstream lines(result.out);
    for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 80u) << line;
  }
}

TEST_F(CountAndInfo, MissingFileArgumentIsAUsageError) {
  EXPECT_EQ(Run({"count"}).exit_code, 2);
  EXPECT_EQ(Run({"info"}).exit_code, 2);
  EXPECT_EQ(Run({"info", "a", "b"}).exit_code, 2);
  EXPECT_EQ(Run({"extract"}).exit_code, 2);
}

}  // namespace
}  // namespace test
