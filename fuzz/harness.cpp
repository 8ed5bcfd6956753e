// The list of targets, and the bytes of an input as files and streams.
#include "harness.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "gzd.h"
#include "support/random_records.h"

namespace fuzz {

namespace {

constexpr std::size_t longest_log_message = 499;
constexpr unsigned most_elements = 60000;
constexpr std::uint64_t longest_filled_gap = 10000;

void check_log_message(const char* message) {
  FUZZ_REQUIRE(message != nullptr && std::strlen(message) <= longest_log_message);
}

std::map<std::string, Target>& all_targets() {
  static std::map<std::string, Target> all;
  return all;
}

}  // namespace

bool add_target(const char* name, Target target) {
  return all_targets().emplace(name, target).second;
}

const std::map<std::string, Target>& targets() {
  return all_targets();
}

void fail_requirement(const char* condition, const char* file, int line) {
  std::fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, condition);
  std::abort();
}

void be_quiet() {
  if (std::freopen("/dev/null", "w", stdout) == nullptr) std::abort();
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
  const auto size = static_cast<ssize_t>(bytes.size());
  if (ftruncate(descriptor_, 0) != 0) std::abort();
  if (pwrite(descriptor_, bytes.data(), bytes.size(), 0) != size) std::abort();
}

std::string MemoryFile::content() const {
  struct stat facts;
  if (fstat(descriptor_, &facts) != 0) std::abort();
  std::string text(static_cast<std::size_t>(facts.st_size), '\0');
  if (pread(descriptor_, text.data(), text.size(), 0) != facts.st_size) std::abort();
  return text;
}

std::vector<std::uint8_t> recording_from(Tail& tail) {
  const unsigned how = tail.byte();
  if (how % 2 == 0) return {tail.rest().begin(), tail.rest().end()};
  gzdsynth::GzdWriter writer(static_cast<int>(how / 2 % 5));
  writer.compressed(false);
  if (how >= 200) writer.magic(gzdsynth::Magic::OspZip);
  RandomRecords records(writer, [&](std::size_t below) { return tail.byte() % below; });
  while (!tail.rest().empty()) records.add();
  return writer.bytes();
}

bool is_too_large(const std::string& path, std::uint64_t mostFilling) {
  int rv = 0;
  GZDFILE* const file =
      gzd_open_file(path.c_str(), GZD_OPEN_FAILSAFE | GZD_OPEN_NO_TIME_SHIFT, 1, 1, &rv);
  if (file == nullptr) return false;
  gzd_set_velocity_kinds(file, GZD_VELOCITY_NONE);
  std::uint64_t filling = gzd_get_element_count(file) > most_elements ? mostFilling + 1 : 0;
  std::uint64_t last = 0;
  while (filling <= mostFilling && gzd_get_next_data(file) != GZD_END_OF_DATA) {
    ALLF_DATA* const record = gzd_get_float_data(file);
    const FSAMPLE* const sample = record != nullptr ? gzd_get_sample(record) : nullptr;
    const RECORDINGS* const block = record != nullptr ? gzd_get_recording(record) : nullptr;
    if (sample == nullptr && block == nullptr) continue;
    const std::uint64_t time = sample != nullptr ? sample->time : block->time;
    const std::uint64_t apart = time > last ? time - last : last - time;
    filling += std::min(2 * apart, longest_filled_gap);
    last = time;
  }
  gzd_close_file(file);
  return filling > mostFilling;
}

}  // namespace fuzz

// Under an engine: the one target of its program.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool quiet = (fuzz::be_quiet(), true);
  if (quiet) fuzz::targets().begin()->second({data, size});
  return 0;
}
