// The files of a run: what the names of the command line mean, and what must not be written over.
#ifndef GZDCONV_RUN_FILES_H
#define GZDCONV_RUN_FILES_H

#include <optional>
#include <string>
#include <vector>

namespace gzdconv {

// One recording to be converted, as named on the command line.
struct Job {
  std::string name;
  std::optional<std::string> output_name;
};

// A name after a recording that is no recording's name is its output name.
std::vector<Job> jobs_of(const std::vector<std::string>& names);

// Where the library looks for the message log of a recording.
std::string message_log_of(const Job& job);

// True when the log data file (-d) and the trace (-DEBUG) are neither files that the run reads or
// writes nor recordings or frame tables of any other run. Else false, which has been printed. A
// trace that cannot be written is told as well.
bool are_side_files_free(const std::vector<Job>& jobs);

}  // namespace gzdconv

#endif
