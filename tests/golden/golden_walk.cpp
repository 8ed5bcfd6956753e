// golden_walk [OPTION VALUE]... RECORDING: prints what a client of the library sees of a recording:
// its facts, every element, trials, bookmarks and look-ups.
//   -open N     `consistency` of the open (2)     -load N    `loadevents` (1)
//   -samples N  `loadsamples` (1)                 -kinds N   velocities (none)
//   -res X      default resolution                -trace F   trace of the opening, as
//   -debug N    `enable_debug` tells (1)
//   -log FILE   the experiment's message log      -raw 1     raw camera data of samples
//   -start S, -stop S  trial identifiers
//   -screen N   pixels per degree, distance N and N + 60
//   -jump N     N rounds of look-ups in any order instead of the elements' lines
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "gzd.h"
#include "support/record_text.h"

namespace {

// What of `line` is not in `last` as well: fields that keep their value are not shown again.
std::string changes(const std::string& line, const std::string& last) {
  std::string changed;
  for (std::size_t from = 0; from < line.size();) {
    const std::size_t end = std::min(line.find("; ", from), line.size());
    const std::string field = line.substr(from, end - from) + ';';
    if ((last + ';').find(field) == std::string::npos) changed += ' ' + field;
    from = end + 2;
  }
  return changed;
}

void print_log_line(const char* message) {
  std::printf("log: %s%s", message, std::strchr(message, '\n') == nullptr ? "\n" : "");
}

// By GZD_ORIGIN_: where an element comes from that is no record.
constexpr const char* origins[] = {" of nothing", "", " of a gap", " of a repair", " of the log"};

// ---- a recording --------------------------------------------------------------------------------

using Options = std::map<std::string, std::string>;

class Walk {
 public:
  Walk(GZDFILE* opened, Options& chosen) : file_(opened), options_(chosen) {}

  void print() {
    print_facts();
    print_elements();
    print_findings();
    if (number("-jump") > 0) jump_about();
    print_trials();
  }

 private:
  int number(const char* name) { return std::atoi(options_[name].c_str()); }

  void print_facts() {
    std::string text(static_cast<std::size_t>(gzd_get_preamble_text_length(file_)), '\0');
    gzd_get_preamble_text(file_, text.data(), static_cast<int>(text.size()));
    std::printf("%selements %u revision %d generation %d filter %d input %d\n", text.c_str(),
                gzd_get_element_count(file_), gzd_get_revision(file_),
                gzd_get_ovilo_revision(file_), get_filter_level_for_sample(file_),
                gzd_get_input_data_availibity(file_));
  }

  std::string rates() {
    std::string line;
    record_text::add(line, "%g/s %d %g ms", double{gzd_get_sample_per_second(file_)},
                     gzd_get_sample_interval(file_), double{gzd_get_sample_interval_ex(file_)});
    return line;
  }

  // What the three functions that look at the current position give, but for what the walk gave.
  std::string other_data(const std::string& given) {
    std::string other;
    if (const FSAMPLE* sample = gzd_get_sample_data(file_)) other = text_of(*sample);
    if (const FEVENT* event = gzd_get_event_data(file_)) other = text_of(*event);
    if (const RECORDINGS* block = gzd_get_recording_data(file_)) other = text_of(*block);
    return other == given ? "" : " at hand: " + other;
  }

  void print_elements() {
    std::string rate;
    BOOKMARK mark{};
    while (const int code = gzd_get_next_data(file_)) {
      if (const std::string now = rates(); now != rate)
        std::printf("rate %s\n", (rate = now).c_str());
      ALLF_DATA* const record = gzd_get_float_data(file_);
      elements_.push_back(record != nullptr ? text_of(record) : "none");
      times_.push_back(std::strtoul(elements_.back().c_str(), nullptr, 10));
      if (number("-jump") == 0) {
        print_element(code, record);
      }
      if (gzd_set_bookmark(file_, &mark) == 0) marks_.push_back(mark);
    }
  }

  void print_element(int code, ALLF_DATA* record) {
    FSAMPLE* const sample = record != nullptr ? gzd_get_sample(record) : nullptr;
    std::string& last = sample != nullptr ? lastSample_ : noEvent_;
    const std::string& line = elements_.back();
    const int origin = gzd_get_element_origin(file_);
    std::printf("%u %d%s:%s%s\n", gzd_get_element_index(file_), code,
                origin == GZD_ORIGIN_RECORD ? "" : origins[origin], changes(line, last).c_str(),
                record != nullptr ? other_data(line).c_str() : "");
    if (sample == nullptr) return;
    lastSample_ = line;
    print_derived(*sample);
  }

  void print_findings() {
    GZD_FINDING finding{};
    for (unsigned n = 0; gzd_get_finding(file_, n, &finding) == 0; ++n) {
      std::printf("finding %d eye %d detail %d x%u count %lld at %lld from %g to %g\n",
                  finding.kind, finding.eye, finding.detail, finding.merged,
                  static_cast<long long>(finding.count), static_cast<long long>(finding.place),
                  finding.start, finding.end);
    }
  }

  void print_derived(FSAMPLE sample) {
    std::string line;
    for (const int eye : {GZD_LEFT_EYE, GZD_RIGHT_EYE}) {
      if (number("-screen") > 0) {
        double rx = 0, ry = 0;
        gzd_calculate_ppd(1024, 768, &sample, eye, &rx, &ry);
        record_text::add(line, " ppd %g %g", rx, ry);
      }
      if (number("-raw") > 0) line += camera_text(file_, sample, eye);
    }
    if (!line.empty()) std::printf("   %s\n", line.c_str());
  }

