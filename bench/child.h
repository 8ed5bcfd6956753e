// Runs programs and measures them.
#ifndef BENCH_CHILD_H
#define BENCH_CHILD_H

#include <string>
#include <vector>

struct Usage {
  double seconds = 0;      // wall clock, from start to end
  double cpu_seconds = 0;  // user and system
  long peak_kib = 0;       // resident memory
};

// Runs a program with its arguments, the first of which is its path, and waits for it. Its standard
// output goes to the file `console`; standard error stays. Throws std::runtime_error when it cannot
// be started or does not end with status 0.
//
// The kernel counts memory that this process has when it starts the program as the program's: keep
// this process small.
Usage run_program(const std::vector<std::string>& command, const std::string& console);

#endif
