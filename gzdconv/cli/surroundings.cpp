// What the handler touches is set up before and changed with the signals held back: a handler may
// neither allocate nor wait.
#include "cli/surroundings.h"

#include <fcntl.h>
#include <limits.h>
#include <unistd.h>

namespace gzdconv {

namespace {

constexpr int ending_signals[] = {SIGHUP, SIGINT, SIGTERM, SIGABRT};

char unfinished_file[PATH_MAX];  // "": none

sigset_t set_of_signals() {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : ending_signals) sigaddset(&set, signal);
  return set;
}

// The default action stands again when this begins, and ends the process when it returns.
void remove_and_end(int signal) {
  if (unfinished_file[0] != '\0') unlink(unfinished_file);
  raise(signal);
}

// The lowest free number is the one that is missing, as those below it are taken.
void open_standard_streams() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (fcntl(descriptor, F_GETFD) < 0 && open("/dev/null", O_RDWR) < 0) _exit(1);
}

void handle_signals() {
  struct sigaction action {};
  action.sa_handler = remove_and_end;
  action.sa_flags = SA_RESETHAND;
  action.sa_mask = set_of_signals();
  for (const int signal : ending_signals) {
    struct sigaction before {};
    sigaction(signal, nullptr, &before);
    if (before.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);  // nohup stays in force
  }
}

}  // namespace

void prepare_process() {
  open_standard_streams();
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  handle_signals();
}

SignalsHeld::SignalsHeld() {
  const sigset_t held = set_of_signals();
  sigprocmask(SIG_BLOCK, &held, &before_);
}

SignalsHeld::~SignalsHeld() {
  sigprocmask(SIG_SETMASK, &before_, nullptr);
}

void remove_at_signal(std::string_view path) {
  const std::size_t length = path.copy(unfinished_file, sizeof unfinished_file - 1);
  unfinished_file[length] = '\0';
}

}  // namespace gzdconv
