// Only regular files are opened: a pipe or a device could keep the library waiting for ever.
#include "base/file_handle.h"

#include <sys/stat.h>

#include <cerrno>

namespace gzd {

FileHandle open_regular_file(const char* path) {
  struct stat facts;
  if (stat(path, &facts) != 0) return nullptr;
  if (S_ISREG(facts.st_mode)) return FileHandle(std::fopen(path, "rb"));
  errno = S_ISDIR(facts.st_mode) ? EISDIR : 0;
  return nullptr;
}

}  // namespace gzd
