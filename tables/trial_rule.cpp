// Texts and patterns of trials.
#include "trial_rule.h"

#include <algorithm>
#include <cstring>

#include "schema.h"

namespace gzdtables {

namespace {

constexpr std::size_t searched_bytes = 4096;
constexpr const char* viewer_command = "!V";

bool contains(const char* text, const std::optional<std::string>& part) {
  return part && std::strstr(text, part->c_str()) != nullptr;
}

bool is_empty(const std::optional<std::string>& text) {
  return text && text->empty();
}

void check_variable_name(const TrialRule& rule, std::size_t number) {
  const std::string& name = rule.variables[number].first;
  if (name.empty()) throw UsageError("a variable of trials has no name");
  const auto is_same = [&name](const auto& other) { return other.first == name; };
  const auto begin = rule.variables.begin();
  const bool repeated = std::any_of(begin, begin + static_cast<std::ptrdiff_t>(number), is_same);
  if (repeated || schema_of(Table::trials).index_of(name) >= 0)
    throw UsageError("the column '" + name + "' of trials would be there twice");
}

}  // namespace

void check_trial_rule(const TrialRule& rule) {
  if (is_empty(rule.start) || is_empty(rule.end))
    throw UsageError("the text that starts or ends trials is empty");
  if (rule.end && !rule.start) throw UsageError("trials with an end text need a start text, too");
  for (std::size_t i = 0; i < rule.variables.size(); ++i) {
    check_variable_name(rule, i);
    const Pattern compiles(rule.variables[i].second);
  }
}

TrialMark mark_of(const TrialRule& rule, const char* text) {
  if (std::strstr(text, viewer_command) != nullptr) return TrialMark::none;
  const bool starts = contains(text, rule.start), ends = contains(text, rule.end);
  if (starts && ends)
    return rule.end->size() > rule.start->size() ? TrialMark::end : TrialMark::start;
  if (starts) return TrialMark::start;
  return ends ? TrialMark::end : TrialMark::none;
}

Pattern::Pattern(const std::string& expression) {
  if (regcomp(&expression_, expression.c_str(), REG_EXTENDED) != 0)
    throw UsageError("'" + expression + "' is not a regular expression");
  if (expression_.re_nsub == 1) return;
  regfree(&expression_);
  throw UsageError("'" + expression + "' has not one group in parentheses");
}

Pattern::Pattern(Pattern&& other) noexcept : expression_(other.expression_) {
  other.is_ours_ = false;
}

Pattern::~Pattern() {
  if (is_ours_) regfree(&expression_);
}

std::optional<std::string> Pattern::find(const char* text) const {
  const std::string searched(text, strnlen(text, searched_bytes));
  regmatch_t places[2];
  if (regexec(&expression_, searched.c_str(), 2, places, 0) != 0 || places[1].rm_so < 0)
    return std::nullopt;
  return searched.substr(static_cast<std::size_t>(places[1].rm_so),
                         static_cast<std::size_t>(places[1].rm_eo - places[1].rm_so));
}

}  // namespace gzdtables
