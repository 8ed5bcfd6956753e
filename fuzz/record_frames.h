// Finds the records in the bytes of a recording, by nothing but their lengths. Written apart from
// the library's decoders, so that a mutation can keep whole records whole.
#ifndef FUZZ_RECORD_FRAMES_H
#define FUZZ_RECORD_FRAMES_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fuzz_support.h"

namespace fuzz {

// Bytes begin ... end - 1 of a record stream, tag word included.
struct Frame {
  std::size_t begin;
  std::size_t end;
};

// The first byte behind the "ENDP:" line; 0 without one.
std::size_t head_length(Input recording);

// True when the magic line tells that the records are compressed.
bool is_compressed(Input recording);

// Where records end that are longer than any that are of use here.
inline constexpr std::size_t LARGEST_BODY = 64 * 1024;

// The record stream of a recording, inflated when it is compressed; at most LARGEST_BODY bytes.
std::vector<std::uint8_t> plain_records(Input recording);

// The whole records of a stream, up to its end or the first record that does not end.
std::vector<Frame> find_frames(Input records);

// The offset of the record's four-byte time behind its beginning; 0 when it has none.
std::size_t time_offset(Input records, Frame frame);

// How many samples the gaps between the times of the records could be filled with: an upper bound.
std::uint64_t largest_filling(Input records);

// True of recordings that are legal but slow: a few bytes can ask for very many samples in their
// gaps, or inflate to very many bytes.
bool is_too_large(Input recording, std::uint64_t mostFilling);

}  // namespace fuzz

#endif
