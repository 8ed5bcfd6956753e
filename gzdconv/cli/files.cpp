// Asks the system about files by their names and first bytes.
#include "cli/files.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string_view>

namespace gzdconv {

namespace {

using std::string_view;

constexpr string_view recording_start = "MORVEN_TECH_";
constexpr string_view table_magic("\x00\x10\x5A\xAE", 4);  // after the number of records
constexpr std::size_t table_magic_place = 4;
constexpr string_view asc_start = "** CONVERTED FROM ";
constexpr string_view utf8_mark = "\xEF\xBB\xBF";

class Descriptor {
 public:
  // Does not wait for the other end of a pipe.
  Descriptor(const std::string& path, int mode)
      : number_(open(path.c_str(), mode | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {}
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  operator int() const { return number_; }

 private:
  int number_;
};

string_view name_in_directory(string_view path) {
  return path.substr(path.rfind('/') + 1);
}

std::string directory_of(string_view path) {
  return std::string(path.substr(0, path.rfind('/') + 1)) + ".";
}

// The path that symbolic links lead to, whether or not something is there.
std::string behind_links(std::string path) {
  constexpr int most_links = 40;
  std::array<char, PATH_MAX> target;
  for (int i = 0; i < most_links; ++i) {
    const ssize_t length = readlink(path.c_str(), target.data(), target.size());
    if (length <= 0) break;
    const string_view next(target.data(), static_cast<std::size_t>(length));
    path.resize(next[0] == '/' ? 0 : path.rfind('/') + 1);
    path += next;
  }
  return path;
}

bool is_same_directory(const std::string& one, const std::string& other) {
  struct stat first, second;
  return stat(one.c_str(), &first) == 0 && stat(other.c_str(), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

FileKind kind_of_bytes(string_view bytes) {
  if (bytes.empty()) return FileKind::empty;
  if (bytes.starts_with(recording_start)) return FileKind::recording;
  if (bytes.substr(0, table_magic_place + table_magic.size()).ends_with(table_magic))
    return FileKind::frame_table;
  if (bytes.starts_with(utf8_mark)) bytes.remove_prefix(utf8_mark.size());
  return bytes.starts_with(asc_start) ? FileKind::asc_text : FileKind::other;
}

}  // namespace

std::optional<FileId> file_id(const std::string& path) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return FileId{status.st_dev, status.st_ino};
}

bool is_same_file(const std::string& one, const std::string& other) {
  const std::optional<FileId> id = file_id(one);
  return id && id == file_id(other);
}

bool is_same_place(const std::string& one, const std::string& other) {
  if (is_same_file(one, other)) return true;
  const std::string first = behind_links(one), second = behind_links(other);
  return name_in_directory(first) == name_in_directory(second) &&
         is_same_directory(directory_of(first), directory_of(second));
}

File open_regular(const std::string& name) {
  const int descriptor = open(name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (descriptor < 0) return nullptr;
  struct stat status {};
  errno = 0;
  if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
    if (FILE* const file = fdopen(descriptor, "rb")) return File(file);
  }
  const int reason = S_ISDIR(status.st_mode) ? EISDIR : errno;
  close(descriptor);
  errno = reason;
  return nullptr;
}

int why_not_readable(const std::string& path) {
  return Descriptor(path, O_RDONLY) >= 0 ? 0 : errno;
}

int why_not_writable(const std::string& path) {
  if (Descriptor(path, O_WRONLY) >= 0) return 0;
  if (errno != ENOENT) return errno;
  return faccessat(AT_FDCWD, directory_of(path).c_str(), W_OK | X_OK, AT_EACCESS) == 0 ? 0 : errno;
}

FileKind kind_of_file(const std::string& path) {
  if (!file_id(path)) return FileKind::missing;
  const Descriptor file(path, O_RDONLY);
  std::array<char, 64> bytes{};
  const ssize_t count = file >= 0 ? read(file, bytes.data(), bytes.size()) : -1;
  if (count < 0) return FileKind::other;
  return kind_of_bytes({bytes.data(), static_cast<std::size_t>(count)});
}

const char* why_no_recording(const std::string& path) {
  switch (kind_of_file(path)) {
    case FileKind::empty:
      return "is empty";
    case FileKind::asc_text:
      return "is a converted text, no recording";
    case FileKind::frame_table:
    case FileKind::other:
      return "does not begin like a recording";
    default:
      return nullptr;
  }
}

}  // namespace gzdconv
