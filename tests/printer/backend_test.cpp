// The backend as the scheduler runs it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr char kDocument[] = "%PDF-1.4\nsomething\n%%EOF\n";
constexpr int kCancel = 5, kFailed = 1, kHold = 3, kStop = 4;

class BackendTest : public ::testing::Test {
 protected:
  BackendTest() { fs::create_directory(directory_ / "out"); }

  std::string Folder() const { return (directory_ / "out").string(); }

  test::ProgramResult Deliver(std::string const& title, std::string const& input = kDocument,
                              std::string const& user = "somebody-else") const {
    return test::RunProgram({SORRELIN_BACKEND, "1", user, title, "1", ""},
                            {input.begin(), input.end()}, {"DEVICE_URI=sorrelin:" + Folder()});
  }

  // Names of the files in a user's folder, in order.
  std::vector<std::string> Names(std::string const& user = "somebody-else") const {
    std::vector<std::string> names;
    std::error_code none;
    for (auto const& entry : fs::directory_iterator(directory_ / "out" / user, none)) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  std::string Content(std::string const& name) const {
    auto const bytes = test::ReadAll(directory_ / "out" / "somebody-else" / name);
    return {bytes.begin(), bytes.end()};
  }

  static unsigned Mode(fs::path const& path) {
    return static_cast<unsigned>(fs::status(path).permissions());
  }

  test::TempDir directory_;
};

TEST_F(BackendTest, ListsItselfWithoutArguments) {
  auto const result = test::RunProgram({SORRELIN_BACKEND}, {});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_THAT(result.out, StartsWith("file sorrelin:/var/spool/sorrelin \""));
}

TEST_F(BackendTest, DocumentHasTheTitleAndIsTheUsersAlone) {
  EXPECT_EQ(Deliver("Letter").exit_code, 0);
  EXPECT_THAT(Names(), testing::ElementsAre("Letter.pdf"));
  EXPECT_EQ(Content("Letter.pdf"), kDocument);
  EXPECT_EQ(Mode(directory_ / "out/somebody-else"), 0700u);
  EXPECT_EQ(Mode(directory_ / "out/somebody-else/Letter.pdf"), 0600u);
}

TEST_F(BackendTest, NothingIsOverwritten) {
  Deliver("a", "%PDF-1\n%%EOF");
  Deliver("a", "%PDF-2\n%%EOF");
  Deliver("a", "%PDF-3\n%%EOF");
  EXPECT_THAT(Names(), testing::ElementsAre("a (2).pdf", "a (3).pdf", "a.pdf"));
  EXPECT_EQ(Content("a.pdf"), "%PDF-1\n%%EOF");
}

TEST_F(BackendTest, TitlesAndUsersStayInTheFolder) {
  EXPECT_EQ(Deliver("../x").exit_code, 0);
  EXPECT_EQ(Deliver("t", kDocument, "../../y").exit_code, 0);
  EXPECT_THAT(Names(), testing::ElementsAre("_x.pdf"));
  EXPECT_THAT(Names("_.._y"), testing::ElementsAre("t.pdf"));
}

TEST_F(BackendTest, LinkInPlaceOfAFileIsLeftAlone) {
  fs::create_directory(directory_ / "out/somebody-else");
  fs::create_symlink(directory_ / "target", directory_ / "out/somebody-else/a.pdf");
  EXPECT_EQ(Deliver("a").exit_code, 0);
  EXPECT_FALSE(fs::exists(directory_ / "target"));
  EXPECT_EQ(Content("a (2).pdf"), kDocument);
}

TEST_F(BackendTest, LinkInPlaceOfAUsersFolderIsNotFollowed) {
  fs::create_directory(directory_ / "elsewhere");
  fs::create_symlink(directory_ / "elsewhere", directory_ / "out/somebody-else");
  EXPECT_EQ(Deliver("a").exit_code, kHold);
  EXPECT_TRUE(fs::is_empty(directory_ / "elsewhere"));
}

TEST_F(BackendTest, FolderThatIsMissingStopsTheQueue) {
  fs::remove(directory_ / "out");
  auto const result = Deliver("a");
  EXPECT_EQ(result.exit_code, kStop);
  EXPECT_THAT(result.err, StartsWith("ERROR: "));
}

TEST_F(BackendTest, AddressesThatNameNoFolderStopTheQueue) {
  for (std::string const uri : {"sorrelin:", "sorrelin:relative", "sorrelin://host/x",
                                "sorrelin:/a/../b", "sorrelin:/%00", "sorrelin:/%zz", "ipp:/x"}) {
    auto const result =
        test::RunProgram({SORRELIN_BACKEND, "1", "u", "t", "1", ""}, {}, {"DEVICE_URI=" + uri});
    EXPECT_EQ(result.exit_code, kStop) << uri;
  }
}

TEST_F(BackendTest, WhatIsNoDocumentIsGivenUp) {
  EXPECT_EQ(Deliver("a", "hello").exit_code, kCancel);
  EXPECT_EQ(Names().size(), 0u);
}

TEST_F(BackendTest, DocumentThatEndsEarlyIsNotStored) {
  EXPECT_EQ(Deliver("a", "%PDF-1.4\nhalf").exit_code, kFailed);
  EXPECT_EQ(Names().size(), 0u);
}

TEST_F(BackendTest, DocumentOfAnAccountIsItsOwn) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root";
  fs::permissions(directory_.path(), fs::perms(0755));
  EXPECT_EQ(Deliver("a", kDocument, "nobody").exit_code, 0);
  struct stat status = {};
  ASSERT_EQ(stat((directory_ / "out/nobody/a.pdf").c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, getpwnam("nobody")->pw_uid);
}

TEST_F(BackendTest, FolderThatIsNotTheUsersHoldsTheJob) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root";
  fs::create_directory(directory_ / "out/nobody");  // root's
  auto const result = Deliver("a", kDocument, "nobody");
  EXPECT_EQ(result.exit_code, kHold);
  EXPECT_THAT(result.err, HasSubstr("belongs to somebody else"));
}

TEST_F(BackendTest, EndOfTheJobLeavesNothing) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ASSERT_EQ(write(ends[1], kDocument, 9), 9);
  test::RunningProgram program({SORRELIN_BACKEND, "1", "somebody-else", "a", "1", ""},
                               {"DEVICE_URI=sorrelin:" + Folder()}, ends[0]);
  while (Names().empty()) usleep(10000);
  program.Signal(SIGTERM);
  EXPECT_EQ(program.Wait().exit_code, kCancel);
  EXPECT_EQ(Names().size(), 0u);
  close(ends[0]);
  close(ends[1]);
}

}  // namespace
