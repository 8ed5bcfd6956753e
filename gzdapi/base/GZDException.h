// The one error type inside the library: a finished message of at most 1023 characters. Thrown by
// value; it never crosses the C interface.
#ifndef GZDAPI_GZDEXCEPTION_H
#define GZDAPI_GZDEXCEPTION_H

#include <cstdarg>
#include <cstdio>

namespace gzd {

class GZDException {
 public:
  __attribute__((format(printf, 2, 3))) explicit GZDException(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(msg, sizeof msg, format, arguments);
    va_end(arguments);
  }

  // Adds the system's reason, a value of errno.
  GZDException& because(int error) {
    systemError = error;
    return *this;
  }

  [[nodiscard]] const char* getMessage() const { return msg; }
  // 0 when the system had none.
  [[nodiscard]] int getSystemError() const { return systemError; }

 private:
  char msg[1024];
  int systemError = 0;
};

}  // namespace gzd

#endif
