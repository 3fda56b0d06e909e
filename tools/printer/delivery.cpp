// Everything in the user's folder is done with the user's rights and relative to the open folder,
// so that links in it lead nowhere that the user could not go.
#include "tools/printer/delivery.h"

#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <random>
#include <span>
#include <system_error>
#include <utility>

#include "tools/printer/file_title.h"
#include "tools/printer/job_messages.h"

namespace sorrelin::tool {
namespace {

constexpr std::string_view kScheme = "sorrelin:", kDocumentMark = "%PDF-", kDocumentEnd = "%%EOF";
constexpr int kMostNumber = 9999;
constexpr mode_t kFolderMode = 0700, kFileMode = 0600;
constexpr size_t kPieceBytes = 1 << 16;

std::atomic<bool> cancelled = false;

class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  int get() const { return number_; }
  bool IsOpen() const { return number_ >= 0; }

 private:
  int number_;
};

// Removes a file of the current folder unless it has been removed.
class TemporaryFile {
 public:
  TemporaryFile() {
    std::random_device random;
    char name[40];
    std::snprintf(name, sizeof name, ".sorrelin-%08x%08x.tmp", random(), random());
    name_ = name;
    file_ = Descriptor(open(name, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kFileMode));
  }
  ~TemporaryFile() {
    if (file_.IsOpen()) unlink(name_.c_str());
  }
  TemporaryFile(TemporaryFile const&) = delete;
  TemporaryFile& operator=(TemporaryFile const&) = delete;

  char const* name() const { return name_.c_str(); }
  int get() const { return file_.get(); }
  bool IsOpen() const { return file_.IsOpen(); }

 private:
  std::string name_;
  Descriptor file_;
};

std::string SystemText() { return std::generic_category().message(errno); }

BackendResult Refuse(BackendResult result, std::string const& text) {
  SayToScheduler("ERROR", text);
  return result;
}

class Delivering {
 public:
  explicit Delivering(Delivery const& delivery)
      : delivery_(delivery), user_folder_(FileTitle(delivery.user, "anonymous")) {}

  BackendResult Run() {
    umask(0077);
    if (auto const start = ReadStart(); start != BackendResult::kDone || filled_ == 0) return start;
    auto result = OpenFolder();
    if (result == BackendResult::kDone) result = BecomeUser();
    return result == BackendResult::kDone ? Store() : result;
  }

 private:
  // A filter that fails sends nothing, and the scheduler knows that it has failed.
  BackendResult ReadStart() {
    while (filled_ < kDocumentMark.size()) {
      ssize_t const got = ReadInput(std::span(piece_).subspan(filled_));
      if (got <= 0) break;
      filled_ += static_cast<size_t>(got);
    }
    if (cancelled) return BackendResult::kCancel;
    if (filled_ == 0) return BackendResult::kDone;
    bool const is_document = std::string_view(piece_.data(), filled_).starts_with(kDocumentMark);
    if (is_document) return BackendResult::kDone;
    return Refuse(BackendResult::kCancel, "The job is no PDF document, and is given up");
  }

  // As read, but -1 after a request to end, which is let in only while this waits.
  ssize_t ReadInput(std::span<char> to) const {
    sigset_t all_let_in;
    sigemptyset(&all_let_in);
    pollfd waiting = {delivery_.input, POLLIN, 0};
    while (!cancelled) {
      int const ready = ppoll(&waiting, 1, nullptr, &all_let_in);
      if (ready > 0) return read(delivery_.input, to.data(), to.size());
      if (ready < 0 && errno != EINTR) break;
    }
    return -1;
  }

