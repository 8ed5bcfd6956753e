// The fields of events: what each is, and where its values go.
#include "record/event_fields.h"

namespace gzd {

namespace {

using E = FEVENT;

constexpr FieldFacts row(EventField code, byte length, int readBits) {
  return {code, static_cast<UINT16>(readBits), length};
}
constexpr FieldFacts one(EventField code, ValueScale scale, FieldFacts::Value value, int readBits) {
  return {code, static_cast<UINT16>(readBits), 2, 1, scale, {value, nullptr}};
}
constexpr FieldFacts pair(EventField code, ValueScale scale, FieldFacts::Value x,
                          FieldFacts::Value y, int readBits,
                          std::array<FieldFacts::Value, 2> also = {}) {
  return {code, static_cast<UINT16>(readBits), 4, 2, scale, {x, y}, also};
}

// In raw positions of start and end y replaces x in hstx and henx, and hsty and heny are not
// touched; that of the mean goes to hstx, a member of the start. Where blocks start, the peak
// velocity sets no bits.
constexpr FieldFacts field_table[] = {
    row(FIELD_START_TIME, 4, EVT_START_TIME),
    pair(FIELD_START_RAW, ValueScale::Raw, &E::gstx, &E::gsty, EVT_PUPIL_POS | EVT_START_POSITION,
         {&E::hstx, &E::hstx}),
    pair(FIELD_START_HREF, ValueScale::Plain, &E::hstx, &E::hsty, EVT_HREF | EVT_START_POSITION),
    pair(FIELD_START_GAZE, ValueScale::Gaze, &E::gstx, &E::gsty, EVT_GAZE | EVT_START_POSITION),
    pair(FIELD_START_RESOLUTION, ValueScale::Gaze, &E::supd_x, &E::supd_y,
         EVT_RESOLUTION | EVT_START_TIME),
    one(FIELD_START_PUPIL, ValueScale::Raw, &E::sta, EVT_PUPIL_SIZE | EVT_START_TIME),
    one(FIELD_START_VELOCITY, ValueScale::Velocity, &E::svel, EVT_VELOCITY | EVT_START_TIME),
    row(FIELD_END_TIME, 4, EVT_END_TIME),
    pair(FIELD_END_RAW, ValueScale::Raw, &E::genx, &E::geny, EVT_PUPIL_POS | EVT_END_POSITION,
         {&E::henx, &E::henx}),
    pair(FIELD_END_HREF, ValueScale::Plain, &E::henx, &E::heny, EVT_HREF | EVT_END_POSITION),
    pair(FIELD_END_GAZE, ValueScale::Gaze, &E::genx, &E::geny, EVT_GAZE | EVT_END_POSITION),
    pair(FIELD_END_RESOLUTION, ValueScale::Gaze, &E::eupd_x, &E::eupd_y,
         EVT_RESOLUTION | EVT_END_VALUES),
    one(FIELD_END_PUPIL, ValueScale::Raw, &E::ena, EVT_PUPIL_SIZE | EVT_END_VALUES),
    one(FIELD_END_VELOCITY, ValueScale::Velocity, &E::evel, EVT_VELOCITY | EVT_END_VALUES),
    row(FIELD_INPUT, 2, 0),
    row(FIELD_BUTTONS, 2, 0),
    pair(FIELD_AVERAGE_RAW, ValueScale::Raw, &E::gavx, &E::gavy,
         EVT_PUPIL_POS | EVT_AVERAGE_POSITION, {&E::havx, &E::hstx}),
    pair(FIELD_AVERAGE_HREF, ValueScale::Plain, &E::havx, &E::havy,
         EVT_HREF | EVT_AVERAGE_POSITION),
    pair(FIELD_AVERAGE_GAZE, ValueScale::Gaze, &E::gavx, &E::gavy, EVT_GAZE | EVT_AVERAGE_POSITION),
    one(FIELD_AVERAGE_PUPIL, ValueScale::Raw, &E::ava, EVT_PUPIL_SIZE | EVT_AVERAGE_VALUES),
    one(FIELD_AVERAGE_VELOCITY, ValueScale::Velocity, &E::avel, EVT_VELOCITY | EVT_AVERAGE_VALUES),
    one(FIELD_PEAK_VELOCITY, ValueScale::Velocity, &E::pvel, EVT_VELOCITY | EVT_AVERAGE_VALUES),
    row(FIELD_FLAGS, 2, EVT_FLAGS),
};

constexpr std::array<FieldFacts, 256> by_code() {
  std::array<FieldFacts, 256> facts{};
  for (const FieldFacts& field : field_table) facts[field.code] = field;
  return facts;
}

}  // namespace

constexpr std::array<FieldFacts, 256> field_facts = by_code();

}  // namespace gzd