  // Elements asked for by bookmark and samples by time, in an order of their own: each look-up that
  // does not give what the walk gave is told.
  void jump_about() {
    std::size_t place = 0, found = 0;
    const auto rounds = static_cast<std::size_t>(number("-jump"));
    for (std::size_t i = 0; i < rounds && !marks_.empty(); ++i) {
      place = (place * 17 + 7919 * i + 11) % marks_.size();
      const std::string& expected = elements_[marks_[place].id - 1];
      const int went = gzd_goto_bookmark(file_, &marks_[place]);
      ALLF_DATA* const record = gzd_get_float_data(file_);
      const std::string given = record != nullptr ? text_of(record) : "none";
      if (went != 0 || given != expected) std::printf("%zu: %d %s\n", place, went, given.c_str());
      const unsigned index = gzd_get_element_index(file_);
      const auto time = static_cast<unsigned>(times_[place]);
      ALLF_DATA* const sample = gzd_get_sample_close_to_time(file_, time);
      if (sample != nullptr) ++found;
      if (sample != nullptr && sample->fs.time != time) std::printf("%u not found\n", time);
      if (gzd_get_element_index(file_) != index) std::printf("moved from %u\n", index);
    }
    std::printf("%zu of %zu times have a sample\n", found, rounds);
    print_bookmarks();
  }

  void print_bookmarks() {
    const int ends[] = {
        gzd_goto_next_bookmark(file_),           gzd_goto_previous_bookmark(file_),
        gzd_free_bookmark(file_, marks_.data()), gzd_goto_bookmark(file_, marks_.data()),
        gzd_goto_next_bookmark(file_),           gzd_free_bookmark(file_, nullptr)};
    std::printf("bookmarks");
    for (const int end : ends) std::printf(" %d", end);
    std::printf(", now at %u\n", gzd_get_element_index(file_));
  }

  void print_trials() {
    const auto identifier = [this](const char* name) {
      return options_.contains(name) ? options_[name].data() : nullptr;
    };
    if (options_.contains("-start") || options_.contains("-stop"))
      gzd_set_trial_identifier(file_, identifier("-start"), identifier("-stop"));
    const int count = gzd_get_trial_count(file_);
    std::printf("trials %d\n", count);
    for (int i = 0; i < count && gzd_jump_to_trial(file_, i) == 0; ++i) print_trial();
    const int ends[] = {gzd_goto_next_trial(file_),
                        gzd_jump_to_trial(file_, count),
                        gzd_jump_to_trial(file_, -1),
                        gzd_goto_previous_trial(file_),
                        gzd_goto_trial_with_start_time(file_, 1),
                        gzd_goto_trial_with_end_time(file_, 1)};
    std::printf("beyond");
    for (const int end : ends) std::printf(" %d", end);
    std::printf(", now at %u\n", gzd_get_element_index(file_));
  }

  void print_trial() {
    TRIAL trial{};
    const int told = gzd_get_trial_header(file_, &trial);
    const unsigned from = gzd_get_element_index(file_);
    const int first = gzd_get_next_data(file_);
    std::printf("%d: %u..%u for %u, element %u is %d %s\n", told, trial.starttime, trial.endtime,
                trial.duration, from, first, rates().c_str());
    if (trial.rec != nullptr) std::printf("   %s\n", text_of(*trial.rec).c_str());
    const int by[] = {gzd_goto_trial_with_end_time(file_, trial.endtime),
                      static_cast<int>(gzd_get_element_index(file_)),
                      gzd_goto_trial_with_start_time(file_, trial.starttime),
                      static_cast<int>(gzd_get_element_index(file_))};
    std::printf("   by end %d at %d, by start %d at %d\n", by[0], by[1], by[2], by[3]);
  }

  GZDFILE* file_;
  Options& options_;
  std::string lastSample_, noEvent_ = text_of(FEVENT{});
  std::vector<std::string> elements_;
  std::vector<unsigned long> times_;
  std::vector<BOOKMARK> marks_;
};

int number_or(Options& options, const char* name, int otherwise) {
  return options.contains(name) ? std::atoi(options[name].c_str()) : otherwise;
}

int walk(Options& options, const char* path) {
  const float resolution =
      options.contains("-res") ? std::strtof(options["-res"].c_str(), nullptr) : MISSING_DATA;
  std::string trace = options["-trace"];
  CONFIG config{resolution, resolution, number_or(options, "-debug", trace.empty() ? 0 : 1),
                trace.data()};
  if (options.contains("-log")) gzd_set_extra_message_file(options["-log"].c_str());
  int rv = 1;
  GZDFILE* const file = gzd_open_file_ex(path, number_or(options, "-open", GZD_CONSISTENCY_REPAIR),
                                         number_or(options, "-load", 1),
                                         number_or(options, "-samples", 1), &config, &rv);
  if (file == nullptr) {
    std::printf("not opened: %d, %s\n", rv, errno != 0 ? std::strerror(errno) : "no error");
    return 1;
  }
  gzd_set_velocity_kinds(file, static_cast<unsigned>(number_or(options, "-kinds", 0)));
  if (const auto distance = static_cast<float>(number_or(options, "-screen", 0)); distance > 0)
    gzd_compute_physical_setup(distance, distance + 60, -200, -150, 200, 150, 0, 0, 1023, 767);
  Walk(file, options).print();
  return gzd_close_file(file);
}

}  // namespace

int main(int argc, char** argv) {
  gzd_set_log_function(reinterpret_cast<void*>(&print_log_line));
  if (gzd_get_failed_place(nullptr) != nullptr) std::puts("a place failed before any open");
  Options options;
  for (int i = 1; i + 2 < argc; i += 2) options[argv[i]] = argv[i + 1];
  return argc % 2 == 0 ? walk(options, argv[argc - 1]) : 2;
}
