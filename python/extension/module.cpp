// gzdapi._core: what the package's Python is made of. Nothing here is for users of the package.
#include <nanobind/nanobind.h>
#include <nanobind/stl/optional.h>
#include <nanobind/stl/pair.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/unique_ptr.h>
#include <nanobind/stl/vector.h>

#include <string_view>

#include "extension/arrow_stream.h"
#include "extension/facts_dict.h"
#include "extension/frame.h"
#include "extension/numpy_columns.h"
#include "tables/facts.h"

namespace {

namespace nb = nanobind;
using gzdpython::Frame;
using gzdpython::Spelling;
using gzdpython::TableStream;
using gzdtables::Eye;
using gzdtables::Options;
using gzdtables::Request;
using gzdtables::Schema;

// ---- from and to Python -------------------------------------------------------------------------

using OptionalText = std::optional<std::string>;
using Variables = std::vector<std::pair<std::string, std::string>>;

std::string path_of(const nb::bytes& path) {
  return {path.c_str(), path.size()};
}

void make_options(Options* place, bool repair, bool failsafe, bool message_offsets,
                  bool message_log, OptionalText trial_start, OptionalText trial_end,
                  Variables trial_variables) {
  new (place) Options{repair,
                      failsafe,
                      message_offsets,
                      message_log,
                      {std::move(trial_start), std::move(trial_end), std::move(trial_variables)}};
  try {
    gzdtables::check_options(*place);
  } catch (...) {
    place->~Options();
    throw;
  }
}

std::optional<Eye> eye_named(const OptionalText& name) {
  if (!name) return std::nullopt;
  if (*name == "left") return Eye::left;
  if (*name == "right") return Eye::right;
  throw gzdtables::UsageError("unknown eye '" + *name + "': left or right");
}

Request request_of(const std::string& table, std::vector<std::string> groups,
                   const OptionalText& eye, std::optional<std::int32_t> trial, double start,
                   double end, std::size_t batch_rows) {
  Request request{gzdtables::table_named(table),
                  std::move(groups),
                  eye_named(eye),
                  trial,
                  start,
                  end,
                  batch_rows};
  gzdtables::check_request(request);
  return request;
}

nb::str text(std::string_view words) {
  return nb::str(words.data(), words.size());
}

nb::list fields_of(const Schema& schema) {
  nb::list list;
  for (const gzdtables::Field& field : schema.fields)
    list.append(nb::make_tuple(text(field.name), text(gzdtables::name_of(field.type)),
                               text(field.unit), text(field.description),
                               nb::tuple(nb::cast(field.choices))));
  return list;
}

nb::list groups_of(const std::string& table) {
  nb::list list;
  for (const gzdtables::Group& group : gzdtables::groups_of(gzdtables::table_named(table)))
    if (!group.name.empty()) list.append(text(group.name));
  return list;
}

nb::list declared_fields(const std::string& table, const std::vector<std::string>& groups) {
  return fields_of(gzdtables::schema_of(gzdtables::table_named(table), groups));
}

nb::list table_names() {
  nb::list list;
  for (const gzdtables::Table table : gzdtables::all_tables())
    list.append(text(gzdtables::name_of(table)));
  return list;
}

// ---- Arrow --------------------------------------------------------------------------------------

constexpr const char* schema_capsule = "arrow_schema";
constexpr const char* stream_capsule = "arrow_array_stream";

// A capsule releases what its consumer did not take out of it.
template <class Struct, const char* const* name>
void release_capsule(PyObject* capsule) {
  auto* const content = static_cast<Struct*>(PyCapsule_GetPointer(capsule, *name));
  if (content == nullptr) return;
  if (content->release != nullptr) content->release(content);
  delete content;
}

template <class Struct, const char* const* name>
nb::object capsule_of(std::unique_ptr<Struct> content) {
  PyObject* const capsule = PyCapsule_New(content.get(), *name, &release_capsule<Struct, name>);
  if (capsule == nullptr) throw nb::python_error();
  static_cast<void>(content.release());  // the capsule's now
  return nb::steal(capsule);
}

Spelling spelling_for(const Schema& schema, const nb::object& request) {
  if (request.is_none()) return gzdpython::spelling_of(schema, false);
  const void* const wanted = PyCapsule_GetPointer(request.ptr(), schema_capsule);
  if (wanted == nullptr) throw nb::python_error();
  return gzdpython::requested_spelling(schema, *static_cast<const ArrowSchema*>(wanted));
}

nb::object schema_object(const Schema& schema, bool plain) {
  auto content = std::make_unique<ArrowSchema>();
  gzdpython::export_schema(schema, gzdpython::spelling_of(schema, plain), *content);
  return capsule_of<ArrowSchema, &schema_capsule>(std::move(content));
}

nb::object stream_object(std::unique_ptr<gzdpython::BatchSource> source,
                         const nb::object& request) {
  const Spelling spelling = spelling_for(source->schema(), request);
  auto content = std::make_unique<ArrowArrayStream>();
  gzdpython::export_stream(std::move(source), spelling, *content);
  return capsule_of<ArrowArrayStream, &stream_capsule>(std::move(content));
}

// ---- recordings ---------------------------------------------------------------------------------

class OpenFile {
 public:
  OpenFile(const nb::bytes& path, const Options& options)
      : recording_(gzdpython::open_recording(path_of(path), options)) {}

