// The library's one diagnostic channel.
#ifndef GZDAPI_LOG_H
#define GZDAPI_LOG_H

#include <array>
#include <string_view>

#include "gzd_data.h"

// As gzd.h declares it for clients; the rooms of the library log with it.
extern "C" int print_log(const char* fmt, ...)
    __attribute__((format(printf, 1, 2), visibility("default")));

namespace gzd {

using LogFunction = void (*)(const char* message);

// Sets the receiver of messages for the whole process; null restores standard output.
void set_log_function(LogFunction function);

// print_log for texts that a caller or the system chose, names and the like: what is too long for a
// message is clipped, a newline at its end stays.
void log_clipped(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
using NoticeFunction = void (*)(const char* notice);

// Sets the receiver of notices for the whole process; null restores standard output.
void set_notice_function(NoticeFunction function);

// Formats a notice, which is told whether or not messages are logged; cut to 499 characters.
void print_notice(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

// A line around one number, made without print_log's cost: for findings that a damaged recording
// can hold by the million. The texts are short, and must outlive the line.
class NumberLine {
 public:
  NumberLine(std::string_view textBefore, std::string_view textAfter);
  NumberLine(const NumberLine&) = delete;
  NumberLine& operator=(const NumberLine&) = delete;
  void log(INT64 number);

 private:
  std::string_view after_;
  std::array<char, 200> message_;
  std::size_t beforeLength_;
  const char* numberEnd_ = nullptr;  // in the line made last
};

}  // namespace gzd

#endif
