// The answers are proven before anything is timed. Each throws std::runtime_error when they differ.
#ifndef BENCH_CHECKS_H
#define BENCH_CHECKS_H

#include <string>

// The lines of `limit_text` are the sample lines of `asc`.
void check_sample_lines(const std::string& limit_text, const std::string& asc);

// Two ASC files are equal but for the line that names input and date.
void check_same_asc(const std::string& one, const std::string& other);

#endif
