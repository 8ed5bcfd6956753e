// What is to be reached, and whether it was.
#include "targets.h"

#include <cstdio>

namespace {

constexpr double mib = 1024.0 * 1024.0;

const char* verdict(bool meets_must, bool meets_aim) {
  if (meets_aim) return "aim reached";
  return meets_must ? "must reached" : "MISSED";
}

}  // namespace

void print_targets_head() {
  std::printf("\n| %-58s | must | aim | measured | |\n|---|---|---|---|---|\n", "work");
}

void print_most(const char* work, double must, double aim, double value, int decimals,
                const char* unit) {
  std::printf("| %-58s | %*.*f %s | %*.*f %s | %*.*f %s | %s |\n", work, 6, decimals, must, unit, 6,
              decimals, aim, unit, 7, decimals, value, unit, verdict(value <= must, value <= aim));
}

namespace {

void print_least(const char* work, double must, double aim, double value, const char* unit) {
  std::printf("| %-58s | %6.0f %s | %6.0f %s | %7.0f %s | %s |\n", work, must, unit, aim, unit,
              value, unit, verdict(value >= must, value >= aim));
}

}  // namespace

void print_targets(const Measured& m) {
  print_targets_head();
  print_most("default conversion to /dev/null, against limit", 8, 5, m.null_against_limit, 2, "x");
  print_most("the same to a file on disk", 2.5, 1.6, m.file_against_limit, 2, "x");
  print_least("text per second and core, to /dev/null", 700, 1100, m.text_rate, "MB/s");
  print_most("-vel against the default conversion", 3, 2, m.velocity_against_default, 2, "x");
  print_most("compressed input, against inflation and plain conversion", 1.15, 1.05,
             m.compressed_against_parts, 2, "x");
  print_most("peak memory: 24 bytes an item + 16 MiB", m.allowed_bytes / mib, m.allowed_bytes / mib,
             m.peak_bytes / mib, 1, "MiB");
  print_most("growth from the shortest to the longest recording", 10, 5, 100 * m.growth, 1, "%");
  print_most("opening without converting, against the default conversion", 50, 35,
             100 * m.open_against_default, 0, "%");
}
