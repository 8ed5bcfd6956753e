// Files that nobody else sees and that are gone when they are closed.
#ifndef GZDAPI_TEMPORARY_FILE_H
#define GZDAPI_TEMPORARY_FILE_H

#include "base/file_handle.h"

namespace gzd {

// Where temporary files are made: the directory that TMPDIR names, else that of the system. Valid
// until the environment changes.
const char* temporary_directory();

// An empty temporary file, to be read and written. Null when it cannot be made: errno then has the
// reason.
[[nodiscard]] FileHandle open_temporary_file();

}  // namespace gzd

#endif
