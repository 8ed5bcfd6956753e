// Which messages open and end trials, and what else is read off the messages of one.
#ifndef GZDTABLES_TRIAL_RULE_H
#define GZDTABLES_TRIAL_RULE_H

#include <regex.h>

#include <optional>
#include <string>
#include <vector>

#include "recording.h"

namespace gzdtables {

// Throws UsageError for a rule without sense: an empty text, an end without a start, a pattern that
// is none or has not one group, a name that is taken.
void check_trial_rule(const TrialRule& rule);

enum class TrialMark { none, start, end };

// What a message (up to its first NUL) does to trials. Of two texts that it contains the longer
// counts; a message with "!V" does nothing.
[[nodiscard]] TrialMark mark_of(const TrialRule& rule, const char* text);

// A regular expression with one group.
class Pattern {
 public:
  // Throws UsageError when it is none.
  explicit Pattern(const std::string& expression);
  Pattern(Pattern&& other) noexcept;
  Pattern& operator=(Pattern&&) = delete;
  ~Pattern();

  // What the group matches in the first 4096 bytes of the text; nothing without a match.
  [[nodiscard]] std::optional<std::string> find(const char* text) const;

 private:
  regex_t expression_{};
  bool is_ours_ = true;
};

}  // namespace gzdtables

#endif
