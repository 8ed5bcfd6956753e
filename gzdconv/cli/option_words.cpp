// The names of all options, and the check of words that are none of them.
#include "cli/option_words.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

#include "cli/console.h"
#include "cli/text.h"

namespace gzdconv {

namespace {

constexpr std::size_t most_compared = 24;  // characters of a word; the names are shorter

// What is compared of a word: in small letters, without the dashes in front.
std::string bare_word(std::string_view word) {
  word.remove_prefix(std::min(word.find_first_not_of('-'), word.size()));
  std::string bare(word.substr(0, most_compared));
  lowerstring(bare);
  return bare;
}

// How many characters to change, add or take away to make one of the other.
std::size_t edit_distance(std::string_view one, std::string_view other) {
  std::array<std::size_t, most_compared + 1> row{};
  std::iota(row.begin(), row.end(), 0U);
  for (std::size_t j = 1; j <= other.size(); ++j) {
    std::size_t diagonal = std::exchange(row[0], j);
    for (std::size_t i = 1; i <= one.size(); ++i) {
      const std::size_t changed = diagonal + (one[i - 1] == other[j - 1] ? 0 : 1);
      diagonal = std::exchange(row[i], std::min({row[i] + 1, row[i - 1] + 1, changed}));
    }
  }
  return row[one.size()];
}

// 0 for the beginning of a name, 1 for nothing in common.
double unlikeness(std::string_view typed, std::string_view name) {
  if (name.starts_with(typed)) return 0.0;
  return static_cast<double>(edit_distance(typed, name)) /
         static_cast<double>(std::max(typed.size(), name.size()));
}

bool begins(std::string_view word, std::string_view typed) {
  return word.size() >= typed.size() && strncasecmp(word.data(), typed.data(), typed.size()) == 0;
}

// True for the beginning of just one name that does what that option does.
bool is_understood(std::string_view typed, std::string_view meant) {
  const auto count = std::count_if(std::begin(option_words), std::end(option_words),
                                   [typed](std::string_view word) { return begins(word, typed); });
  return count == 1 && begins(meant, typed);
}

std::string advice(std::string_view meant, std::string_view nearest) {
  std::string text = "no such option, ";
  if (meant.empty())
    text.append("ignored");
  else
    text.append("taken as ").append(meant);
  if (nearest != meant) text.append("; the nearest is ").append(nearest);
  return text;
}

}  // namespace

bool is_option_name(std::string_view typed) {
  return std::any_of(std::begin(option_words), std::end(option_words), [typed](std::string_view w) {
    return w.size() == typed.size() && begins(w, typed);
  });
}

std::string_view nearest_option(std::string_view typed) {
  const std::string bare = bare_word(typed);
  return *std::min_element(std::begin(option_words), std::end(option_words),
                           [&bare](std::string_view one, std::string_view other) {
                             return unlikeness(bare, bare_word(one)) <
                                    unlikeness(bare, bare_word(other));
                           });
}

void UnknownWords::note(std::string_view typed, std::string_view meant) {
  if (is_understood(typed, meant) || !told_.emplace(typed).second) return;
  report_problem(std::string(typed).c_str(), advice(meant, nearest_option(typed)).c_str());
}

}  // namespace gzdconv
