// The functions of the C stream interface over a source of batches.
#include "extension/arrow_stream.h"

#include <cerrno>
#include <exception>
#include <string>
#include <utility>

#include "extension/arrow_array.h"

namespace gzdpython {

namespace {

struct StreamContent {
  std::unique_ptr<BatchSource> source;
  Spelling spelling;
  std::string error;
};

StreamContent& content_of(ArrowArrayStream* stream) {
  return *static_cast<StreamContent*>(stream->private_data);
}

// Exceptions end here: the number of an error instead, and its words kept.
template <class Work>
int guarded(StreamContent& content, Work work) {
  try {
    work();
    return 0;
  } catch (const std::bad_alloc&) {
    content.error = "out of memory";
    return ENOMEM;
  } catch (const std::exception& error) {
    content.error = error.what();
    return EIO;
  }
}

int get_schema(ArrowArrayStream* stream, ArrowSchema* out) {
  StreamContent& content = content_of(stream);
  return guarded(content, [&] { export_schema(content.source->schema(), content.spelling, *out); });
}

int get_next(ArrowArrayStream* stream, ArrowArray* out) {
  StreamContent& content = content_of(stream);
  return guarded(content, [&] {
    const auto batch = content.source->next();
    if (batch)
      export_batch(content.source->schema(), content.spelling, batch, *out);
    else
      out->release = nullptr;
  });
}

const char* get_last_error(ArrowArrayStream* stream) {
  const std::string& error = content_of(stream).error;
  return error.empty() ? nullptr : error.c_str();
}

void release(ArrowArrayStream* stream) {
  const std::unique_ptr<StreamContent> content(&content_of(stream));
  stream->release = nullptr;
}

}  // namespace

void export_stream(std::unique_ptr<BatchSource> source, const Spelling& spelling,
                   ArrowArrayStream& out) {
  auto content = std::make_unique<StreamContent>();
  content->source = std::move(source);
  content->spelling = spelling;
  out.get_schema = &get_schema;
  out.get_next = &get_next;
  out.get_last_error = &get_last_error;
  out.release = &release;
  out.private_data = content.release();
}

}  // namespace gzdpython
