// Where exceptions end: a call of the C interface gives the result of the work, or what stands for
// its failure.
#ifndef GZDAPI_GUARD_H
#define GZDAPI_GUARD_H

#include <cerrno>
#include <exception>
#include <new>

#include "GZDFile.h"
#include "base/log.h"

namespace gzd {

inline GZDFile& of(GZDFILE* handle) {
  return *static_cast<GZDFile*>(handle);
}

inline bool is_out_of_memory(const std::exception& error) {
  return dynamic_cast<const std::bad_alloc*>(&error) != nullptr;
}

// What is said of an exception that is none of the library's own.
inline const char* description_of(const std::exception& error) {
  return is_out_of_memory(error) ? "Out of memory" : error.what();
}

inline SystemError system_error_of(const std::exception& error) {
  return {is_out_of_memory(error) ? ENOMEM : 0};
}

// The result of `call`, or `failure` when it ends with an exception, which is logged; the system's
// part in it goes to `reason`.
template <class Result, class Call>
Result guarded(Result failure, Call call, SystemError& reason) noexcept {
  try {
    return call();
  } catch (const GZDException& error) {
    reason = error.getSystemError();
    log_clipped("Error %s \n", error.getMessage());
  } catch (const std::exception& error) {
    reason = system_error_of(error);
    log_clipped("Error %s \n", description_of(error));
  }
  return failure;
}

// The same of a call with an open file, which remembers the reason.
template <class Result, class Call>
Result guarded(GZDFILE* ef, Result failure, Call call) noexcept {
  SystemError reason;
  const Result result = guarded(
      failure, [&] { return call(of(ef)); }, reason);
  of(ef).noteSystemError(reason);
  return result;
}

}  // namespace gzd

#endif
