// Read off the parser of the command line, which the verbs have told all this.
#include "declared.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "tables/schema.h"

namespace gzdtool {

namespace {

using gzdtables::Table;
using Words = std::vector<std::string>;

// The groups of columns of a verb's table; of `export` those of any.
Words group_words(const std::string& verb) {
  Words words{"all"};
  for (const Table table : gzdtables::all_tables())
    for (const auto& group : gzdtables::groups_of(table)) {
      const bool is_wanted =
          (verb == "export" && table != Table::messages) || verb == name_of(table);
      const bool is_new = std::find(words.begin(), words.end(), group.name) == words.end();
      if (is_wanted && is_new && !group.name.empty()) words.push_back(group.name);
    }
  return words;
}

Words table_words() {
  Words words;
  for (const Table table : gzdtables::all_tables()) words.emplace_back(name_of(table));
  return words;
}

Words words_of(const std::string& verb, const std::string& value) {
  if (value == "EYE") return {"left", "right"};
  if (value == "FORMAT" && verb == "export") return {"tsv", "tsv.gz", "csv", "jsonl"};
  if (value == "FORMAT") return {"tsv", "csv", "jsonl"};
  if (value == "PAGE") return {"json", "markdown"};
  if (value == "DATATYPE") return {"beh", "func", "eeg", "meg"};
  if (value == "TABLES") return table_words();
  return value == "GROUPS" ? group_words(verb) : Words{};
}

DeclaredOption option_of(const std::string& verb, const CLI::Option& option) {
  DeclaredOption declared;
  for (const std::string& name : option.get_snames()) declared.names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) declared.names.push_back("--" + name);
  if (option.get_items_expected_max() > 0) declared.value = option.get_type_name();
  declared.description = option.get_description();
  declared.words = words_of(verb, declared.value);
  return declared;
}

DeclaredVerb verb_of(const CLI::App& app) {
  DeclaredVerb verb{app.get_name(), app.get_description(), app.get_footer(), "", {}};
  for (const CLI::Option* const option : app.get_options()) {
    if (option->get_positional())
      verb.argument = option->get_description();
    else
      verb.options.push_back(option_of(verb.name, *option));
  }
  return verb;
}

}  // namespace

std::vector<VerbsAlike> put_together(const std::vector<DeclaredVerb>& verbs) {
  std::vector<VerbsAlike> groups;
  for (const DeclaredVerb& verb : verbs) {
    const bool is_alike = !groups.empty() && groups.back().first.options == verb.options &&
                          groups.back().first.argument == verb.argument;
    if (!is_alike) groups.push_back({verb, {}, {}});
    groups.back().names.push_back(verb.name);
    groups.back().summaries.push_back(verb.summary);
  }
  return groups;
}

std::vector<DeclaredVerb> declared_verbs(const CLI::App& root) {
  std::vector<DeclaredVerb> verbs;
  for (const CLI::App* const app : root.get_subcommands({}))
    if (!app->get_group().empty()) verbs.push_back(verb_of(*app));
  return verbs;
}

}  // namespace gzdtool
