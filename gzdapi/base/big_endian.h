// Big-endian values at any address.
#ifndef GZDAPI_BIG_ENDIAN_H
#define GZDAPI_BIG_ENDIAN_H

#include <bit>
#include <cstring>

#include "gzd_data.h"

namespace gzd {

// The analyzer takes streams without bytes for streams with null bytes.
// NOLINTBEGIN(clang-analyzer-core.NonNullParamChecker)
inline UINT16 load_be16(const byte* p) {
  UINT16 value;
  std::memcpy(&value, p, sizeof value);
  return __builtin_bswap16(value);
}

inline INT16 load_be16s(const byte* p) {
  return static_cast<INT16>(load_be16(p));
}

inline UINT32 load_be32(const byte* p) {
  UINT32 value;
  std::memcpy(&value, p, sizeof value);
  return __builtin_bswap32(value);
}
// NOLINTEND(clang-analyzer-core.NonNullParamChecker)

inline UINT64 load_be64(const byte* p) {
  UINT64 value;
  std::memcpy(&value, p, sizeof value);
  return __builtin_bswap64(value);
}

// The bit pattern as a float, every value as it stands.
inline float load_be_float(const byte* p) {
  return std::bit_cast<float>(load_be32(p));
}

// A file may mark a missing float with either special value; readers see MISSING_DATA only.
inline float missing_normalised(float value) {
  // By its bits, as no others have this value.
  const auto bits = std::bit_cast<UINT32>(value);
  return std::bit_cast<float>(
      bits == std::bit_cast<UINT32>(NOT_RECORDED) ? std::bit_cast<UINT32>(MISSING_DATA) : bits);
}

}  // namespace gzd

#endif
