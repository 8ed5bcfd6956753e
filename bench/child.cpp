// Starts a program, waits for it, and takes its times from the system.
#include "child.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>

namespace {

class SpawnActions {
 public:
  explicit SpawnActions(const std::string& console) {
    posix_spawn_file_actions_init(&actions_);
    posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, console.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0666);
  }
  ~SpawnActions() { posix_spawn_file_actions_destroy(&actions_); }
  SpawnActions(const SpawnActions&) = delete;
  SpawnActions& operator=(const SpawnActions&) = delete;

  const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_;
};

double seconds_of(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

[[noreturn]] void fail(const std::vector<std::string>& command, const char* what) {
  std::string text;
  for (const std::string& word : command) text += word + " ";
  throw std::runtime_error(text + what);
}

pid_t spawn(const std::vector<std::string>& command, const std::string& console) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  const SpawnActions actions(console);
  pid_t child = 0;
  if (posix_spawn(&child, command[0].c_str(), actions.get(), nullptr, arguments.data(), environ) !=
      0)
    fail(command, "cannot be started");
  return child;
}

}  // namespace

Usage run_program(const std::vector<std::string>& command, const std::string& console) {
  using Clock = std::chrono::steady_clock;
  const auto start = Clock::now();
  const pid_t child = spawn(command, console);
  int status = 0;
  rusage used{};
  if (wait4(child, &status, 0, &used) != child) fail(command, "cannot be waited for");
  const std::chrono::duration<double> elapsed = Clock::now() - start;
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) fail(command, "failed");
  return {elapsed.count(), seconds_of(used.ru_utime) + seconds_of(used.ru_stime), used.ru_maxrss};
}