  BackendResult OpenFolder() {
    Descriptor const all(open(delivery_.folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    std::string const name = delivery_.folder + "/" + user_folder_;
    if (!all.IsOpen()) {
      return Refuse(BackendResult::kStop, delivery_.folder + " cannot be used: " + SystemText());
    }
    is_new_ = mkdirat(all.get(), user_folder_.c_str(), kFolderMode) == 0;
    if (!is_new_ && errno != EEXIST) {
      return Refuse(BackendResult::kStop, name + " cannot be made: " + SystemText());
    }
    folder_ = Descriptor(
        openat(all.get(), user_folder_.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (folder_.IsOpen()) return BackendResult::kDone;
    return Refuse(BackendResult::kHold, name + " is no folder that can be used: " + SystemText());
  }

  // Without root's rights, everything belongs to whom this runs as.
  BackendResult BecomeUser() {
    passwd const* const account = geteuid() == 0 && user_folder_ == delivery_.user
                                      ? getpwnam(delivery_.user.c_str())
                                      : nullptr;
    uid_t const owner = account != nullptr ? account->pw_uid : geteuid();
    struct stat status = {};
    bool usable = !is_new_ || account == nullptr ||
                  fchown(folder_.get(), account->pw_uid, account->pw_gid) == 0;
    usable = usable && fstat(folder_.get(), &status) == 0;
    if (usable && status.st_uid != owner) {
      return Refuse(BackendResult::kHold,
                    "The folder of " + user_folder_ + " belongs to somebody else");
    }
    usable = usable && fchdir(folder_.get()) == 0;
    if (account != nullptr) {
      usable = usable && initgroups(account->pw_name, account->pw_gid) == 0 &&
               setgid(account->pw_gid) == 0 && setuid(account->pw_uid) == 0;
    }
    if (usable) return BackendResult::kDone;
    return Refuse(BackendResult::kHold,
                  "The folder of " + user_folder_ + " cannot be used: " + SystemText());
  }

  BackendResult Store() {
    TemporaryFile const file;
    bool const written = file.IsOpen() && Write(file.get()) && fsync(file.get()) == 0;
    if (cancelled) return BackendResult::kCancel;
    if (written && !IsWhole(file.get())) {
      return Refuse(BackendResult::kFailed, "The document ends early, and is not stored");
    }
    if (written && Name(file.name())) {
      fsync(folder_.get());
      return BackendResult::kDone;
    }
    return Refuse(BackendResult::kHold, "The document cannot be stored in the folder of " +
                                            user_folder_ + ": " + SystemText());
  }

  bool Write(int file) {
    while (filled_ > 0) {
      for (size_t done = 0; done < filled_;) {
        ssize_t const put = write(file, piece_.data() + done, filled_ - done);
        if (cancelled || (put < 0 && errno != EINTR)) return false;
        if (put > 0) done += static_cast<size_t>(put);
      }
      ssize_t const got = ReadInput(piece_);
      if (got < 0) return false;
      filled_ = static_cast<size_t>(got);
    }
    return true;
  }

  // A filter that is ended leaves a document without its end.
  static bool IsWhole(int file) {
    std::array<char, 32> end;
    off_t const size = lseek(file, 0, SEEK_END);
    off_t const from = std::max<off_t>(0, size - static_cast<off_t>(end.size()));
    ssize_t const got = pread(file, end.data(), end.size(), from);
    if (got <= 0) return false;
    return std::string_view(end.data(), static_cast<size_t>(got)).find(kDocumentEnd) !=
           std::string_view::npos;
  }

  // A second name never replaces a file, as a new name for the same one would.
  bool Name(char const* temporary) {
    std::string const title = FileTitle(delivery_.title, "document");
    for (int number = 1; number <= kMostNumber; ++number) {
      std::string const name = NumberedName(title, number);
      bool const named = link(temporary, name.c_str()) == 0 || RenameTo(temporary, name);
      if (named) SayToScheduler("DEBUG", "Stored as " + name);
      if (named || errno != EEXIST) return named;
    }
    return false;
  }

  // For file systems without second names. False with errno, which stays as it is for other errors.
  static bool RenameTo(char const* temporary, std::string const& name) {
    if (errno != EPERM && errno != ENOTSUP) return false;
    return renameat2(AT_FDCWD, temporary, AT_FDCWD, name.c_str(), RENAME_NOREPLACE) == 0;
  }

  Delivery const& delivery_;
  std::string const user_folder_;
  bool is_new_ = false;
  Descriptor folder_;
  std::array<char, kPieceBytes> piece_;
  size_t filled_ = 0;  // of piece_
};

int DigitOf(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

// Empty if an escape is none, or stands for the byte that ends names.
std::string Decoded(std::string_view text) {
  std::string decoded;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      decoded += text[i];
      continue;
    }
    int const high = i + 2 < text.size() ? DigitOf(text[i + 1]) : -1;
    int const low = high >= 0 ? DigitOf(text[i + 2]) : -1;
    if (low < 0 || high * 16 + low == 0) return {};
    decoded += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return decoded;
}

}  // namespace

std::optional<std::string> FolderOfUri(std::string_view uri) {
  if (!uri.starts_with(kScheme)) return std::nullopt;
  uri.remove_prefix(kScheme.size());
  if (uri.starts_with("//")) uri.remove_prefix(2);
  std::string const folder = Decoded(uri);
  bool const climbs = (folder + "/").find("/../") != std::string::npos;
  if (!folder.starts_with('/') || folder.starts_with("//") || climbs) return std::nullopt;
  return folder;
}

void EndOnRequest() {
  sigset_t requests;
  sigemptyset(&requests);
  sigaddset(&requests, SIGTERM);
  sigprocmask(SIG_BLOCK, &requests, nullptr);
  struct sigaction action = {};
  action.sa_handler = [](int) { cancelled = true; };
  sigaction(SIGTERM, &action, nullptr);
}

BackendResult Deliver(Delivery const& delivery) { return Delivering(delivery).Run(); }

}  // namespace sorrelin::tool
