// The table of what conversions are to reach.
#ifndef BENCH_TARGETS_H
#define BENCH_TARGETS_H

// Figures as measured; ratios unless another unit is told.
struct Measured {
  double null_against_limit = 0;
  double file_against_limit = 0;
  double text_rate = 0;  // MB/s
  double velocity_against_default = 0;
  double compressed_against_parts = 0;
  double peak_bytes = 0, allowed_bytes = 0;
  double growth = 0;  // relative change of the time a sample takes
  double open_against_default = 0;
};

// A table of targets: its head, and a row where less is better. `unit` follows each figure.
void print_targets_head();
void print_most(const char* work, double must, double aim, double value, int decimals,
                const char* unit);

void print_targets(const Measured& measured);

#endif
