// Each exported schema owns its texts and children through `private_data`.
#include "extension/arrow_schema.h"

#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace gzdpython {

namespace {

using gzdtables::Field;
using gzdtables::Schema;
using gzdtables::Type;

constexpr const char* text_format = "u";
constexpr const char* choice_format = "c";  // indices of a dictionary: int8

void release_one(ArrowSchema& schema) {
  if (schema.release != nullptr) schema.release(&schema);
}

struct SchemaContent {
  SchemaContent() = default;
  SchemaContent(const SchemaContent&) = delete;
  SchemaContent& operator=(const SchemaContent&) = delete;
  ~SchemaContent() {
    for (ArrowSchema& child : children) release_one(child);
    release_one(dictionary);
  }

  std::string name, metadata;
  std::vector<ArrowSchema> children;
  std::vector<ArrowSchema*> places;
  ArrowSchema dictionary{};
};

void release_schema(ArrowSchema* schema) {
  const std::unique_ptr<SchemaContent> content(static_cast<SchemaContent*>(schema->private_data));
  schema->release = nullptr;
}

const char* format_of(Type type) {
  switch (type) {
    case Type::boolean:
      return "b";
    case Type::int32:
      return "i";
    case Type::int64:
      return "l";
    case Type::uint16:
      return "S";
    case Type::uint32:
      return "I";
    case Type::float32:
      return "f";
    case Type::float64:
      return "g";
    case Type::choice:
      return choice_format;
    case Type::text:
      break;
  }
  return text_format;
}

void append_number(std::string& bytes, std::size_t number) {
  const auto word = static_cast<std::int32_t>(number);
  bytes.append(reinterpret_cast<const char*>(&word), sizeof word);
}

// Pairs of key and value, each with its length in front.
std::string encoded(const std::vector<std::pair<std::string_view, std::string_view>>& pairs) {
  std::string bytes;
  append_number(bytes, pairs.size());
  for (const auto& [key, value] : pairs) {
    for (const std::string_view text : {key, value}) {
      append_number(bytes, text.size());
      bytes.append(text);
    }
  }
  return bytes;
}

std::string metadata_of(const Field& field) {
  if (field.unit.empty()) return encoded({{"description", field.description}});
  return encoded({{"unit", field.unit}, {"description", field.description}});
}

void fill(ArrowSchema& out, const char* format, std::unique_ptr<SchemaContent> content) {
  for (ArrowSchema& child : content->children) content->places.push_back(&child);
  out.format = format;
  out.name = content->name.c_str();
  out.metadata = content->metadata.empty() ? nullptr : content->metadata.data();
  out.flags = arrow_flag_nullable;
  out.n_children = static_cast<std::int64_t>(content->children.size());
  out.children = content->places.data();
  out.dictionary = content->dictionary.release == nullptr ? nullptr : &content->dictionary;
  out.release = &release_schema;
  out.private_data = content.release();
}

void export_field(const Field& field, bool is_plain, ArrowSchema& out) {
  auto content = std::make_unique<SchemaContent>();
  content->name = field.name;
  content->metadata = metadata_of(field);
  if (field.type != Type::choice) return fill(out, format_of(field.type), std::move(content));
  if (is_plain) return fill(out, text_format, std::move(content));
  fill(content->dictionary, text_format, std::make_unique<SchemaContent>());
  fill(out, choice_format, std::move(content));
}

}  // namespace

Spelling spelling_of(const Schema& schema, bool is_plain) {
  return Spelling(schema.fields.size(), is_plain);
}

Spelling requested_spelling(const Schema& schema, const ArrowSchema& request) {
  const bool is_struct = request.format != nullptr && std::strcmp(request.format, "+s") == 0;
  if (!is_struct || static_cast<std::size_t>(request.n_children) != schema.fields.size())
    throw gzdtables::UsageError("the requested schema has other columns than the table");
  Spelling spelling;
  for (std::size_t i = 0; i < schema.fields.size(); ++i) {
    const ArrowSchema& wanted = *request.children[i];
    if (schema.fields[i].name != wanted.name)
      throw gzdtables::UsageError(std::string("the requested schema has the column '") +
                                  wanted.name + "' in place of '" + schema.fields[i].name + "'");
    spelling.push_back(wanted.dictionary == nullptr &&
                       std::strcmp(wanted.format, text_format) == 0);
  }
  return spelling;
}

void export_schema(const Schema& schema, const Spelling& spelling, ArrowSchema& out) {
  auto content = std::make_unique<SchemaContent>();
  content->metadata = encoded({{"table", gzdtables::name_of(schema.table)}});
  content->children.resize(schema.fields.size());
  for (std::size_t i = 0; i < schema.fields.size(); ++i)
    export_field(schema.fields[i], spelling[i], content->children[i]);
  fill(out, "+s", std::move(content));
}

}  // namespace gzdpython
