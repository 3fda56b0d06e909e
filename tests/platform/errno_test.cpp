// Which system error number a failed system call stores.
#include <gtest/gtest.h>
#include <sorrelin/platform/posix_support.h>

#include <cerrno>
#include <string>

namespace {

using sorrelin::ErrorOfErrno;

TEST(ErrorOfErrno, MissingNames) {
  EXPECT_EQ(ErrorOfErrno(ENOENT), 2u);
  EXPECT_EQ(ErrorOfErrno(ENOTDIR), 3u);
}

TEST(ErrorOfErrno, RefusedAccess) {
  EXPECT_EQ(ErrorOfErrno(EACCES), 5u);
  EXPECT_EQ(ErrorOfErrno(EPERM), 5u);
  EXPECT_EQ(ErrorOfErrno(EISDIR), 5u);
  EXPECT_EQ(ErrorOfErrno(EROFS), 19u);
  EXPECT_EQ(ErrorOfErrno(ETXTBSY), 32u);
  EXPECT_EQ(ErrorOfErrno(EWOULDBLOCK), 32u);
}

TEST(ErrorOfErrno, ExhaustedResources) {
  EXPECT_EQ(ErrorOfErrno(EMFILE), 4u);
  EXPECT_EQ(ErrorOfErrno(ENFILE), 4u);
  EXPECT_EQ(ErrorOfErrno(ENOMEM), 8u);
  EXPECT_EQ(ErrorOfErrno(ENOSPC), 112u);
  EXPECT_EQ(ErrorOfErrno(EDQUOT), 112u);
  EXPECT_EQ(ErrorOfErrno(EFBIG), 223u);
}

TEST(ErrorOfErrno, Names) {
  EXPECT_EQ(ErrorOfErrno(EEXIST), 80u);
  EXPECT_EQ(ErrorOfErrno(EILSEQ), 123u);
  EXPECT_EQ(ErrorOfErrno(ELOOP), 123u);
  EXPECT_EQ(ErrorOfErrno(ENOTEMPTY), 145u);
  EXPECT_EQ(ErrorOfErrno(ENAMETOOLONG), 206u);
}

TEST(ErrorOfErrno, TheRest) {
  EXPECT_EQ(ErrorOfErrno(0), 0u);
  EXPECT_EQ(ErrorOfErrno(EBADF), 6u);
  EXPECT_EQ(ErrorOfErrno(EOPNOTSUPP), 50u);
  EXPECT_EQ(ErrorOfErrno(ENOSYS), 50u);
  EXPECT_EQ(ErrorOfErrno(EINVAL), 87u);
  EXPECT_EQ(ErrorOfErrno(EFAULT), 87u);
  EXPECT_EQ(ErrorOfErrno(EPIPE), 109u);
  EXPECT_EQ(ErrorOfErrno(ESPIPE), 132u);
  EXPECT_EQ(ErrorOfErrno(EIO), 1117u);
}

TEST(ErrorOfErrno, AnyOtherIsAGeneralFailure) {
  EXPECT_EQ(ErrorOfErrno(ECONNREFUSED), 31u);
  EXPECT_EQ(ErrorOfErrno(-1), 31u);
}

TEST(Guarded, ShortMemoryIsError8AndTheFailure) {
  auto const work = []() -> int { throw std::bad_alloc(); };
  EXPECT_EQ(sorrelin::Guarded(-5, work), -5);
  EXPECT_EQ(GetLastError(), 8u);
}

}  // namespace
