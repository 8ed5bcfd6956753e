// The lock is that of flock(): the system takes it from a process that ends in any way, so that a
// part left behind by a killed run is used again.
#include "asc/asc_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "cli/surroundings.h"

namespace gzdconv {

namespace {

constexpr int new_file_mode = 0666;
constexpr int most_attempts = 100;

bool is_plain(const struct stat& status) {
  return S_ISREG(status.st_mode) && status.st_nlink == 1;
}

// Closes `file` without changing errno. Returns -1.
int give_up(int file) {
  const int reason = errno;
  close(file);
  errno = reason;
  return -1;
}

// File systems without locks do without.
bool is_locked_elsewhere(int file) {
  return flock(file, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

// False when the writer before has given the file its name meanwhile, or has removed it.
bool still_has_name(int file, const std::string& path) {
  struct stat opened, named;
  return fstat(file, &opened) == 0 && stat(path.c_str(), &named) == 0 &&
         opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

// A descriptor of the file, emptied, and locked when it is an ordinary one. -1: errno tells.
int open_locked(const std::string& path, int flags) {
  for (int i = 0; i < most_attempts; ++i) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | flags, new_file_mode);
    struct stat status {};
    if (file < 0) return -1;
    if (fstat(file, &status) != 0) return give_up(file);
    if (!S_ISREG(status.st_mode)) return file;
    if (is_locked_elsewhere(file)) return give_up(file);
    if (still_has_name(file, path)) return ftruncate(file, 0) == 0 ? file : give_up(file);
    close(file);
  }
  errno = EWOULDBLOCK;
  return -1;
}

// False for a file of another user in a directory with the sticky bit, such as /tmp.
bool can_be_renamed_over(const std::string& path, const struct stat& old) {
  struct stat directory {};
  const std::string parent = std::filesystem::path(path).parent_path().string();
  if (stat(parent.empty() ? "." : parent.c_str(), &directory) != 0) return true;
  const uid_t user = geteuid();
  return (directory.st_mode & S_ISVTX) == 0 || user == 0 || user == old.st_uid ||
         user == directory.st_uid;
}

// A text that may not be written is not replaced either.
bool may_replace(const std::string& path) {
  const int reason = why_not_writable(path);
  errno = reason;
  return reason == 0;
}

// The new text belongs to whom the old one belonged to, as far as the system allows.
void take_over_rights(int file, const struct stat& old) {
  if (fchown(file, old.st_uid, old.st_gid) != 0) errno = 0;
  fchmod(file, old.st_mode & 07777);
}

bool takes_no_new_file(int reason) {
  return reason == EACCES || reason == EPERM || reason == EROFS || reason == ENAMETOOLONG;
}

void remove_regular_file(const std::string& path) {
  struct stat status;
  if (lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode)) unlink(path.c_str());
}

}  // namespace

FILE* AscFile::open(const std::string& path) {
  discard();
  path_ = path;
  struct stat old {};
  const bool exists = lstat(path.c_str(), &old) == 0;
  if (exists && (!is_plain(old) || !can_be_renamed_over(path, old))) return open_in_place();
  if (exists && !may_replace(path)) return nullptr;
  FILE* const stream = open_part();
  if (stream == nullptr) return takes_no_new_file(errno) ? open_in_place() : nullptr;
  if (exists) take_over_rights(lock_, old);
  return stream;
}

FILE* AscFile::open_part() {
  part_ = path_ + part_ending;
  struct stat old {};
  if (lstat(part_.c_str(), &old) == 0 && !is_plain(old)) {
    errno = EEXIST;
    return nullptr;
  }
  const SignalsHeld held;
  FILE* const stream = open_stream(part_, O_NOFOLLOW | O_NONBLOCK);
  if (stream != nullptr) remove_at_signal(part_);
  return stream;
}

FILE* AscFile::open_in_place() {
  part_.clear();
  return open_stream(path_, 0);
}

FILE* AscFile::open_stream(const std::string& path, int flags) {
  lock_ = open_locked(path, flags);
  if (lock_ < 0) return nullptr;
  const int file = fcntl(lock_, F_DUPFD_CLOEXEC, 0);
  if (file >= 0) stream_ = fdopen(file, "w");
  if (stream_ != nullptr) {
    std::setvbuf(stream_, nullptr, _IONBF, 0);
    return stream_;
  }
  if (file >= 0) give_up(file);
  const int reason = errno;
  remove_written();
  errno = reason;
  return nullptr;
}

bool AscFile::finish() {
  const bool closed = std::fclose(stream_) == 0;
  stream_ = nullptr;
  if (closed && take_name()) return true;
  const int reason = errno;
  remove_written();
  errno = reason;
  return false;
}

void AscFile::discard() {
  if (stream_ == nullptr) return;
  std::fclose(stream_);
  stream_ = nullptr;
  remove_written();
}

std::optional<FileId> AscFile::id() const {
  struct stat status {};
  if (lock_ < 0 || fstat(lock_, &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return FileId{status.st_dev, status.st_ino};
}

bool AscFile::take_name() {
  const SignalsHeld held;
  if (!part_.empty() && rename(part_.c_str(), path_.c_str()) != 0) return false;
  remove_at_signal("");
  close_lock();
  return true;
}

void AscFile::remove_written() {
  const SignalsHeld held;
  remove_regular_file(part_.empty() ? path_ : part_);
  remove_at_signal("");
  close_lock();
}

void AscFile::close_lock() {
  if (lock_ >= 0) close(lock_);
  lock_ = -1;
}

}  // namespace gzdconv
