// Compression on the way to another sink.
#ifndef GZDTOOL_GZIP_SINK_H
#define GZDTOOL_GZIP_SINK_H

#include <memory>

#include "sinks/byte_sink.h"

namespace gzdtool {

// Writes gzip to `to`: a row of members of about a megabyte each, which every reader of the format
// takes as one stream.
[[nodiscard]] std::unique_ptr<ByteSink> make_gzip_sink(std::unique_ptr<ByteSink> to);

}  // namespace gzdtool

#endif
