// Pages added to documents: what the new document is, and what is left alone.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "tests/tools/append_fixture.h"

namespace test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr char kRewrite[] = "(rewrite it first: qpdf --object-streams=disable in.pdf out.pdf)";

class AppendVerb : public AppendTest {
 protected:
  // The pages' pictures are those with the numbers 0 to count - 1.
  void ExpectPages(int count) const {
    ExtractAll({"--output", Path("page%d.png"), "--force"});
    for (int i = 0; i < count; ++i) {
      EXPECT_TRUE(Shows("page" + std::to_string(i + 1) + ".png", Picture(i))) << i;
    }
  }
  struct stat StatusOf(std::string const& name) const {
    struct stat status {};
    EXPECT_EQ(stat(Path(name).c_str(), &status), 0);
    return status;
  }
};

TEST_F(AppendVerb, DocumentThatDoesNotExistIsMade) {
  WritePicture("a.png", 0);
  AppendTo("out.pdf", {"a.png"});
  ExpectPages(1);
  EXPECT_EQ(CountPages(), "1\n");
}

TEST_F(AppendVerb, PagesComeBehindTheOldOnesWhoseBytesStay) {
  for (std::string const option : {"--quiet", "--in-place"}) {
    std::filesystem::remove(Out());
    MakeDocument(2);
    Bytes const before = Document();
    WritePicture("a.png", 2);
    WritePicture("b.png", 3);
    AppendTo("out.pdf", {"a.png", "b.png"}, {option});
    EXPECT_TRUE(GrewFrom(before));
    EXPECT_EQ(CountPages(), "4\n");
    ExpectPages(4);
  }
}

TEST_F(AppendVerb, OptionsOfPagesAreThoseOfMake) {
  MakeDocument(1);
  WritePicture("a.png", 1);
  AppendTo("out.pdf", {"a.png"}, {"--compression", "jpeg", "--quality", "50", "--dpi", "100"});
  EXPECT_TRUE(DocumentHas("/DCTDecode"));
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 12 17]"));
}

TEST_F(AppendVerb, PermissionsAndOwnerStay) {
  MakeDocument(1);
  uid_t const owner = geteuid() == 0 ? 12'345 : geteuid();
  gid_t const group = geteuid() == 0 ? 23'456 : getegid();
  ASSERT_EQ(chown(Out().c_str(), owner, group), 0);
  ASSERT_EQ(chmod(Out().c_str(), 0640), 0);
  WritePicture("a.png", 1);
  AppendTo("out.pdf", {"a.png"});
  struct stat const status = StatusOf("out.pdf");
  EXPECT_EQ(status.st_mode & 07777, 0640u);
  EXPECT_EQ(status.st_uid, owner);
  EXPECT_EQ(status.st_gid, group);
}

TEST_F(AppendVerb, OwnerThatCannotBeKeptLeavesTheDocumentAlone) {
  MakeDocument(1);
  WritePicture("a.png", 1);
  // Only the administrator can give a file to somebody else, and so only he can try this.
  if (geteuid() == 0) {
    ASSERT_EQ(chown(Out().c_str(), 12'345, 23'456), 0);
    ASSERT_EQ(chmod(Out().c_str(), 0666), 0);
    Bytes const before = Document();
    ProgramResult const result = AppendAsUser({Out(), Path("a.png")});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.err, HasSubstr("is as it was, because its copy cannot be written: "));
    EXPECT_THAT(result.err, HasSubstr("(--in-place needs no copy)"));
    EXPECT_EQ(Document(), before);
  }
  EXPECT_EQ(AppendAsUser({Out(), Path("a.png"), "--in-place"}).exit_code, 0);
  EXPECT_EQ(CountPages(), "2\n");
}

