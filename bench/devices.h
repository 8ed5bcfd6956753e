// Conversions of what other devices record, under other options, and of odd sizes: processor time
// against the default conversion.
#ifndef BENCH_DEVICES_H
#define BENCH_DEVICES_H

#include <string>

// Makes its recordings in `directory`, races and prints two tables: ratios a sample against a
// default conversion of as many samples by the converter `reference`, and what whole runs cost.
// `minutes` is recorded time.
void race_devices(const std::string& directory, const std::string& gzdconv,
                  const std::string& reference, int minutes, int rounds);

#endif
