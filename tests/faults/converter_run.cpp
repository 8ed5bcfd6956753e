// Starting the converter with a fault, and what it left behind.
#include "converter_run.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <iterator>
#include <stdexcept>

ScratchDirectory::ScratchDirectory() {
  std::string pattern = (std::filesystem::temp_directory_path() / "gzd-faults-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no scratch directory");
  path_ = pattern;
  std::filesystem::permissions(path_, std::filesystem::perms::all);
}

ScratchDirectory::~ScratchDirectory() {
  std::error_code ignored;
  std::filesystem::permissions(path_, std::filesystem::perms::all, ignored);
  std::filesystem::remove_all(path_, ignored);
}

std::string content_of(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string without_date(const std::string& asc) {
  const std::size_t line = asc.find("** CONVERTED FROM ");  // a byte-order mark may come before
  return line <= 3 ? asc.substr(0, line) + asc.substr(asc.find('\n')) : asc;
}

namespace {

struct Pipe {
  int read_end = -1, write_end = -1;

  Pipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    read_end = ends[0];
    write_end = ends[1];
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  ~Pipe() {
    close(read_end);
    close_writing();
  }
  void close_writing() {
    if (write_end >= 0) close(write_end);
    write_end = -1;
  }
  [[nodiscard]] std::string read_all() const {
    std::string text;
    std::array<char, 4096> piece{};
    for (ssize_t count; (count = read(read_end, piece.data(), piece.size())) > 0;)
      text.append(piece.data(), static_cast<std::size_t>(count));
    return text;
  }
};

void redirect(int descriptor, const char* path, int flags) {
  const int file = open(path, flags, 0666);
  if (file < 0 || dup2(file, descriptor) < 0) _exit(126);
}

[[noreturn]] void become_converter(const Words& arguments, const Circumstances& circumstances,
                                   int output) {
  redirect(STDIN_FILENO, "/dev/null", O_RDONLY);
  dup2(output, STDOUT_FILENO);
  dup2(output, STDERR_FILENO);
  if (chdir(circumstances.directory.c_str()) != 0) _exit(126);
  for (const auto& [name, value] : circumstances.faults) setenv(name.c_str(), value.c_str(), 1);
  if (!circumstances.faults.empty()) setenv("LD_PRELOAD", FAULT_SHIM, 1);
  if (circumstances.in_child) circumstances.in_child();
  std::vector<char*> argv;
  argv.push_back(const_cast<char*>("gzdconv"));
  for (const std::string& word : arguments) argv.push_back(const_cast<char*>(word.c_str()));
  argv.push_back(nullptr);
  execv(GZDCONV, argv.data());
  _exit(127);
}

}  // namespace

Outcome run_converter(const Words& arguments, const Circumstances& circumstances) {
  Pipe pipe;
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("no child");
  if (child == 0) become_converter(arguments, circumstances, pipe.write_end);
  pipe.close_writing();
  Outcome outcome;
  outcome.output = pipe.read_all();
  int status = 0;
  rusage used{};
  if (wait4(child, &status, 0, &used) != child) throw std::runtime_error("the child is lost");
  outcome.peak_kib = used.ru_maxrss;
  if (WIFEXITED(status))
    outcome.status = WEXITSTATUS(status);
  else
    outcome.signal = WTERMSIG(status);
  return outcome;
}
