// The names of a command line as jobs, and the check that no side file of the run is in their way.
#include "run_files.h"

#include <string_view>

#include "asc/asc_file.h"
#include "asc/output.h"
#include "cli/console.h"
#include "cli/files.h"
#include "cli/options.h"
#include "cli/text.h"

namespace gzdconv {

namespace {

constexpr std::string_view message_log_name = "tq_messages.log";

std::string input_of(const Job& job) {
  std::string input;
  add_extension(input, job.name);
  return input;
}

std::string text_of(const Job& job) {
  std::string base;
  add_extension(base, job.output_name.value_or(job.name));
  return output_path(base);
}

// What `file` is to one conversion, or "".
std::string role_in(const Job& job, const std::string& file) {
  const std::string text = text_of(job);
  if (is_same_place(file, input_of(job))) return "a recording";
  if (is_same_place(file, text) || is_same_place(file, text + AscFile::part_ending))
    return "the text of " + job.name;
  if (options.load_message_log && is_same_place(file, message_log_of(job)))
    return "the message log";
  return "";
}

// What a file is that must not be written over, or "".
std::string role_of(const std::string& file, const std::vector<Job>& jobs) {
  const FileKind kind = kind_of_file(file);
  if (kind == FileKind::recording) return "a recording";
  if (kind == FileKind::frame_table) return "a frame table";
  for (const Job& job : jobs)
    if (std::string role = role_in(job, file); !role.empty()) return role;
  return "";
}

bool is_free(const char* option, const std::string& file, const std::vector<Job>& jobs) {
  const std::string role = role_of(file, jobs);
  if (role.empty()) return true;
  report_problem(file.c_str(), (option + (" would write over " + role)).c_str());
  return false;
}

bool is_log_free(const std::vector<Job>& jobs) {
  if (!options.log_file_name || is_free("-d", *options.log_file_name, jobs)) return true;
  refuse_log_file(*options.log_file_name);
  return false;
}

bool is_trace_free(const std::vector<Job>& jobs) {
  const std::string& trace = options.debug_file_name;
  if (!options.debug) return true;
  if (options.log_file_name && is_same_place(trace, *options.log_file_name)) {
    report_problem(trace.c_str(), "-DEBUG and -d name one file");
    return false;
  }
  if (!is_free("-DEBUG", trace, jobs)) return false;
  report_reason(trace, why_not_writable(trace));
  return true;
}

}  // namespace

std::vector<Job> jobs_of(const std::vector<std::string>& names) {
  std::vector<Job> jobs;
  for (std::size_t i = 0; i < names.size(); ++i) {
    jobs.push_back({names[i], std::nullopt});
    if (i + 1 < names.size() && !is_gzd_file(names[i + 1])) jobs.back().output_name = names[++i];
  }
  return jobs;
}

std::string message_log_of(const Job& job) {
  const std::string input = input_of(job);
  return input.substr(0, input.rfind('/') + 1).append(message_log_name);
}

bool are_side_files_free(const std::vector<Job>& jobs) {
  return is_log_free(jobs) && is_trace_free(jobs);
}

}  // namespace gzdconv
