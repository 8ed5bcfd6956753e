// Records as text, every field of them, and what is derived of a sample's camera data.
#ifndef TESTS_SUPPORT_RECORD_TEXT_H
#define TESTS_SUPPORT_RECORD_TEXT_H

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "gzd.h"

namespace record_text {

struct Field {
  const char* name;
  std::size_t offset, count;
};

#define FIELD(type, name, last)                                                        \
  Field {                                                                              \
#name, offsetof(type, name), (offsetof(type, last) - offsetof(type, name)) / 4 + 1 \
  }
#define eye_count(name)               \
  Field {                             \
#name, offsetof(FSAMPLE, name), 2 \
  }
#define TRIPLE(name)                  \
  Field {                             \
#name, offsetof(FSAMPLE, name), 3 \
  }
#define EVENT_PAIR(name, last) FIELD(FEVENT, name, last)

constexpr Field sample_fields[] = {eye_count(px),
                                   eye_count(py),
                                   eye_count(hx),
                                   eye_count(hy),
                                   eye_count(pa),
                                   eye_count(gx),
                                   eye_count(gy),
                                   FIELD(FSAMPLE, rx, ry),
                                   eye_count(gxvel),
                                   eye_count(gyvel),
                                   eye_count(hxvel),
                                   eye_count(hyvel),
                                   eye_count(rxvel),
                                   eye_count(ryvel),
                                   eye_count(fgxvel),
                                   eye_count(fgyvel),
                                   eye_count(fhxvel),
                                   eye_count(fhyvel),
                                   eye_count(frxvel),
                                   eye_count(fryvel),
                                   TRIPLE(eyeInHeadX),
                                   TRIPLE(eyeInHeadY),
                                   TRIPLE(headRotation),
                                   TRIPLE(headPosition),
                                   FIELD(FSAMPLE, headInSpaceX, headInSpaceY),
                                   eye_count(unused_headInSpaceX),
                                   eye_count(unused_headInSpaceY),
                                   FIELD(FSAMPLE, hrgx, ergy),
                                   eye_count(ex),
                                   eye_count(ey),
                                   eye_count(emajor),
                                   eye_count(eminor),
                                   eye_count(eangle)};
constexpr Field event_fields[] = {
    EVENT_PAIR(hstx, hsty),     EVENT_PAIR(gstx, gsty),
    EVENT_PAIR(sta, sta),       EVENT_PAIR(henx, heny),
    EVENT_PAIR(genx, geny),     EVENT_PAIR(ena, ena),
    EVENT_PAIR(havx, havy),     EVENT_PAIR(gavx, gavy),
    EVENT_PAIR(ava, ava),       EVENT_PAIR(avel, evel),
    EVENT_PAIR(supd_x, eupd_y), EVENT_PAIR(headInSpaceX_start, headPositionZ_avg)};

#undef FIELD
#undef eye_count
#undef TRIPLE
#undef EVENT_PAIR

template <class... Values>
void add(std::string& line, const char* format, Values... values) {
  char text[400];
  std::snprintf(text, sizeof text, format, values...);
  line += text;
}

inline std::string text_of(float value, float absent) {
  std::string text;
  if (value == absent || value == MISSING_DATA) return value == absent ? " ." : " x";
  add(text, " %.9g", double{value});
  return text;
}

inline void add_fields(std::string& line, const void* record, std::span<const Field> fields,
                       float absent) {
  for (const Field& field : fields) {
    std::vector<float> values(field.count);
    std::memcpy(values.data(), static_cast<const char*>(record) + field.offset, 4 * field.count);
    add(line, "; %s", field.name);
    for (const float value : values) line += text_of(value, absent);
  }
}

}  // namespace record_text

inline std::string text_of(const FSAMPLE& s) {
  std::string line;
  record_text::add(line, "%u sample; flags %04x; input %u; buttons %u; errors %u; markers %08x",
                   s.time, s.flags, s.input, s.buttons, s.errors, s.headMarkerFlags);
  record_text::add(line, "; htype %d", s.htype);
  for (const INT16 word : s.hdata) record_text::add(line, " %d", word);
  record_text::add_fields(line, &s, record_text::sample_fields, NOT_RECORDED);
  return line;
}

inline std::string text_of(const FEVENT& e) {
  std::string line;
  record_text::add(
      line, "%u..%u event %d eye %d; read %04x; by %u; flags %04x; input %u; buttons %u", e.sttime,
      e.entime, e.type, e.eye, e.read, e.parsedby, e.flags, e.input, e.buttons);
  record_text::add_fields(line, &e, record_text::event_fields, 0.0f);
  if (e.message != nullptr) line += "; len " + std::to_string(e.message->len) + ' ' + &e.message->c;
  return line;
}

inline std::string text_of(const RECORDINGS& r) {
  std::string line;
  record_text::add(line, "%u block state %d rate %g flags %04x %04x type %d pupil %d mode %d",
                   r.time, r.state, double{r.sample_rate}, r.sflags, r.eflags, r.record_type,
                   r.pupil_type, r.recording_mode);
  record_text::add(line, " filter %d pos %d eye %d", r.filter_type, r.pos_type, r.eye);
  return line;
}

inline std::string text_of(ALLF_DATA* record) {
  if (const FSAMPLE* sample = gzd_get_sample(record)) return text_of(*sample);
  if (const FEVENT* event = gzd_get_event(record)) return text_of(*event);
  if (const RECORDINGS* block = gzd_get_recording(record)) return text_of(*block);
  return "no record";
}

// What the functions for single values give, which gzd_get_raw_eye gives at once, and of both
// eyes gzd_get_raw_eyes.
inline std::string camera_text(GZDFILE* file, FSAMPLE& sample, int eye) {
  GZD_RAW_EYE raw, at_once;
  gzd_get_uncorrected_raw_pupil(file, &sample, eye, raw.pupil);
  gzd_get_uncorrected_raw_cr(file, &sample, eye, raw.cr);
  gzd_get_uncorrected_raw_cr2(file, &sample, eye, raw.cr2);
  gzd_get_pupil_cr(file, &sample, eye, raw.pupil_cr);
  raw.pupil_area = gzd_get_uncorrected_pupil_area(file, &sample, eye);
  raw.cr_area = gzd_get_uncorrected_cr_area(file, &sample, eye);
  raw.cr2_area = gzd_get_uncorrected_cr2_area(file, &sample, eye);
  gzd_get_pupil_dimension(file, &sample, eye, raw.pupil_dimension);
  gzd_get_cr_dimension(file, &sample, raw.cr_dimension);
  gzd_get_window_position(file, &sample, raw.window_position);
  gzd_get_raw_eye(file, &sample, eye, &at_once);
  if (std::memcmp(&raw, &at_once, sizeof raw) != 0) return " and another raw eye at once";
  GZD_RAW_EYE both[2];
  gzd_get_raw_eyes(file, &sample, both);
  if (std::memcmp(&raw, &both[eye], sizeof raw) != 0) return " and another one with both";
  std::string line;
  for (const auto& pair : {raw.pupil, raw.cr, raw.cr2, raw.pupil_cr})
    line += " (" + record_text::text_of(pair[0], NOT_RECORDED) +
            record_text::text_of(pair[1], NOT_RECORDED) + " )";
  record_text::add(line, " %u %u %u %ux%u %ux%u at %u,%u;", raw.pupil_area, raw.cr_area,
                   raw.cr2_area, raw.pupil_dimension[0], raw.pupil_dimension[1],
                   raw.cr_dimension[0], raw.cr_dimension[1], raw.window_position[0],
                   raw.window_position[1]);
  return line;
}

#endif
