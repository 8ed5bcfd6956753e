// A file loses its name as soon as it is open.
#include "stream/temporary_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>

namespace gzd {

const char* temporary_directory() {
  const char* const wanted = secure_getenv("TMPDIR");
  return wanted != nullptr && *wanted != '\0' ? wanted : P_tmpdir;
}

FileHandle open_temporary_file() {
  std::string path = std::string(temporary_directory()) + "/gzdapi-XXXXXX";
  const int descriptor = mkostemp(path.data(), O_CLOEXEC);
  if (descriptor < 0) return nullptr;
  unlink(path.c_str());
  if (FILE* const file = fdopen(descriptor, "w+b")) return FileHandle(file);
  const int reason = errno;
  close(descriptor);
  errno = reason;
  return nullptr;
}

}  // namespace gzd
