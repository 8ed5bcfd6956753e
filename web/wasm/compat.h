// What the C++ library of the WebAssembly compiler lacks of C++20: included before every source of
// that build, and by nothing else.
#ifndef GZDPAGE_COMPAT_H
#define GZDPAGE_COMPAT_H
#ifdef __cplusplus

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

namespace gzdcompat {

template <class Number>
using WhenFloating = std::enable_if_t<std::is_floating_point_v<Number>, int>;

inline std::to_chars_result copied(char* first, char* last, std::string_view text) {
  if (static_cast<std::size_t>(last - first) < text.size())
    return {last, std::errc::value_too_large};
  return {std::copy(text.begin(), text.end(), first), std::errc{}};
}

// printf writes every digit exactly, whatever the number.
inline std::string printed(const char* format, int decimals, double value) {
  char text[400];
  const int length = std::snprintf(text, sizeof text, format, decimals, value);
  if (length < static_cast<int>(sizeof text)) return {text, static_cast<std::size_t>(length)};
  std::string longer(static_cast<std::size_t>(length) + 1, '\0');
  std::snprintf(longer.data(), longer.size(), format, decimals, value);
  longer.pop_back();
  return longer;
}

// Digits behind the first that are needed to read the same value back.
template <class Number>
int shortest_digits(Number value) {
  int digits = 0;
  const auto reads_back = [value](const std::string& text) {
    if constexpr (std::is_same_v<Number, float>) return std::strtof(text.c_str(), nullptr) == value;
    return static_cast<Number>(std::strtod(text.c_str(), nullptr)) == value;
  };
  while (digits < 17 && !reads_back(printed("%.*e", digits, static_cast<double>(value)))) ++digits;
  return digits;
}

template <class Number>
std::string fixed(Number value) {
  const auto wide = static_cast<double>(value);
  if (!std::isfinite(value)) return printed("%.*f", 0, wide);
  const int digits = shortest_digits(value);
  const std::string scientific = printed("%.*e", digits, wide);
  const int exponent = std::atoi(scientific.c_str() + scientific.find('e') + 1);
  return printed("%.*f", std::max(0, digits - exponent), wide);
}

template <class Number>
std::string shortest(Number value) {
  std::string plain = fixed(value);
  if (!std::isfinite(value)) return plain;
  const std::string scientific =
      printed("%.*e", shortest_digits(value), static_cast<double>(value));
  return plain.size() <= scientific.size() ? plain : scientific;
}

}  // namespace gzdcompat

namespace std {

template <class To, class From>
constexpr To bit_cast(const From& from) noexcept {
  static_assert(sizeof(To) == sizeof(From));
  return __builtin_bit_cast(To, from);
}

template <class T>
enable_if_t<is_array_v<T>, unique_ptr<T>> make_unique_for_overwrite(size_t count) {
  return unique_ptr<T>(new remove_extent_t<T>[count]);
}

template <class Number, gzdcompat::WhenFloating<Number> = 0>
to_chars_result to_chars(char* first, char* last, Number value) {
  return gzdcompat::copied(first, last, gzdcompat::shortest(value));
}

template <class Number, gzdcompat::WhenFloating<Number> = 0>
to_chars_result to_chars(char* first, char* last, Number value, chars_format format) {
  static_cast<void>(format);  // fixed is the only one in use
  return gzdcompat::copied(first, last, gzdcompat::fixed(value));
}

template <class Number, gzdcompat::WhenFloating<Number> = 0>
to_chars_result to_chars(char* first, char* last, Number value, chars_format format,
                         int precision) {
  const char* const pattern = format == chars_format::fixed ? "%.*f" : "%.*e";
  return gzdcompat::copied(first, last,
                           gzdcompat::printed(pattern, precision, static_cast<double>(value)));
}

// Takes what is no number, and hexadecimal, as the callers ask: decimal digits come first.
template <class Number, gzdcompat::WhenFloating<Number> = 0>
from_chars_result from_chars(const char* first, const char* last, Number& value) {
  const string_view all(first, static_cast<size_t>(last - first));
  const string digits(all.substr(0, all.find_first_not_of("0123456789.eE+-")));
  char* end = nullptr;
  errno = 0;
  const auto read = static_cast<Number>(strtod(digits.c_str(), &end));
  if (end == digits.c_str()) return {first, errc::invalid_argument};
  const char* const behind = first + (end - digits.c_str());
  if (errno == ERANGE) return {behind, errc::result_out_of_range};
  value = read;
  return {behind, errc{}};
}

}  // namespace std

#endif
#endif
