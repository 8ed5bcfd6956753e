#include "process.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "asc/output.h"
#include "cli/console.h"
#include "cli/options.h"
#include "cli/text.h"
#include "convert.h"

namespace gzdconv {

namespace {

constexpr int cancelled = -2;
constexpr std::string_view message_log_name = "tq_messages.log";  // where the library looks for it

using Names = std::vector<std::string>;

class LogFileGuard {
 public:
  LogFileGuard() = default;
  ~LogFileGuard() { close_log_file(); }
  LogFileGuard(const LogFileGuard&) = delete;
  LogFileGuard& operator=(const LogFileGuard&) = delete;
};

// A log that would overwrite a recording to be converted is refused.
bool open_log(const Names& names) {
  const std::string& log = *options.log_file_name;
  for (const std::string& name : names) {
    std::string input;
    add_extension(input, name);
    if (!is_same_file(input, log)) continue;
    std::printf("Could not open log file %s \n", log.c_str());
    return false;
  }
  return open_log_file(log);
}

// A message log that cannot be read counts as none; why it cannot is told.
void check_message_log(const std::string& name) {
  std::string input;
  add_extension(input, name);
  const std::string log = input.substr(0, input.rfind('/') + 1).append(message_log_name);
  const int file = open(log.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (file < 0) return report_reason(log, errno);
  close(file);
}

int convert_one(const std::string& name, const std::string* output_name) {
  if (!quiet) std::printf("processing file %s \n", name.c_str());
  if (options.load_message_log) check_message_log(name);
  const int result = process_gzd_file(name, output_name);
  options.sample_header_printed = 0;
  options.event_header_printed = 0;
  return result;
}

// A name behind a recording that is no recording's name is its output name.
const std::string* output_name_at(const Names& names, std::size_t place) {
  return place < names.size() && !is_gzd_file(names[place]) ? &names[place] : nullptr;
}

int convert_all(const Names& names) {
  int status = 0;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::string& name = names[i];
    const std::string* const output_name = output_name_at(names, i + 1);
    const int result = convert_one(name, output_name);
    if (result == cancelled) {
      std::printf("processing file %s cancelled\n", name.c_str());
      return 1;
    }
    if (result != 0) status = 1;
    if (output_name != nullptr) ++i;
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
  Names names;
  if (!parse_options(argc, argv, names)) return 1;
  if (!quiet) print_banner();
  if (names.empty()) return 0;
  const LogFileGuard log_guard;
  if (options.log_file_name && !open_log(names)) return 1;
  return convert_all(names);
}

}  // namespace gzdconv
