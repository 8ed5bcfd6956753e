// Columns as Arrow describes them. Units and descriptions are metadata of the fields.
#ifndef GZDPYTHON_ARROW_SCHEMA_H
#define GZDPYTHON_ARROW_SCHEMA_H

#include <vector>

#include "extension/arrow_abi.h"
#include "tables/schema.h"

namespace gzdpython {

// By column, whether a choice is handed out as plain text instead of a dictionary.
using Spelling = std::vector<bool>;

// Every choice as a dictionary, or every one as plain text.
[[nodiscard]] Spelling spelling_of(const gzdtables::Schema& schema, bool is_plain);

// What a consumer asks for: plain text where its schema has text. Throws gzdtables::UsageError for
// a schema of other columns. What cannot be had is handed out as it is stored.
[[nodiscard]] Spelling requested_spelling(const gzdtables::Schema& schema,
                                          const ArrowSchema& request);

// A struct of all columns. `out` is the caller's, and to be released by it.
void export_schema(const gzdtables::Schema& schema, const Spelling& spelling, ArrowSchema& out);

}  // namespace gzdpython

#endif
