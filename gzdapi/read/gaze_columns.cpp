// Records of the usual values are decoded where they lie, four of them side by side: the columns
// take four values at once.
#include "read/gaze_columns.h"

#include <cstring>

#include "record/Sample.h"

namespace gzd {

namespace {

// The time of a sample (ms) with its half-millisecond, which its tag may tell as well.
inline double exact_time(UINT64 stamp, UINT16 tag) {
  static_assert(SMP_HALF_MS == 2);
  const UINT64 halves = UINT64{time_of_stamp(stamp)} * 2 | (stamp & 1) | (tag >> 1 & 1);
  return static_cast<double>(static_cast<INT64>(halves)) / 2;
}

// The records of entries, as long as they are samples of one layout in memory.
class Records {
 public:
  Records(const ItemList& entries, const RecordPlaces& where, const SampleLayout& layout)
      : items_(entries), places_(where), tag_(layout.tag) {}

  // The body of the entry's record, its time to `time`; null for any other entry.
  const byte* at(UINT32 place, double& time) {
    if (!span_.holds(place)) {
      span_ = items_.spanFrom(place);
      if (!span_.holds(place)) return nullptr;
    }
    const auto [position, stamp] = span_.at(place);
    const byte* const body = places_.recordAt(position);
    if (body == nullptr) return nullptr;
    const UINT16 tag = load_be16(body - sizeof(UINT16));
    time = exact_time(stamp, tag);
    return layout_tag(tag) == tag_ ? body : nullptr;
  }

 private:
  const ItemList& items_;
  ItemList::Span span_;
  const RecordPlaces places_;
  const UINT16 tag_;
};

// ---- four records side by side ------------------------------------------------------------------

using FourBodies = const byte* [4];

template <class Bits>
Shorts8 load_words(const byte* at) {
  Bits bits;
  std::memcpy(&bits, at, sizeof bits);
  return reinterpret_cast<Shorts8>(Longs2{static_cast<INT64>(bits), 0});
}

Shorts8 with_bytes_swapped(Shorts8 words) {
  return words << 8 | reinterpret_cast<Shorts8>(reinterpret_cast<UShorts8>(words) >> 8);
}

// Four words as wider ones: the lower ones or the upper ones.
Ints4 lower(Shorts8 words) {
  return reinterpret_cast<Ints4>(__builtin_shufflevector(words, words, 0, 0, 1, 1, 2, 2, 3, 3)) >>
         16;
}
Ints4 upper(Shorts8 words) {
  return reinterpret_cast<Ints4>(__builtin_shufflevector(words, words, 4, 4, 5, 5, 6, 6, 7, 7)) >>
         16;
}

void store(Floats4 values, float* to) {
  std::memcpy(to, &values, sizeof values);
}

// As many words (of one record each) as `Bits` holds stand together afterwards, by field.
template <class Bits>
struct Fields {
  Shorts8 first;   // of fields 0 and 1
  Shorts8 second;  // of fields 2 and 3

  Fields(const FourBodies& bodies, std::size_t offset) {
    const auto words = [&](int record) { return load_words<Bits>(bodies[record] + offset); };
    const auto pair = [](Shorts8 a, Shorts8 b) {
      return reinterpret_cast<Ints4>(__builtin_shufflevector(a, b, 0, 8, 1, 9, 2, 10, 3, 11));
    };
    const Ints4 a = pair(words(0), words(1)), b = pair(words(2), words(3));
    first =
        with_bytes_swapped(reinterpret_cast<Shorts8>(__builtin_shufflevector(a, b, 0, 4, 1, 5)));
    second =
        with_bytes_swapped(reinterpret_cast<Shorts8>(__builtin_shufflevector(a, b, 2, 6, 3, 7)));
  }
};

class UsualGaze {
 public:
  explicit UsualGaze(const SampleLayout& layout)
      : offset_(layout.gaze), asGaze_(layout.asUsualGaze) {
    const float size = layout.asResolutionAndSizes.divisors[3];
    const INT32 none = layout.asResolutionAndSizes.missing[3];
    asSizes_ = FourScaled{Floats4{size, size, size, size}, Ints4{none, none, none, none}};
  }

  // Four rows from `row` on.
  void decode(const FourBodies& bodies, std::size_t row, const GZD_GAZE_COLUMNS& to) const {
    constexpr std::size_t words_before_sizes = 6;
    const Fields<UINT64> gaze(bodies, offset_);
    const Fields<UINT32> sizes(bodies, offset_ + words_before_sizes * sizeof(INT16));
    store(asGaze_(lower(gaze.first)), to.gx[0] + row);
    store(asGaze_(upper(gaze.first)), to.gy[0] + row);
    store(asGaze_(lower(gaze.second)), to.gx[1] + row);
    store(asGaze_(upper(gaze.second)), to.gy[1] + row);
    store(asSizes_(lower(sizes.first)), to.pa[0] + row);
    store(asSizes_(upper(sizes.first)), to.pa[1] + row);
  }
  void decodeOne(const byte* body, std::size_t row, const GZD_GAZE_COLUMNS& to) const {
    float values[6][4];
    decode({body, body, body, body}, 0,
           {nullptr, {values[0], values[1]}, {values[2], values[3]}, {values[4], values[5]}});
    for (int eye = 0; eye < 2; ++eye) {
      to.gx[eye][row] = values[eye][0];
      to.gy[eye][row] = values[2 + eye][0];
      to.pa[eye][row] = values[4 + eye][0];
    }
  }

 private:
  std::size_t offset_;
  FourScaled asGaze_, asSizes_;
};

}  // namespace

void copy_gaze(const FSAMPLE& sample, UINT32 row, const GZD_GAZE_COLUMNS& to) {
  to.time[row] = exact_time(stamp_of_time(sample.time), sample.flags);
  for (int eye = 0; eye < 2; ++eye) {
    to.gx[eye][row] = sample.gx[eye];
    to.gy[eye][row] = sample.gy[eye];
    to.pa[eye][row] = sample.pa[eye];
  }
}

UINT32 fetch_usual_gaze(const ItemList& items, UINT32 first, UINT32 end, const RecordPlaces& places,
                        const SampleLayout& layout, const GZD_GAZE_COLUMNS& to) {
  Records records(items, places, layout);
  const UsualGaze gaze(layout);
  const GZD_GAZE_COLUMNS columns = to;
  const UINT32 count = end - first;
  UINT32 row = 0;
  for (; row + 4 <= count; row += 4) {
    FourBodies bodies;
    bool areAll = true;
    for (UINT32 i = 0; i < 4 && areAll; ++i) {
      bodies[i] = records.at(first + row + i, columns.time[row + i]);
      areAll = bodies[i] != nullptr;
    }
    if (!areAll) break;
    gaze.decode(bodies, row, columns);
  }
  for (; row < count; ++row) {
    const byte* const body = records.at(first + row, columns.time[row]);
    if (body == nullptr) break;
    gaze.decodeOne(body, row, columns);
  }
  return row;
}

}  // namespace gzd
