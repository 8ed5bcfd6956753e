// Runs the converter in a scratch directory, and tells what became of it.
#ifndef TESTS_FAULTS_CONVERTER_RUN_H
#define TESTS_FAULTS_CONVERTER_RUN_H

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

using Words = std::vector<std::string>;

// A directory that goes away with its content, whatever its permissions became.
class ScratchDirectory {
 public:
  ScratchDirectory();
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;
  ~ScratchDirectory();

  [[nodiscard]] std::filesystem::path operator/(const std::string& name) const {
    return path_ / name;
  }
  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

struct Outcome {
  int status = -1;     // exit status, or -1 when a signal ended the run
  int signal = 0;      // that signal
  std::string output;  // standard output and standard error
  long peak_kib = 0;   // resident memory

  [[nodiscard]] bool ended_well() const { return status == 0; }
};

// How to run; the defaults are an ordinary run.
struct Circumstances {
  std::filesystem::path directory;                 // the working directory
  std::map<std::string, std::string> faults = {};  // orders of the preloaded shim, see fault_shim.c
  std::function<void()> in_child = {};             // called in the child before the program starts
};

Outcome run_converter(const Words& arguments, const Circumstances& circumstances);

std::string content_of(const std::filesystem::path& path);

// An ASC text without the line that tells when it was made.
std::string without_date(const std::string& asc);

#endif
