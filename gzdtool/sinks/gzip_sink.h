// Compression on the way to another sink.
#ifndef GZDTOOL_GZIP_SINK_H
#define GZDTOOL_GZIP_SINK_H

#include <memory>
#include <string>
#include <string_view>

#include "sinks/byte_sink.h"

namespace gzdtool {

// Writes gzip to `to`: a row of members of about a megabyte each, which every reader of the format
// takes as one stream.
[[nodiscard]] std::unique_ptr<ByteSink> make_gzip_sink(std::unique_ptr<ByteSink> to);

// The bytes as gzip in one member, as browsers want it.
[[nodiscard]] std::string gzipped(std::string_view bytes);

}  // namespace gzdtool

#endif
