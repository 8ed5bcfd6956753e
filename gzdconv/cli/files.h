// What the file system knows of a name, without opening anything to change it.
#ifndef GZDCONV_FILES_H
#define GZDCONV_FILES_H

#include <sys/types.h>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace gzdconv {

// An ordinary file, whatever its names: its device and its number there.
using FileId = std::pair<dev_t, ino_t>;

// The file that `path` leads to; none when that is missing or no ordinary file.
std::optional<FileId> file_id(const std::string& path);

// True when both paths lead to one existing ordinary file.
bool is_same_file(const std::string& one, const std::string& other);

// The same, also of a file that would be made: one name in one directory.
bool is_same_place(const std::string& one, const std::string& other);

struct CloseFile {
  void operator()(FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<FILE, CloseFile>;

// Opens an ordinary file for reading. Null for anything else; errno then has the reason, or 0. A
// pipe of that name does not hold up the run, here and below.
File open_regular(const std::string& name);

// Why a file of that name cannot be read, a value of errno; 0 when it can.
int why_not_readable(const std::string& path);

// Why a file of that name cannot be written, a value of errno; 0 when it can.
int why_not_writable(const std::string& path);

enum class FileKind { missing, empty, recording, frame_table, asc_text, other };

// What the first bytes of an ordinary file are those of.
FileKind kind_of_file(const std::string& path);

// What a file is that the system can read but that is no recording, as the end of a sentence; null
// for one that begins like a recording.
const char* why_no_recording(const std::string& path);

}  // namespace gzdconv

#endif
