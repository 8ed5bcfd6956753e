// What the stored words of a sample stand for, one word or those of both eyes side by side.
#ifndef GZDAPI_SAMPLE_VALUES_H
#define GZDAPI_SAMPLE_VALUES_H

#include "record/stream_state.h"

namespace gzd {

constexpr INT32 never_stored = 0x10000;  // no word has this value

using Longs2 = INT64 __attribute__((vector_size(16)));
using Shorts8 = INT16 __attribute__((vector_size(16)));
using UShorts8 = UINT16 __attribute__((vector_size(16)));
using Ints4 = INT32 __attribute__((vector_size(16)));
using Floats4 = float __attribute__((vector_size(16)));

struct Plain {
  float operator()(INT16 stored) const { return static_cast<float>(stored); }
  Floats4 operator()(Ints4 stored) const { return __builtin_convertvector(stored, Floats4); }
};

// A word divided by a divisor in single precision, or MISSING_DATA.
struct Scaled {
  float divisor = 1.0f;

  float operator()(INT16 stored) const {
    return stored == stored_missing ? MISSING_DATA : Plain()(stored) / divisor;
  }
  Floats4 operator()(Ints4 stored) const;
};

// Four words, each with its own divisor and its own word for missing.
struct FourScaled {
  Floats4 divisors;
  Ints4 missing = {stored_missing, stored_missing, stored_missing, stored_missing};

  Floats4 operator()(Ints4 stored) const {
    const Floats4 none = {MISSING_DATA, MISSING_DATA, MISSING_DATA, MISSING_DATA};
    return stored == missing ? none : Plain()(stored) / divisors;
  }
};

inline Floats4 Scaled::operator()(Ints4 stored) const {
  return FourScaled{{divisor, divisor, divisor, divisor}}(stored);
}

inline Scaled scaled_by(float prescale) {
  return {prescale >= smallest_prescale ? prescale : 1.0f};
}

}  // namespace gzd

#endif
