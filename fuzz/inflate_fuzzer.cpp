// Any bytes as the compressed body of a recording.
//
// Asserts: what comes out is what zlib makes of the same bytes in one call, and the result is its
// result; a text deflated here comes back whole, and cut anywhere gives an error and a beginning of
// the text.
#include <zlib.h>

#include "harness.h"
#include "stream/zipread.h"

using namespace gzd;

namespace {

struct Inflated {
  int result;
  std::string text;
};

Inflated inflate_by_library(fuzz::Input bytes) {
  static fuzz::MemoryFile source("compressed"), target("inflated");
  source.set(bytes);
  target.set({});
  const fuzz::File in(std::fopen(source.path().c_str(), "rb"));
  fuzz::File out(std::fopen(target.path().c_str(), "r+b"));
  if (!in || !out) std::abort();
  const int result = do_uncompress(in.get(), out.get());
  out.reset();
  return {result, target.content()};
}

Inflated inflate_at_once(fuzz::Input bytes) {
  z_stream stream{};
  if (inflateInit(&stream) != Z_OK) std::abort();
  stream.next_in = const_cast<Bytef*>(bytes.data());
  stream.avail_in = static_cast<uInt>(bytes.size());
  std::string text(bytes.size() * 1032 + 65536, '\0');  // deflate shrinks no further
  stream.next_out = reinterpret_cast<Bytef*>(text.data());
  stream.avail_out = static_cast<uInt>(text.size());
  const int result = inflate(&stream, Z_SYNC_FLUSH);
  text.resize(stream.total_out);
  inflateEnd(&stream);
  return {result == Z_STREAM_END ? uncompress_ok : uncompress_data_error, text};
}

void check_round_trip(fuzz::Input bytes, std::size_t cut) {
  uLongf length = compressBound(bytes.size());
  std::vector<std::uint8_t> packed(length);
  if (compress2(packed.data(), &length, bytes.data(), bytes.size(), 1) != Z_OK) std::abort();
  packed.resize(length);
  const Inflated whole = inflate_by_library(packed);
  FUZZ_REQUIRE(whole.result == uncompress_ok && whole.text == fuzz::text_of(bytes));
  packed.resize(cut % packed.size());
  const Inflated part = inflate_by_library(packed);
  FUZZ_REQUIRE(part.result == uncompress_data_error);
  FUZZ_REQUIRE(fuzz::text_of(bytes).starts_with(part.text));
}

}  // namespace

FUZZ_TARGET(inflate) {
  fuzz::Tail tail(input);
  const bool roundTrip = tail.byte() % 8 == 0;
  const std::size_t cut = tail.word();
  if (roundTrip) return check_round_trip(tail.rest(), cut);
  const Inflated ours = inflate_by_library(tail.rest());
  const Inflated theirs = inflate_at_once(tail.rest());
  FUZZ_REQUIRE(ours.result == theirs.result);
  // Of a damaged stream, the piece inflated when the damage was met is left away.
  const bool whole = ours.result == uncompress_ok;
  FUZZ_REQUIRE(whole ? ours.text == theirs.text : theirs.text.starts_with(ours.text));
}
