// The chains of blocks behind the fixed part of a sample record: head poses, head targets and pupil
// ellipses. Each block is a length, a kind and its bytes; a length of 0 ends the chain.
#ifndef GZDAPI_SAMPLE_BLOCKS_H
#define GZDAPI_SAMPLE_BLOCKS_H

#include <array>
#include <cstddef>

#include "base/big_endian.h"
#include "gzd_data.h"
#include "record/stream_state.h"
#include "stream/MVIO.h"

namespace gzd {

// Decodes the chain at the stream's position into `s`, whose fixed part is decoded. Throws
// GZDException when the stream ends inside it.
void read_extended_blocks(InputStream& in, const DecodingParameters& parameters, FSAMPLE& s);
// The same chain with nothing decoded; a value cut off is reported as when decoding.
void skip_extended_blocks(InputStream& in, const DecodingParameters& parameters);
// Moves over a chain that nobody decodes.
void skip_blocks(InputStream& in);

// Which blocks a chain holds. Nearly always those of the record before: a look at their heads
// tells, and they are decoded where they lie.
class BlockChain {
 public:
  // The chain at `start`; an unknown one when it does not end before `end`, holds blocks that are
  // not recognised, or too many.
  static BlockChain at(const byte* start, const byte* end);

  [[nodiscard]] bool isKnown() const { return length_ != 0; }
  // In bytes, its end included; 0 of an unknown one.
  [[nodiscard]] std::size_t length() const { return length_; }
  // Whether the chain at `at`, of which as many bytes are in memory, holds the same blocks.
  [[nodiscard]] bool isAt(const byte* at) const {
    for (std::size_t i = 0; i < count_; ++i) {
      if (load_be16(at) != heads_[i]) return false;
      at += sizeof heads_[i] + (heads_[i] >> 8);
    }
    return *at == 0;
  }
  // Decodes such a chain.
  void decode(const byte* at, const DecodingParameters& parameters, FSAMPLE& s) const;

 private:
  static constexpr std::size_t most_blocks = 4;

  std::array<UINT16, most_blocks> heads_{};  // length and kind
  std::size_t count_ = 0;
  std::size_t length_ = 0;
};

}  // namespace gzd

#endif