  [[nodiscard]] Frame read(const Request& request) const {
    return gzdpython::read_frame(*recording_, request);
  }
  [[nodiscard]] std::unique_ptr<TableStream> stream(const Request& request) const {
    return std::make_unique<TableStream>(recording_, request);
  }
  [[nodiscard]] nb::dict facts() const {
    return gzdpython::dict_of(
        gzdpython::in_turn(recording_->path(), [&] { return gzdtables::facts_of(*recording_); }));
  }
  [[nodiscard]] nb::list findings() const {
    return gzdpython::list_of(gzdpython::in_turn(
        recording_->path(), [&] { return gzdtables::findings_of(*recording_); }));
  }

 private:
  gzdpython::OpenRecording recording_;
};

// A stream of a recording that nobody else reads. What was said when it was opened before is told
// as a detail.
std::unique_ptr<TableStream> own_stream(const nb::bytes& path, const Options& options,
                                        const Request& request) {
  return std::make_unique<TableStream>(
      gzdpython::open_recording(path_of(path), options, gzdpython::Level::detail), request);
}

// The exception of the package that a failure becomes.
void translate(const std::exception_ptr& pointer, void*) {
  try {
    std::rethrow_exception(pointer);
  } catch (const gzdpython::Failure& failure) {
    try {
      nb::module_::import_("gzdapi._errors")
          .attr("raise_failure")(nb::bytes(failure.path.data(), failure.path.size()),
                                 failure.what(), failure.reason, failure.position,
                                 nb::bytes(failure.said.data(), failure.said.size()));
    } catch (nb::python_error& error) {
      error.restore();
    }
  }
}

void bind_requests(nb::module_& module) {
  nb::class_<Options>(module, "Options")
      .def("__init__", &make_options, nb::kw_only(), nb::arg("repair"), nb::arg("failsafe"),
           nb::arg("message_offsets"), nb::arg("message_log"), nb::arg("trial_start").none(),
           nb::arg("trial_end").none(), nb::arg("trial_variables"));
  nb::class_<Request>(module, "Request")
      .def(
          "__init__",
          [](Request* place, const std::string& table, std::vector<std::string> groups,
             const OptionalText& eye, std::optional<std::int32_t> trial, double start, double end,
             std::size_t batch_rows) {
            new (place)
                Request(request_of(table, std::move(groups), eye, trial, start, end, batch_rows));
          },
          nb::kw_only(), nb::arg("table"), nb::arg("groups"), nb::arg("eye").none(),
          nb::arg("trial").none(), nb::arg("start"), nb::arg("end"), nb::arg("batch_rows"));
}

void bind_tables(nb::module_& module) {
  nb::class_<Frame>(module, "Frame")
      .def("__len__", [](const Frame& frame) { return frame.batch->rows; })
      .def("fields", [](const Frame& frame) { return fields_of(*frame.schema); })
      .def("column", &gzdpython::numpy_column)
      .def("arrow_schema",
           [](const Frame& frame, bool plain) { return schema_object(*frame.schema, plain); })
      .def(
          "arrow_stream",
          [](const Frame& frame, const nb::object& request) {
            return stream_object(gzdpython::source_of(frame), request);
          },
          nb::arg("requested").none());
  nb::class_<TableStream>(module, "Stream")
      .def(nb::new_(&own_stream))
      .def("fields", [](const TableStream& stream) { return fields_of(stream.schema()); })
      .def("next",
           [](TableStream& stream) {
             Frame frame = stream.next_frame();
             return frame.batch ? std::optional(std::move(frame)) : std::nullopt;
           })
      .def("arrow_schema", [](const TableStream& stream, bool plain) {
        return schema_object(stream.schema(), plain);
      });
  module.def(
      "arrow_stream",
      [](const nb::bytes& path, const Options& options, const Request& request,
         const nb::object& requested) {
        return stream_object(own_stream(path, options, request), requested);
      },
      nb::arg(), nb::arg(), nb::arg(), nb::arg().none());
}

}  // namespace

NB_MODULE(_core, module) {
  nb::register_exception_translator(&translate);
  bind_requests(module);
  bind_tables(module);
  nb::class_<OpenFile>(module, "OpenFile")
      .def(nb::init<const nb::bytes&, const Options&>())
      .def("read", &OpenFile::read)
      .def("stream", &OpenFile::stream)
      .def("facts", &OpenFile::facts)
      .def("findings", &OpenFile::findings);
  module.def("groups_of", &groups_of);
  module.def("fields_of", &declared_fields);
  module.def("table_names", &table_names);
  module.attr("library_version") = gzd_get_version();
}