TEST_F(AppendVerb, LinkStaysALinkAndItsTargetGrows) {
  std::filesystem::create_directory(Path("sub"));
  MakeDocument(1);
  std::filesystem::rename(Out(), Path("sub/real.pdf"));
  std::filesystem::create_symlink("sub/real.pdf", Out());
  WritePicture("a.png", 1);
  AppendTo("out.pdf", {"a.png"});
  EXPECT_TRUE(std::filesystem::is_symlink(Out()));
  EXPECT_FALSE(std::filesystem::is_symlink(Path("sub/real.pdf")));
  EXPECT_EQ(CountPages("sub/real.pdf"), "2\n");
  EXPECT_THAT(Names(), ElementsAre("a.png", "out.pdf", "sub"));
}

TEST_F(AppendVerb, LinkThatLeadsNowhereIsRefused) {
  std::filesystem::create_symlink("nowhere.pdf", Out());
  ExpectRefused("out.pdf", "is a link to a file that does not exist");
  EXPECT_FALSE(std::filesystem::exists(Path("nowhere.pdf")));
}

TEST_F(AppendVerb, InPlaceKeepsTheFileItself) {
  MakeDocument(1);
  std::filesystem::create_hard_link(Out(), Path("twin.pdf"));
  WritePicture("a.png", 1);
  AppendTo("out.pdf", {"a.png"}, {"--in-place"});
  EXPECT_EQ(CountPages("twin.pdf"), "2\n");
}

TEST_F(AppendVerb, ObjectStreamsAreRefusedWithTheCommandThatHelps) {
  MakeDocument(2);
  RunProgram({"qpdf", "--object-streams=generate", Out(), Path("streams.pdf")});
  ExpectRefusedBothWays("streams.pdf", std::string("keeps objects in object streams, and takes no "
                                                   "pages ") +
                                           kRewrite);
  RunProgram({"qpdf", "--object-streams=disable", Path("streams.pdf"), Out()});
  WritePicture("new.png", 2);
  AppendTo("out.pdf", {"new.png"});
  ExpectPages(3);
}

// A document that the library does not update is rewritten, and shows what it showed.
TEST_F(AppendVerb, DocumentsOfOtherFormsAreRewritten) {
  MakeDocument(2);
  for (std::string const way : {"--object-streams=generate", "--force-version=2.0",
                                "--linearize --object-streams=generate"}) {
    RunProgram({"sh", "-c",
                "qpdf --warning-exit-0 " + way + " '" + Out() + "' '" + Path("other.pdf") + "'"});
    WritePicture("new.png", 2);
    ProgramResult const result = Append({Path("other.pdf"), Path("new.png")});
    EXPECT_EQ(result.exit_code, 0) << way << result.err;
    EXPECT_THAT(result.err, HasSubstr("other.pdf: was rewritten for the new pages: it ")) << way;
    EXPECT_EQ(CountPages("other.pdf"), "3\n");
    for (int i = 0; i < 3; ++i) {
      std::string const page = std::to_string(i + 1);
      ProgramResult const extracted =
          RunProgram({SORRELIN_TOOL, "extract", Path("other.pdf"), "--pages", page, "--output",
                      Path("x.png"), "--force"});
      EXPECT_EQ(extracted.exit_code, 0) << extracted.err;
      EXPECT_TRUE(Shows("x.png", Picture(i))) << way << i;
    }
    EXPECT_EQ(RunProgram({"qpdf", "--warning-exit-0", "--check", Path("other.pdf")}).exit_code, 0);
    // What has been rewritten takes further pages.
    WritePicture("new.png", 3);
    EXPECT_EQ(Append({Path("other.pdf"), Path("new.png")}).exit_code, 0);
    EXPECT_EQ(CountPages("other.pdf"), "4\n");
  }
}

TEST_F(AppendVerb, DamagedTableIsMendedByTheRewriting) {
  MakeDocument(2);
  Bytes bytes = Document();
  WriteAll(Path("cut.pdf"), Bytes(bytes.begin(), bytes.end() - 60));
  WritePicture("new.png", 2);
  ProgramResult const result = Append({Path("cut.pdf"), Path("new.png")});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_THAT(result.err, HasSubstr("it is damaged"));
  EXPECT_EQ(CountPages("cut.pdf"), "3\n");
}

