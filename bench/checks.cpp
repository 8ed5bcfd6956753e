// Compares texts line by line, what differs on purpose aside.
#include "checks.h"

#include <cctype>
#include <fstream>
#include <stdexcept>

namespace {

// A text file, line by line; small in memory whatever its size.
class Lines {
 public:
  explicit Lines(const std::string& path) : path_(path), in_(path, std::ios::binary) {
    if (!in_) throw std::runtime_error("cannot read " + path);
  }
  bool next() { return static_cast<bool>(std::getline(in_, line_)) && ++number_ > 0; }
  bool next_sample() {
    while (next())
      if (!line_.empty() && std::isdigit(static_cast<unsigned char>(line_[0]))) return true;
    return false;
  }
  [[nodiscard]] const std::string& line() const { return line_; }
  [[nodiscard]] std::string place() const { return path_ + ":" + std::to_string(number_); }

 private:
  std::string path_;
  std::ifstream in_;
  std::string line_;
  long number_ = 0;
};

[[noreturn]] void differ(const Lines& one, const Lines& other) {
  throw std::runtime_error(one.place() + " and " + other.place() + " differ:\n" + one.line() +
                           "\n" + other.line());
}

bool names_input_and_date(const std::string& line) {
  return line.starts_with("** CONVERTED FROM ");
}

}  // namespace

void check_sample_lines(const std::string& limit_text, const std::string& asc) {
  Lines limit(limit_text), converter(asc);
  while (converter.next_sample())
    if (!limit.next() || limit.line() != converter.line()) differ(limit, converter);
  if (limit.next()) differ(limit, converter);
}

void check_same_asc(const std::string& one, const std::string& other) {
  Lines a(one), b(other);
  while (a.next()) {
    if (!b.next()) differ(a, b);
    const bool both_masked = names_input_and_date(a.line()) && names_input_and_date(b.line());
    if (!both_masked && a.line() != b.line()) differ(a, b);
  }
  if (b.next()) differ(a, b);
}
