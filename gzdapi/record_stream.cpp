#include "record_stream.h"

#include "gzd.h"

void log_error(const GZDException& error) {
  print_log("Error %s \n", error.getMessage());
}
