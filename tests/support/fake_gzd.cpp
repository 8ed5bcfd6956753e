// The calls of gzd.h, answered from `fake`.
#include "support/fake_gzd.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

FakeRecording fake;

namespace {

GZDFILE handle;
std::size_t place = 0;  // one after the element announced
ALLF_DATA current;
std::vector<UINT16> message_room;
void (*log_function)(const char*) = nullptr;

void attach_text(const std::string& text) {
  message_room.assign(text.size() / 2 + 3, 0);
  message_room[0] = static_cast<UINT16>(text.size());
  std::memcpy(&message_room[1], text.data(), text.size());
  current.fe.message = reinterpret_cast<LSTRING*>(message_room.data());
}

}  // namespace

GZDFILE* gzd_open_file_ex(const char* fname, int consistency, int loadevents, int loadsamples,
                          CONFIG* config, int* rv) {
  *rv = fake.exists ? 0 : -1;
  fake.name = fname;
  fake.consistency = consistency;
  fake.events = loadevents;
  fake.samples = loadsamples;
  fake.config = *config;
  place = 0;
  if (!fake.exists) return nullptr;
  ++fake.open_handles;
  return &handle;
}

int gzd_close_file(GZDFILE* /*ef*/) {
  --fake.open_handles;
  return 0;
}

const char* gzd_get_failed_place(GZDFILE* /*ef*/) {
  return nullptr;
}

int gzd_get_finding(GZDFILE* /*ef*/, unsigned int n, GZD_FINDING* finding) {
  if (n >= fake.findings.size()) return -1;
  *finding = fake.findings[n];
  return 0;
}

int gzd_get_system_error(GZDFILE* /*ef*/) {
  return fake.system_error;
}

void gzd_set_log_function(void* lfcn) {
  log_function = reinterpret_cast<void (*)(const char*)>(lfcn);
}

int print_log(const char* fmt, ...) {
  char text[500];
  std::va_list arguments;
  va_start(arguments, fmt);
  std::vsnprintf(text, sizeof text, fmt, arguments);
  va_end(arguments);
  if (log_function != nullptr)
    log_function(text);
  else
    std::printf("%s", text);
  return 0;
}

const char* gzd_get_version(void) {
  return "1.2.3 Fake";
}
int gzd_get_trial_count(GZDFILE* /*ef*/) {
  return 0;
}
int gzd_get_revision(GZDFILE* /*ef*/) {
  return fake.revision;
}
int gzd_get_ovilo_revision(GZDFILE* /*ef*/) {
  return fake.ovilo_revision;
}
void gzd_set_velocity_kinds(GZDFILE* /*ef*/, unsigned int kinds) {
  fake.velocities = kinds;
}

int gzd_get_preamble_text_length(GZDFILE* /*ef*/) {
  return fake.preamble.empty() ? 0 : static_cast<int>(fake.preamble.size()) + 1;
}

int gzd_get_preamble_text(GZDFILE* /*ef*/, char* buffer, int length) {
  std::snprintf(buffer, static_cast<std::size_t>(length), "%s", fake.preamble.c_str());
  return 0;
}

unsigned int gzd_get_element_count(GZDFILE* /*ef*/) {
  return static_cast<unsigned>(fake.elements.size());
}

int gzd_get_next_data(GZDFILE* /*ef*/) {
  return place < fake.elements.size() ? fake.elements[place++].code : GZD_END_OF_DATA;
}

ALLF_DATA* gzd_get_float_data(GZDFILE* /*ef*/) {
  const FakeElement& element = fake.elements[place - 1];
  ++fake.fetched;
  if (element.code == GZD_SAMPLE) fake.velocities_of_samples.push_back(fake.velocities);
  if (!element.record) return nullptr;
  current = *element.record;
  if (element.text) attach_text(*element.text);
  return &current;
}

// Camera data: nothing of it.
void gzd_get_raw_eye(GZDFILE* /*gzd*/, FSAMPLE* /*sam*/, int /*eye*/, GZD_RAW_EYE* raw) {
  *raw = {};
}
void gzd_get_raw_eyes(GZDFILE* /*gzd*/, FSAMPLE* /*sam*/, GZD_RAW_EYE* raw) {
  raw[0] = raw[1] = {};
}
int gzd_compute_physical_setup(float, float, float, float, float, float, float, float, float,
                               float) {
  return 0;
}
void gzd_calculate_ppd(float /*hpixel*/, float /*vpixel*/, FSAMPLE* /*f*/, int /*eye*/, double* rx,
                       double* ry) {
  *rx = *ry = MISSING_DATA;
}