TEST_F(AppendVerb, WhatTheCatalogHoldsIsStillThere) {
  PdfBuilder pdf;
  AddPageTree(pdf, 1);
  pdf.Object(1,
             "<</Type/Catalog /Pages 2 0 R /Outlines 10 0 R /PageLabels <</Nums [0 <</S /r>>]>> "
             "/AcroForm <</Fields [12 0 R]>> /Metadata 13 0 R /Lang (en)>>");
  pdf.Object(10, "<</Type/Outlines /First 11 0 R /Last 11 0 R /Count 1>>");
  pdf.Object(11, "<</Title (Mark) /Parent 10 0 R>>");
  pdf.Object(12, "<</FT /Tx /T (field) /V (value)>>");
  pdf.Stream(13, "/Type/Metadata /Subtype/XML", "<x:xmpmeta/>");
  WriteDocument("form.pdf", pdf);
  WriteAll(Path("note.txt"), {'n', 'o', 't', 'e'});
  RunProgram(
      {"qpdf", "--add-attachment", Path("note.txt"), "--", Path("form.pdf"), Path("in.pdf")});
  WritePicture("new.png", 0);
  ExpectRefused("in.pdf", "has what an added page would take from its catalog", {"--no-rewrite"});
  ProgramResult const result = Append({Path("in.pdf"), Path("new.png")});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_EQ(CountPages("in.pdf"), "2\n");
  std::string const json = RunProgram({"qpdf", "--json=2", Path("in.pdf")}).out;
  for (char const* const kept :
       {"u:Mark", "u:field", "u:value", "/PageLabels", "u:en", "/Metadata"}) {
    EXPECT_THAT(json, HasSubstr(kept));
  }
  EXPECT_THAT(RunProgram({"qpdf", "--list-attachments", Path("in.pdf")}).out,
              HasSubstr("note.txt"));
}

TEST_F(AppendVerb, SignedDocumentIsRefused) {
  PdfBuilder pdf;
  AddPageTree(pdf, 1);
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R /AcroForm <</Fields [10 0 R] /SigFlags 3>> >>");
  pdf.Object(10, "<</FT /Sig /T (s) /V <</Type/Sig /Contents <00> >> >>");
  WriteDocument("signed.pdf", pdf);
  ExpectRefused("signed.pdf", "is signed, and a change would void the signature");
  ExpectRefusedBothWays("signed.pdf", "is signed, and a change would void the signature");
}

TEST_F(AppendVerb, EncryptedDocumentIsRefused) {
  MakeDocument(1);
  RunProgram({"qpdf", "--object-streams=disable", "--allow-weak-crypto", "--encrypt", "", "owner",
              "128", "--", Out(), Path("locked.pdf")});
  ExpectRefusedBothWays("locked.pdf",
                        "is encrypted, and takes no pages (qpdf --decrypt in.pdf out.pdf)");
}

TEST_F(AppendVerb, TrailerThatAChangeWouldDamageIsRefused) {
  PdfBuilder pdf;
  AddPageTree(pdf, 2);
  WriteDocument("spaced.pdf", pdf, {.keys = "/Root 1 0 R /ID [<0102> <0304>]"});
  ExpectRefusedBothWays("spaced.pdf",
                        std::string("has a trailer that a change would damage ") + kRewrite);
}

TEST_F(AppendVerb, PageTreeThatTakesNoPagesIsRefused) {
  PdfBuilder pdf;
  AddPageTree(pdf, 1);
  // With the count first, the library adds pages to the first array there is.
  pdf.Object(2, "<</Type/Pages /Count 1 /MediaBox [0 0 9 9] /Kids [3 0 R] >>");
  WriteDocument("boxed.pdf", pdf);
  ExpectRefusedBothWays("boxed.pdf",
                        std::string("has a page tree that takes no pages ") + kRewrite);
  pdf = PdfBuilder();
  AddPageTree(pdf, 1);
  pdf.Object(2, "<</Type/Pages /Count 1 /Kids 4 0 R >>");
  pdf.Object(4, "[3 0 R]");
  WriteDocument("indirect.pdf", pdf);
  ExpectRefusedBothWays("indirect.pdf", "cannot be");
}

