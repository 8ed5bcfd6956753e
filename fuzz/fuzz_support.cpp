#include "fuzz_support.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "gzd.h"

namespace fuzz {

namespace {

constexpr std::size_t LONGEST_LOG_MESSAGE = 499;

void check_log_message(const char* message) {
  FUZZ_REQUIRE(message != nullptr);
  FUZZ_REQUIRE(std::strlen(message) <= LONGEST_LOG_MESSAGE);
}

}  // namespace

void fail_requirement(const char* condition, const char* file, int line) {
  std::fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, condition);
  std::abort();
}

void silence_standard_output() {
  if (std::freopen("/dev/null", "w", stdout) == nullptr) std::abort();
}

void swallow_log() {
  gzd_set_log_function(reinterpret_cast<void*>(&check_log_message));
}

MemoryFile::MemoryFile(const char* name)
    : descriptor_(memfd_create(name, MFD_CLOEXEC)),
      path_("/proc/self/fd/" + std::to_string(descriptor_)) {
  if (descriptor_ < 0) std::abort();
}

MemoryFile::~MemoryFile() {
  close(descriptor_);
}

void MemoryFile::set(Input bytes) {
  if (ftruncate(descriptor_, 0) != 0) std::abort();
  if (pwrite(descriptor_, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
    std::abort();
}

std::string MemoryFile::content() const {
  struct stat facts;
  if (fstat(descriptor_, &facts) != 0) std::abort();
  std::string text(static_cast<std::size_t>(facts.st_size), '\0');
  if (pread(descriptor_, text.data(), text.size(), 0) != facts.st_size) std::abort();
  return text;
}

}  // namespace fuzz
