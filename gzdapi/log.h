// The library's one diagnostic channel. print_log itself is declared in gzd.h.
#ifndef GZDAPI_LOG_H
#define GZDAPI_LOG_H

#include "gzd.h"

using LogFunction = void (*)(const char* message);

// Sets the receiver of messages for the whole process; null restores standard output.
void set_log_function(LogFunction function);

#endif
