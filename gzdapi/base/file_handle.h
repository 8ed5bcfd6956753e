// Files of the system that are closed by themselves.
#ifndef GZDAPI_FILE_HANDLE_H
#define GZDAPI_FILE_HANDLE_H

#include <cstdio>
#include <memory>

namespace gzd {

struct FileCloser {
  void operator()(FILE* file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<FILE, FileCloser>;

// Opens a regular file for reading. Null when it cannot be opened or is of another kind; errno then
// has the reason, or 0.
[[nodiscard]] FileHandle open_regular_file(const char* path);

}  // namespace gzd

#endif
