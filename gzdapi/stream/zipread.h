// Inflation of the body of a compressed recording.
#ifndef GZDAPI_ZIPREAD_H
#define GZDAPI_ZIPREAD_H

#include <cstdio>

namespace gzd {

// Results of do_uncompress.
constexpr int uncompress_ok = 0;
constexpr int uncompress_io_error = -1;    // a read or write error
constexpr int uncompress_data_error = -3;  // damaged, cut, or in need of a preset dictionary
constexpr int uncompress_no_memory = -4;

// Inflates the zlib stream at the current position of `in` to the current position of `out`. `in`
// is left after what was used of it; what follows the stream is ignored. What would lie beyond the
// last position that a recording is read at is not inflated. Returns one of the results above, or
// zlib's own when it cannot start.
int do_uncompress(FILE* in, FILE* out);

}  // namespace gzd

#endif
