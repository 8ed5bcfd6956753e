// How a record that cannot be read is logged.
#include "record/record_stream.h"

#include "base/log.h"

namespace gzd {

void log_error(const GZDException& error) {
  log_clipped("Error %s \n", error.getMessage());
}

}  // namespace gzd
