// Tells plain from compressed by the magic line, and reads the facts of the preamble.
#include "stream/container.h"

#include <cerrno>
#include <cstdlib>
#include <new>
#include <string_view>

#include "base/log.h"
#include "stream/temporary_file.h"
#include "stream/zipread.h"

namespace gzd {

int utf8encoding = 0;

namespace {

using std::string_view;

constexpr int magic_capacity = 35;
constexpr int preamble_line_capacity = 200;
constexpr std::size_t preamble_capacity = 2000;

struct Magic {
  string_view words;
  ContainerKind kind;
};

constexpr Magic magic_lines[] = {
    {"MORVEN_TECH_FALCFILE ZIP", ContainerKind::Compressed},
    {"MORVEN_TECH_OSPFILE ZIP", ContainerKind::Compressed},
    {"MORVEN_TECH_COMBFILE", ContainerKind::Plain},
    {"MORVEN_TECH_FALCFILE", ContainerKind::Plain},
    {"MORVEN_TECH_OSPFILE", ContainerKind::Plain},
};

bool is_line(string_view line, string_view words) {
  if (!line.starts_with(words)) return false;
  const string_view ending = line.substr(words.size());
  return ending == "\n" || ending == "\r\n";
}

[[noreturn]] void fail_at_head(const InputStream& file) {
  print_log("error reading gzd file 6\n");
  throw GZDException("End of file Exception").because(file.getReadError());
}

// The number after a prefix of a line, or `fallback` when there is none or it is 0.
INT16 number_behind(string_view line, std::size_t prefix, INT16 fallback) {
  const std::string digits(line.substr(prefix));
  const INT16 number = static_cast<INT16>(std::strtol(digits.c_str(), nullptr, 10));
  return number != 0 ? number : fallback;
}

// Whether the experiment software named in the preamble writes UTF-8; -1 when that is not told.
int find_encoding(string_view text) {
  constexpr string_view old_mark = "MVTQ1.";
  constexpr string_view revision_mark = "MVTQ";
  constexpr int first_utf8_minor = 6;
  if (const std::size_t at = text.find(old_mark); at != text.npos) {
    const std::string minor(text.substr(at + old_mark.size()));
    return std::atoi(minor.c_str()) < first_utf8_minor ? 0 : 1;
  }
  if (const std::size_t at = text.find(revision_mark); at != text.npos) {
    const string_view rest = text.substr(at);
    const bool isNewer = rest.size() >= revision_mark.size() + 3 &&
                         rest[revision_mark.size()] >= '2' && rest[revision_mark.size()] <= '8' &&
                         rest[revision_mark.size() + 1] == '.';
    return isNewer ? 1 : -1;
  }
  return text.find("Netvia") != text.npos ? 1 : -1;
}

INT64 bytes_left(FILE* file) {
  const long here = std::ftell(file);
  std::fseek(file, 0, SEEK_END);
  return std::ftell(file) - here;
}

// What cannot be inflated for another reason than memory shows up later, as a record stream that
// ends early.
std::unique_ptr<InputStream> inflate_body(FileInputStream& body) {
  using Place = SystemError::Place;
  FileHandle inflated = open_temporary_file();
  if (!inflated) {
    throw GZDException("Failed to create temp file \n").because({errno, Place::TemporaryDirectory});
  }
  std::setvbuf(inflated.get(), nullptr, _IONBF, 0);  // writes and reads come in large pieces
  errno = 0;
  FILE* const compressed = body.getRawFile();
  const int result = do_uncompress(compressed, inflated.get());
  const int reason = errno;
  if (result == uncompress_no_memory) throw std::bad_alloc();
  SystemError error;
  if (result == uncompress_io_error) {
    error = {reason, std::ferror(compressed) != 0 ? Place::Recording : Place::TemporaryDirectory};
  }
  return std::make_unique<FileInputStream>(std::move(inflated), error, bytes_left(compressed));
}

}  // namespace

ContainerKind read_magic(InputStream& file) {
  char line[magic_capacity] = {};
  if (file.getTerminatedString(line, magic_capacity) == 0) fail_at_head(file);
  for (const Magic& magic : magic_lines) {
    if (is_line(line, magic.words)) return magic.kind;
  }
  throw GZDException("Bad magic.  Corrupt gzd file. \n");
}

void Preamble::read(InputStream& file) {
  char line[preamble_line_capacity];
  while (readLine(file, line, preamble_line_capacity)) {
    if (preText.size() < preamble_capacity) preText.append("** ").append(line);
  }
  if (preText.size() >= preamble_capacity) preText.resize(preamble_capacity - 1);
  const int encoding = find_encoding(preText);
  if (encoding >= 0) utf8encoding = encoding;
}

// Reads one line; false at the closing one.
bool Preamble::readLine(InputStream& file, char* buffer, int capacity) {
  if (file.getTerminatedString(buffer, capacity) <= 0) fail_at_head(file);
  const string_view line(buffer);
  if (revision == 0 || revision == 1) recognise(line);
  return line != "ENDP:\n";
}

void Preamble::recognise(string_view line) {
  constexpr string_view kestrel_lines = "VERSION: OVILO KESTREL ";
  constexpr string_view osprey_lines = "VERSION: OVILO OSPREY";
  if (line.starts_with(kestrel_lines)) {
    revision = number_behind(line, kestrel_lines.size(), 1);
  } else if (line.starts_with(osprey_lines)) {
    revision = number_behind(line, osprey_lines.size(), 2);
    ovilo_revision = GZD_TRACKER_OSPREY;
  } else if (line.starts_with("SOURCE: OVILO KESTREL")) {
    ovilo_revision = GZD_TRACKER_KESTREL;
  } else if (line.starts_with("SOURCE: OVILO FALCON")) {
    ovilo_revision = GZD_TRACKER_FALCON;
  }
}

std::unique_ptr<InputStream> open_container(const char* path, Preamble& preamble) {
  auto file = std::make_unique<FileInputStream>(path);
  const ContainerKind kind = read_magic(*file);
  preamble.read(*file);
  if (kind == ContainerKind::Plain) return file;
  return inflate_body(*file);
}

}  // namespace gzd
