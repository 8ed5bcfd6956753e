// Formats messages in a buffer of fixed size and hands them to who listens.
#include "base/log.h"

#include <algorithm>
#include <cassert>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "gzd.h"

namespace gzd {

namespace {

constexpr int message_capacity = 500;
constexpr std::size_t longest_number = 20;

LogFunction logfcn = nullptr;
NoticeFunction noticefcn = nullptr;

void hand_on(const char* message, void (*receiver)(const char*)) {
  if (receiver != nullptr) {
    receiver(message);
  } else {
    std::fputs(message, stdout);
  }
}

}  // namespace

void set_log_function(LogFunction function) {
  logfcn = function;
}

void set_notice_function(NoticeFunction function) {
  noticefcn = function;
}

void print_notice(const char* fmt, ...) {
  char notice[message_capacity];
  std::va_list arguments;
  va_start(arguments, fmt);
  std::vsnprintf(notice, sizeof notice, fmt, arguments);
  va_end(arguments);
  hand_on(notice, noticefcn);
}

// Named by gzd.h, so of no namespace.
extern "C" GZD_API int print_log(const char* fmt, ...) {
  char message[message_capacity] = {};
  std::va_list arguments;
  va_start(arguments, fmt);
  const int length = std::vsnprintf(message, sizeof message, fmt, arguments);
  va_end(arguments);
  if (length + 1 >= message_capacity) {
    // A message is never handed on cut short: a text that fills the buffer ends the process.
    std::fprintf(stderr, "gzdapi: a log message is longer than %d characters\n",
                 message_capacity - 2);
    std::abort();
  }
  hand_on(message, logfcn);
  return 0;
}

void log_clipped(const char* fmt, ...) {
  char message[message_capacity] = {};
  std::va_list arguments;
  va_start(arguments, fmt);
  const int length = std::vsnprintf(message, sizeof message, fmt, arguments);
  va_end(arguments);
  const bool isClipped = length >= message_capacity;
  if (isClipped && std::string_view(fmt).ends_with('\n')) message[message_capacity - 2] = '\n';
  hand_on(message, logfcn);
}

NumberLine::NumberLine(std::string_view textBefore, std::string_view textAfter)
    : after_(textAfter), beforeLength_(textBefore.size()) {
  assert(beforeLength_ + longest_number + after_.size() < message_.size());
  std::copy(textBefore.begin(), textBefore.end(), message_.begin());
}

void NumberLine::log(INT64 number) {
  char* const digits = message_.data() + beforeLength_;
  const auto small = static_cast<UINT32>(number);  // nearly all are, and are written faster
  char* const end = (small == number ? std::to_chars(digits, digits + longest_number, small)
                                     : std::to_chars(digits, digits + longest_number, number))
                        .ptr;
  if (end != numberEnd_) {  // else the text after it stands from the line before
    std::memcpy(end, after_.data(), after_.size());
    end[after_.size()] = '\0';
    numberEnd_ = end;
  }
  hand_on(message_.data(), logfcn);
}

}  // namespace gzd
