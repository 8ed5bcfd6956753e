// A fixation is open while the model fixates, a saccade at all other times, and inside a saccade a
// blink while the pupil is lost. An event starts with the first sample of its kind and ends with
// the last one, which is known one sample later.
#include "eye_parser.h"

#include <algorithm>
#include <cmath>

#include "tracker_camera.h"

namespace gzdsynth {

namespace {

int mean_word(std::int64_t sum, std::int64_t count) {
  return static_cast<int>(std::lround(static_cast<double>(sum) / static_cast<double>(count)));
}

// The ten head values of a pose that events carry, in the order of their binary payload.
std::array<double, 10> head_values(const HeadPose& pose, std::size_t side) {
  return {pose.headInSpaceX[2], pose.headInSpaceY[2], pose.eyeInHeadX[side], pose.eyeInHeadY[side],
          pose.rotation[0],     pose.rotation[1],     pose.rotation[2],      pose.position[0],
          pose.position[1],     pose.position[2]};
}

}  // namespace

unsigned event_position_type(const SessionSettings& settings) {
  if (settings.gaze) return GZD_POSITION_GAZE;
  return settings.href ? GZD_POSITION_HREF : GZD_POSITION_PUPIL;
}

EyeParser::EyeParser(int eye, const SessionSettings& settings)
    : eye_(eye), side_(static_cast<std::size_t>(eye)), settings_(settings) {}

EventRecord EyeParser::record(unsigned type) const {
  return EventRecord(type, eye_, event_position_type(settings_));
}

void EyeParser::begin(Running& event, unsigned type, const Observation& now,
                      std::vector<EventRecord>& events) const {
  event = {};
  event.open = true;
  event.first = now;
  EventRecord start = record(type);
  start.start(now.sample.time);
  if (type != GZD_START_BLINK) {
    put_start(start, now.sample);
    start.pupil_start(now.sample.pa[side_]);
    if (settings_.pose) put_head(start, nullptr, now);
  }
  events.push_back(start);
}

void EyeParser::add(Running& event, const Observation& now) const {
  if (!event.open) return;
  const SampleRecord& s = now.sample;
  ++event.count;
  event.gx += s.gx[side_];
  event.gy += s.gy[side_];
  event.hx += s.hx[side_];
  event.hy += s.hy[side_];
  event.px += s.px[side_];
  event.py += s.py[side_];
  event.pupil += s.pa[side_];
  event.speed += now.speed;
  event.peak = std::max(event.peak, now.speed);
  if (!settings_.pose) return;
  const auto head = head_values(now.pose, side_);
  for (std::size_t i = 0; i < head.size(); ++i) event.head[i] += head[i];
}

void EyeParser::put_start(EventRecord& record, const SampleRecord& s) const {
  if (settings_.gaze) record.gaze_start(s.gx[side_], s.gy[side_]);
  if (settings_.href) record.href_start(s.hx[side_], s.hy[side_]);
  if (!settings_.gaze && !settings_.href) record.raw_start(s.px[side_], s.py[side_]);
}

void EyeParser::put_end(EventRecord& record) const {
  const SampleRecord& s = last_.sample;
  if (settings_.gaze) record.gaze_end(s.gx[side_], s.gy[side_]);
  if (settings_.href) record.href_end(s.hx[side_], s.hy[side_]);
  if (!settings_.gaze && !settings_.href) record.raw_end(s.px[side_], s.py[side_]);
}

void EyeParser::put_average(EventRecord& record, const Running& event) const {
  const auto mean = [&event](std::int64_t sum) { return mean_word(sum, event.count); };
  if (settings_.gaze) record.gaze_average(mean(event.gx), mean(event.gy));
  if (settings_.href) record.href_average(mean(event.hx), mean(event.hy));
  if (!settings_.gaze && !settings_.href) record.raw_average(mean(event.px), mean(event.py));
  record.pupil_average(mean(event.pupil));
}

void EyeParser::put_velocities(EventRecord& record, const Running& event) const {
  const double mean = event.speed / static_cast<double>(event.count);
  record.velocity_start(stored(event.first.speed, velocity_prescale))
      .velocity_end(stored(last_.speed, velocity_prescale))
      .velocity_average(stored(mean, velocity_prescale))
      .velocity_peak(stored(event.peak, velocity_prescale));
}

void EyeParser::put_resolution(EventRecord& record, const Running& event) const {
  if (!settings_.resolution) return;
  record.resolution_start(event.first.sample.rx, event.first.sample.ry)
      .resolution_end(last_.sample.rx, last_.sample.ry);
}

// The payload of a start event has no end and no average.
void EyeParser::put_head(EventRecord& record, const Running* ended,
                         const Observation& first) const {
  std::array<float, 36> payload;
  payload.fill(MISSING_DATA);
  const auto start = head_values(first.pose, side_);
  const auto end = head_values(last_.pose, side_);
  for (std::size_t i = 0; i < start.size(); ++i) {
    payload[3 * i] = static_cast<float>(start[i]);
    if (ended == nullptr) continue;
    payload[3 * i + 1] = static_cast<float>(end[i]);
    // One lost value in the sum makes it as large as that.
    const bool lost = ended->head[i] >= static_cast<double>(MISSING_DATA);
    const double mean = ended->head[i] / static_cast<double>(ended->count);
    payload[3 * i + 2] = lost ? MISSING_DATA : static_cast<float>(mean);
  }
  for (std::size_t axis = 0; axis < 2; ++axis) {  // end, start, average of the gaze
    float* const gaze = payload.data() + 30 + 3 * axis;
    gaze[1] = first.pose.gaze[2 * side_ + axis];
    if (ended == nullptr) continue;
    gaze[0] = last_.pose.gaze[2 * side_ + axis];
    const std::int64_t sum = axis == 0 ? ended->gx : ended->gy;
    gaze[2] = static_cast<float>(static_cast<double>(sum) / static_cast<double>(ended->count) /
                                 settings_.gaze_prescale());
  }
  record.head_pose(payload);
}

void EyeParser::end_fixation(std::vector<EventRecord>& events) {
  EventRecord end = record(GZD_END_FIXATION);
  end.start(fixation_.first.sample.time).end(last_.sample.time);
  put_average(end, fixation_);
  put_velocities(end, fixation_);
  put_resolution(end, fixation_);
  if (settings_.pose) put_head(end, &fixation_, fixation_.first);
  events.push_back(end);
  fixation_.open = false;
}

void EyeParser::end_saccade(std::vector<EventRecord>& events) {
  EventRecord end = record(GZD_END_SACCADE);
  end.start(saccade_.first.sample.time).end(last_.sample.time);
  put_start(end, saccade_.first.sample);
  put_end(end);
  put_velocities(end, saccade_);
  put_resolution(end, saccade_);
  if (settings_.pose) put_head(end, &saccade_, saccade_.first);
  events.push_back(end);
  saccade_.open = false;
}

void EyeParser::end_blink(std::vector<EventRecord>& events) {
  EventRecord end = record(GZD_END_BLINK);
  end.start(blink_.first.sample.time).end(last_.sample.time);
  events.push_back(end);
  blink_.open = false;
}

void EyeParser::close(std::vector<EventRecord>& events, bool fixation, bool blink, bool saccade) {
  if (fixation && fixation_.open) end_fixation(events);
  if (blink && blink_.open) end_blink(events);
  if (saccade && saccade_.open) end_saccade(events);
}

void EyeParser::see(const Observation& now, std::vector<EventRecord>& events) {
  const bool fixating = now.phase == Phase::Fixation;
  const bool lost = now.phase == Phase::Lost;
  close(events, !fixating, !lost, fixating);
  if (fixating && !fixation_.open) begin(fixation_, GZD_START_FIXATION, now, events);
  if (!fixating && !saccade_.open) begin(saccade_, GZD_START_SACCADE, now, events);
  if (lost && !blink_.open) begin(blink_, GZD_START_BLINK, now, events);
  add(fixation_, now);
  add(saccade_, now);
  add(blink_, now);
  last_ = now;
}

void EyeParser::finish(std::vector<EventRecord>& events) {
  close(events, true, true, true);
}

}  // namespace gzdsynth
