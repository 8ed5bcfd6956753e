#include "record/record_stream.h"

#include "base/log.h"

namespace gzd {

void log_error(const GZDException& error) {
  print_log("Error %s \n", error.getMessage());
}

}  // namespace gzd
