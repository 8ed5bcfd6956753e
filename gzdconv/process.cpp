// The run: command line, banner, then one job after the other.
#include "process.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "asc/output.h"
#include "cli/console.h"
#include "cli/files.h"
#include "cli/options.h"
#include "convert.h"
#include "run_files.h"

namespace gzdconv {

namespace {

constexpr int cancelled = -2;

class LogFileGuard {
 public:
  LogFileGuard() = default;
  ~LogFileGuard() { close_log_file(); }
  LogFileGuard(const LogFileGuard&) = delete;
  LogFileGuard& operator=(const LogFileGuard&) = delete;
};

// A message log that cannot be read counts as none; why it cannot is told.
void check_message_log(const Job& job) {
  const std::string log = message_log_of(job);
  errno = 0;
  if (open_regular(log)) return;
  if (errno != 0)
    report_reason(log, errno);
  else
    report_problem(log.c_str(), "is no ordinary file");
}

int convert(RunState& state, const Job& job) {
  if (options.load_message_log) check_message_log(job);
  return process_gzd_file(state, job.name, job.output_name ? &*job.output_name : nullptr);
}

// Memory that runs out, and a system that fails, cost one file.
int convert_one(RunState& state, const Job& job) {
  if (!quiet) std::printf("processing file %s \n", shown_text(job.name).c_str());
  int result = -1;
  try {
    result = convert(state, job);
  } catch (const std::bad_alloc&) {
    report_problem(job.name.c_str(), std::strerror(ENOMEM));
  } catch (const SystemFailure& failure) {
    report_problem(job.name.c_str(), std::strerror(failure.reason));
  }
  return result;
}

int convert_all(const std::vector<Job>& jobs) {
  RunState state;
  int status = 0;
  for (const Job& job : jobs) {
    const int result = convert_one(state, job);
    if (result == cancelled) {
      std::printf("processing file %s cancelled\n", shown_text(job.name).c_str());
      return 1;
    }
    if (result != 0) status = 1;
  }
  return status;
}

bool is_help(std::string_view argument) {
  return argument == "--help";
}
bool is_version(std::string_view argument) {
  return argument == "--version";
}

void print_banner_and_usage(const char* program) {
  print_banner();
  print_usage(program);
}

}  // namespace

int run(int argc, char** argv) {
  if (argc < 2) {
    print_banner_and_usage(argc > 0 ? argv[0] : "gzdconv");
    return 0;
  }
  const auto asked = std::find_if(
      argv + 1, argv + argc, [](const char* word) { return is_help(word) || is_version(word); });
  if (asked == argv + argc) return process(argc, argv);
  if (is_help(*asked))
    print_help(argv[0]);
  else
    print_version();
  return 0;
}

int process(int argc, char** argv) {
  init_options();
  begin_run();
  std::vector<std::string> names;
  if (!parse_options(argc, argv, names)) return 1;
  if (!quiet) print_banner();
  if (names.empty()) return 0;
  const std::vector<Job> jobs = jobs_of(names);
  if (!are_side_files_free(jobs)) return 1;
  const LogFileGuard log_guard;
  if (options.log_file_name && !open_log_file(*options.log_file_name)) return 1;
  hear_library();
  return convert_all(jobs);
}

}  // namespace gzdconv
