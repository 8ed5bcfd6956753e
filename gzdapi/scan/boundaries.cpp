// A block is opened by a samples-start and an events-start record and closed by two end records, a
// few milliseconds apart and in either order. Readers see one start and one end. Starts and ends
// are paired separately: of each kind the last samples and the last events boundary are kept, and a
// new one that lies close to the other kind's last is merged into that one.
#include "scan/boundaries.h"

#include <algorithm>

namespace gzd {

namespace {

// How an events-start record names the eyes in its input word, the other way round than samples do.
constexpr unsigned events_of_left_eye = 0x4000;
constexpr unsigned events_of_right_eye = 0x8000;

constexpr float pupil_is_area = 1.0f;

byte eye_of_samples(UINT16 flags) {
  return static_cast<byte>(((flags & SMP_LEFT) != 0 ? GZD_BLOCK_LEFT : 0) +
                           ((flags & SMP_RIGHT) != 0 ? GZD_BLOCK_RIGHT : 0));
}

byte eye_of_events(UINT16 input) {
  return static_cast<byte>(((input & events_of_left_eye) != 0 ? GZD_BLOCK_LEFT : 0) +
                           ((input & events_of_right_eye) != 0 ? GZD_BLOCK_RIGHT : 0));
}

bool is_start(int type) {
  return type == GZD_START_SAMPLES || type == GZD_START_EVENTS;
}
bool is_of_samples(int type) {
  return type == GZD_START_SAMPLES || type == GZD_END_SAMPLES;
}

template <class T>
void take_if_zero(T& own, T other) {
  if (own == T{}) own = other;
}

void merge(Recording& kept, const Recording& other) {
  kept.updateTime(kept.isStart() ? std::min(kept.timestamp, other.timestamp)
                                 : std::max(kept.timestamp, other.timestamp));
  kept.record_type = GZD_RECORD_BOTH;
  take_if_zero(kept.pos_type, other.pos_type);
  take_if_zero(kept.sflags, other.sflags);
  take_if_zero(kept.eflags, other.eflags);
  take_if_zero(kept.gaze_prescaler, other.gaze_prescaler);
  take_if_zero(kept.eye, other.eye);
}

}  // namespace

std::unique_ptr<Recording> make_boundary(const FEVENT& event, const StreamState& state,
                                         const Index& index) {
  auto boundary = std::make_unique<Recording>();
  const bool start = is_start(event.type);
  boundary->state = start ? GZD_BLOCK_START : GZD_BLOCK_END;
  boundary->record_type = is_of_samples(event.type) ? GZD_RECORD_SAMPLES : GZD_RECORD_EVENTS;
  boundary->updateTime(stamp_of_time(start ? event.sttime : event.entime));
  boundary->sample_rate = state.sam_per_sec;
  boundary->pupil_type = event.eupd_y == pupil_is_area ? 0 : 1;
  boundary->recording_mode = state.crmode != 0 ? 1 : 0;
  boundary->filter_type = static_cast<byte>(state.ffilter);
  boundary->pos_type = static_cast<byte>(event.parsedby);
  if (event.type == GZD_START_SAMPLES) {
    boundary->sflags = event.flags;
    boundary->gaze_prescaler = state.parameters.gaze_prescale;
    boundary->eye = eye_of_samples(event.flags);
  } else if (event.type == GZD_START_EVENTS) {
    boundary->eflags = event.flags;
    boundary->eye = eye_of_events(event.input);
  } else if (const Recording* newest = index.newestRecording()) {
    boundary->eye = newest->eye;
  }
  return boundary;
}

void BoundaryPairing::add(Index& index, std::unique_ptr<Recording> boundary, UINT64 tolerance) {
  Pending& pending = boundary->isStart() ? starts_ : ends_;
  const bool ofSamples = boundary->record_type == GZD_RECORD_SAMPLES;
  Recording* const partner = ofSamples ? pending.events : pending.samples;
  if (partner != nullptr && stamp_distance(partner->timestamp, boundary->timestamp) < tolerance) {
    merge(*partner, *boundary);
    pending = Pending();
    return;
  }
  (ofSamples ? pending.samples : pending.events) = boundary.get();
  index.gzdItemList.push_back(GZDItem(boundary.get()));
  index.allRecordings.push_back(std::move(boundary));
}

}  // namespace gzd
