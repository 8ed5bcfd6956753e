// The library's one diagnostic channel. print_log itself is declared in gzd.h.
#ifndef GZDAPI_LOG_H
#define GZDAPI_LOG_H

#include <array>
#include <string_view>

#include "gzd.h"

using LogFunction = void (*)(const char* message);

// Sets the receiver of messages for the whole process; null restores standard output.
void set_log_function(LogFunction function);

// A line around one number, made without print_log's cost: for findings that a damaged recording
// can hold by the million. The texts are short, and must outlive the line.
class NumberLine {
 public:
  NumberLine(std::string_view textBefore, std::string_view textAfter);
  NumberLine(const NumberLine&) = delete;
  NumberLine& operator=(const NumberLine&) = delete;
  void log(INT64 number);

 private:
  std::string_view after;
  std::array<char, 200> message;
  std::size_t beforeLength;
  const char* numberEnd = nullptr;  // in the line made last
};

#endif