TEST_F(AppendVerb, FilesThatAreNoDocumentsAreLeftAlone) {
  MakeDocument(1);
  Bytes bytes = Document();
  WriteAll(Path("text.pdf"), Bytes(300, 'x'));
  WriteAll(Path("empty.pdf"), {});
  WriteAll(Path("cut.pdf"), Bytes(bytes.begin(), bytes.end() - 60));
  bytes[5] = '2';
  bytes[7] = '0';
  WriteAll(Path("later.pdf"), bytes);
  for (std::string const name : {"text.pdf", "empty.pdf", "cut.pdf", "later.pdf"}) {
    ExpectRefusedBothWays(name, kRewrite);
  }
  WriteDeadly("deadly.pdf");
  ExpectRefusedBothWays("deadly.pdf", "is damaged in a way that ends its reader");
}

TEST_F(AppendVerb, DirectoryIsRefused) {
  std::filesystem::create_directory(Path("folder"));
  WritePicture("a.png", 0);
  ProgramResult const result = Append({Path("folder"), Path("a.png")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("is not a regular file"));
}

TEST_F(AppendVerb, RunWithoutAPageLeavesTheDocumentAsItWas) {
  MakeDocument(1);
  Bytes const before = Document();
  for (std::string const option : {"--quiet", "--in-place"}) {
    ProgramResult const result = Append({Out(), Path("missing.png"), option});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.err, HasSubstr(Path("missing.png") + ": No such file or directory"));
    EXPECT_THAT(result.err, HasSubstr(Out() + ": is as it was: there is no page to add"));
    EXPECT_EQ(Document(), before);
    EXPECT_THAT(Names(), ElementsAre("out.pdf"));
  }
}

TEST_F(AppendVerb, RunThatFindsBlankPagesOnlyIsDone) {
  WritePix("blank.png", PixPtr(pixCreate(200, 200, 1)));
  EXPECT_EQ(Append({Out(), Path("blank.png"), "--skip-blank"}).exit_code, 0);
  EXPECT_FALSE(std::filesystem::exists(Out()));
  MakeDocument(1);
  Bytes const before = Document();
  for (std::string const option : {"--quiet", "--in-place"}) {
    ProgramResult const result = Append({Out(), Path("blank.png"), "--skip-blank", option});
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.err, "sorrelin: " + Path("blank.png") +
                              ": is blank and left out: 0.000 percent ink (limit 0.05)\n");
    EXPECT_EQ(Document(), before);
  }
  EXPECT_EQ(Append({Out(), Path("blank.png"), Path("missing.png"), "--skip-blank"}).exit_code, 1);
}

TEST_F(AppendVerb, GoodPicturesAreAddedAmongBadOnes) {
  MakeDocument(1);
  WritePicture("a.png", 1);
  WritePicture("b.png", 2);
  WriteAll(Path("bad.png"), Bytes(100, 'x'));
  ProgramResult const result =
      Append({Out(), Path("a.png"), Path("bad.png"), Path("missing.png"), Path("b.png")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 2) << result.err;
  ExpectPages(3);
}

TEST_F(AppendVerb, DocumentThatAnotherProgramHoldsIsLeftAlone) {
  MakeDocument(1);
  int const file = open(Out().c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(flock(file, LOCK_SH), 0);
  ExpectRefusedBothWays("out.pdf", "is held by another program (try again");
  close(file);
  AppendTo("out.pdf", {"new.png"});
}

TEST_F(AppendVerb, WrongCommandLinesAreToldApart) {
  MakeDocument(1);
  WritePicture("a.png", 1);
  EXPECT_EQ(Append({}).exit_code, 2);
  EXPECT_EQ(Append({Out()}).exit_code, 2);
  EXPECT_EQ(Append({"-", Path("a.png")}).exit_code, 2);
  EXPECT_EQ(Append({"", Path("a.png")}).exit_code, 2);
  ProgramResult const same = Append({Out(), Out()});
  EXPECT_EQ(same.exit_code, 2);
  EXPECT_THAT(same.err, HasSubstr("is one of the images"));
}

}  // namespace
}  // namespace test
