#include "log.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr int MESSAGE_CAPACITY = 500;

LogFunction logfcn = nullptr;

}  // namespace

void set_log_function(LogFunction function) {
  logfcn = function;
}

int print_log(const char* fmt, ...) {
  char message[MESSAGE_CAPACITY] = {};
  std::va_list arguments;
  va_start(arguments, fmt);
  const int length = std::vsnprintf(message, sizeof message, fmt, arguments);
  va_end(arguments);
  if (length >= MESSAGE_CAPACITY) {
    // A message is never handed on cut short: a text that outgrows the buffer ends the process.
    std::fprintf(stderr, "gzdapi: a log message is longer than %d characters\n",
                 MESSAGE_CAPACITY - 1);
    std::abort();
  }
  if (logfcn != nullptr) {
    logfcn(message);
  } else {
    std::printf("%s", message);
  }
  return 0;
}
