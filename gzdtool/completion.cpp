// One function a shell, over the same verbs.
#include "completion.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <map>

namespace gzdtool {

namespace {

// In single quotes of a shell, `quote` being what stands there for one.
std::string quoted(const std::string& text, const char* quote) {
  std::string result;
  for (const char c : text) c == '\'' ? result += quote : result += c;
  return "'" + result + "'";
}

std::string names_of(const std::vector<DeclaredVerb>& verbs) {
  std::string names;
  for (const DeclaredVerb& verb : verbs) names += verb.name + " ";
  return names + "help";
}

// ---- bash ---------------------------------------------------------------------------------------

std::string bash_action(const DeclaredOption& option) {
  if (!option.words.empty())
    return fmt::format("_gzdtool_words -W \"{}\" -- \"$word\"", fmt::join(option.words, " "));
  if (option.is_folder()) return "_gzdtool_words -d -- \"$word\"";
  return option.is_file() ? "_gzdtool_words -f -- \"$word\"" : "return";
}

// What completes the value of each option, and the verbs of which it does.
using BashValues = std::map<std::string, std::map<std::string, std::vector<std::string>>>;

BashValues bash_values(const std::vector<DeclaredVerb>& verbs) {
  BashValues values;
  for (const DeclaredVerb& verb : verbs)
    for (const DeclaredOption& option : verb.options)
      for (const std::string& name : option.names)
        if (!option.value.empty()) values[name][bash_action(option)].push_back(verb.name);
  return values;
}

// The lines of `case "VERB OPTION"`; the verb is left out where it says nothing.
std::string bash_cases(const std::vector<DeclaredVerb>& verbs) {
  std::map<std::string, std::vector<std::string>> patterns;  // by action
  for (const auto& [option, actions] : bash_values(verbs))
    for (const auto& [action, names] : actions) {
      auto& list = patterns[action];
      if (actions.size() == 1) list.push_back("*\" " + option + "\"");
      for (const std::string& verb : names)
        if (actions.size() > 1) list.push_back(fmt::format("\"{} {}\"", verb, option));
    }
  std::string lines;
  for (const auto& [action, list] : patterns)
    lines += fmt::format("    {})\n      {} ;;\n", fmt::join(list, " | "), action);
  return lines;
}

std::string bash_options(const VerbsAlike& verbs) {
  std::string words;
  for (const DeclaredOption& option : verbs.first.options) words += option.names.back() + " ";
  words.pop_back();
  return fmt::format("    {})\n      _gzdtool_words -W \"{}\" -- \"$1\" ;;\n",
                     fmt::join(verbs.names, " | "), words);
}

}  // namespace

std::string bash_completion(const std::vector<DeclaredVerb>& verbs) {
  std::string text =
      "# Completion of gzdtool's command line for bash, made by `gzdtool manual bash`.\n"
      "# shellcheck shell=bash\n\n"
      "_gzdtool_words() { mapfile -t COMPREPLY < <(compgen \"$@\"); }\n\n"
      "_gzdtool_options() {\n  case ${COMP_WORDS[1]} in\n";
  for (const VerbsAlike& alike : put_together(verbs)) text += bash_options(alike);
  text += fmt::format(
      "  esac\n}}\n\n"
      "_gzdtool() {{\n"
      "  local word=${{COMP_WORDS[COMP_CWORD]}} before=${{COMP_WORDS[COMP_CWORD - 1]}}\n"
      "  COMPREPLY=()\n"
      "  case \"$COMP_CWORD ${{COMP_WORDS[1]}}\" in\n"
      "    \"1 \"*) _gzdtool_words -W \"{0} --help --version\" -- \"$word\"; return ;;\n"
      "    *\" help\") _gzdtool_words -W \"{0}\" -- \"$word\"; return ;;\n"
      "  esac\n"
      "  case \"${{COMP_WORDS[1]}} $before\" in\n",
      names_of(verbs));
  text += bash_cases(verbs);
  text +=
      "    *)\n"
      "      case $word in\n"
      "        -*) _gzdtool_options \"$word\" ;;\n"
      "        *) mapfile -t COMPREPLY < <(compgen -f -X '!*.[gG][zZ][dD]' -- \"$word\"\n"
      "             compgen -d -- \"$word\") ;;\n"
      "      esac\n"
      "      ;;\n"
      "  esac\n}\n\n"
      "complete -o filenames -F _gzdtool gzdtool\n";
  return text;
}

// ---- zsh ----------------------------------------------------------------------------------------

namespace {

// In the explanation of an option, or of a verb.
std::string zsh_text(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '[' || c == ']' || c == ':' || c == '\\') result += '\\';
    result += c;
  }
  return result;
}

