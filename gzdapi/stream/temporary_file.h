// Files that nobody else sees and that are gone when they are closed.
#ifndef GZDAPI_TEMPORARY_FILE_H
#define GZDAPI_TEMPORARY_FILE_H

#include <cstdio>

namespace gzd {

// Where temporary files are made: the directory that TMPDIR names, else that of the system. Valid
// until the environment changes.
const char* temporary_directory();

// An empty temporary file, to be read and written; the caller closes it. Null when it cannot be
// made: errno then has the reason.
FILE* open_temporary_file();

}  // namespace gzd

#endif
