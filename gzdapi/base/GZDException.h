// The one error type inside the library: a finished message of at most 1023 characters. Thrown by
// value; it never crosses the C interface.
#ifndef GZDAPI_GZDEXCEPTION_H
#define GZDAPI_GZDEXCEPTION_H

#include <cstdarg>
#include <cstdio>

namespace gzd {

// What the system did not do.
struct SystemError {
  enum class Place { Recording, MessageLog, TemporaryDirectory };

  int reason = 0;                  // a value of errno; 0: none
  Place place = Place::Recording;  // what it was to be done with
};

class GZDException {
 public:
  __attribute__((format(printf, 2, 3))) explicit GZDException(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(msg_, sizeof msg_, format, arguments);
    va_end(arguments);
  }

  // Adds the system's part in it.
  GZDException& because(SystemError error) {
    systemError_ = error;
    return *this;
  }

  [[nodiscard]] const char* getMessage() const { return msg_; }
  [[nodiscard]] SystemError getSystemError() const { return systemError_; }

 private:
  char msg_[1024];
  SystemError systemError_;
};

}  // namespace gzd

#endif