std::string zsh_action(const DeclaredOption& option) {
  if (!option.words.empty()) return fmt::format("({})", fmt::join(option.words, " "));
  if (option.is_folder()) return "_files -/";
  return option.is_file() ? "_files" : "";
}

std::string zsh_option(const DeclaredOption& option) {
  const std::string value =
      option.value.empty() ? "" : ":" + zsh_text(option.value) + ":" + zsh_action(option);
  const std::string spec = fmt::format("{}{}[{}]{}", option.names.back(), value.empty() ? "" : "=",
                                       zsh_text(option.description), value);
  return " \\\n      " + quoted(spec, "'\\''");
}

std::string zsh_verb(const DeclaredVerb& verb) {
  std::string text = fmt::format("    {}) _arguments", verb.name);
  for (const DeclaredOption& option : verb.options) text += zsh_option(option);
  if (!verb.argument.empty()) text += " \\\n      '*:recording:_files -g \"*.(#i)gzd\"'";
  return text + " ;;\n";
}

}  // namespace

std::string zsh_completion(const std::vector<DeclaredVerb>& verbs) {
  std::string text =
      "#compdef gzdtool\n# Completion of gzdtool's command line for zsh, made by `gzdtool manual "
      "zsh`.\n\n_gzdtool() {\n  local curcontext=$curcontext context state line\n"
      "  local -a verbs\n  local -A opt_args\n  verbs=(\n";
  for (const DeclaredVerb& verb : verbs)
    text += "    " + quoted(verb.name + ":" + zsh_text(verb.summary), "'\\''") + "\n";
  text += fmt::format(
      "    'help:Tell the options of a verb'\n  )\n"
      "  _arguments -C '(- *)--help[help]' '(- *)--version[version]' '1:verb:->verb' "
      "'*::argument:->argument'\n"
      "  case $state in\n"
      "    verb) _describe verb verbs; return ;;\n"
      "    argument) ;;\n    *) return ;;\n  esac\n"
      "  case $words[1] in\n"
      "    help) _values verb {} ;;\n",
      names_of(verbs));
  for (const DeclaredVerb& verb : verbs) text += zsh_verb(verb);
  return text + "  esac\n}\n\n_gzdtool \"$@\"\n";
}

// ---- fish ---------------------------------------------------------------------------------------

namespace {

std::string fish_option(const DeclaredVerb& verb, const DeclaredOption& option) {
  std::string text =
      fmt::format("complete -c gzdtool -n '__fish_seen_subcommand_from {}'", verb.name);
  for (const std::string& name : option.names)
    text += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
  if (!option.words.empty()) text += fmt::format(" -x -a '{}'", fmt::join(option.words, " "));
  if (option.words.empty() && option.is_folder()) text += " -x -a '(__fish_complete_directories)'";
  if (option.words.empty() && option.is_file()) text += " -r -F";
  const bool is_free = option.words.empty() && !option.is_folder() && !option.is_file();
  if (!option.value.empty() && is_free) text += " -x";
  return text + " -d " + quoted(option.description, "\\'") + "\n";
}

}  // namespace

std::string fish_completion(const std::vector<DeclaredVerb>& verbs) {
  std::string text =
      "# Completion of gzdtool's command line for fish, made by `gzdtool manual fish`.\n"
      "complete -c gzdtool -f\n"
      "complete -c gzdtool -n 'not __fish_use_subcommand' -k -a '(__fish_complete_suffix .gzd)'\n"
      "complete -c gzdtool -n __fish_use_subcommand -a help -d 'Tell the options of a verb'\n"
      "complete -c gzdtool -n __fish_use_subcommand -l version -d 'Tell the version'\n";
  for (const DeclaredVerb& verb : verbs) {
    text += fmt::format("complete -c gzdtool -n __fish_use_subcommand -a {} -d {}\n", verb.name,
                        quoted(verb.summary, "\\'"));
    for (const DeclaredOption& option : verb.options) text += fish_option(verb, option);
  }
  return text;
}

}  // namespace gzdtool
