// Steps through the trials of a recording and finds samples by their time: those a quarter, a half
// and three quarters into each trial.
//
//     find_samples trial.gzd
#include <cstdio>

#include "gzd.hpp"

namespace {

void print_eye(const char* name, const FSAMPLE& sample, int eye) {
  if (sample.gx[eye] == MISSING_DATA || sample.gx[eye] == NOT_RECORDED)
    std::printf("  %s -", name);
  else
    std::printf("  %s %.1f, %.1f", name, static_cast<double>(sample.gx[eye]),
                static_cast<double>(sample.gy[eye]));
}

void print_sample_at(GZDFILE* file, unsigned int time) {
  const ALLF_DATA* const record = gzd_get_sample_close_to_time(file, time);
  if (record == nullptr) {
    std::printf("  %u no sample\n", time);
    return;
  }
  const FSAMPLE& sample = record->fs;
  std::printf("  %u", sample.time);
  if ((sample.flags & SMP_LEFT) != 0) print_eye("left", sample, GZD_LEFT_EYE);
  if ((sample.flags & SMP_RIGHT) != 0) print_eye("right", sample, GZD_RIGHT_EYE);
  std::printf("\n");
}

// The sampling time nearest before `part` quarters of the trial.
unsigned int time_in(GZDFILE* file, const TRIAL& trial, unsigned int part) {
  const auto interval = static_cast<unsigned int>(gzd_get_sample_interval(file));
  const unsigned int offset = (trial.endtime - trial.starttime) / 4 * part;
  return trial.starttime + (interval > 0 ? offset - offset % interval : offset);
}

void print_trial(GZDFILE* file, int number) {
  TRIAL trial;
  if (gzd_jump_to_trial(file, number) != 0 || gzd_get_trial_header(file, &trial) != 0) return;
  std::printf("trial %d: %u to %u ms\n", number + 1, trial.starttime, trial.endtime);
  gzd_get_next_data(file);  // into the block, which knows the rate
  for (unsigned int part = 1; part <= 3; ++part) print_sample_at(file, time_in(file, trial, part));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: find_samples FILE.gzd\n");
    return 2;
  }
  const gzd::File file = gzd::File::open(argv[1]);
  if (!file) return 1;
  gzd_set_velocity_kinds(file.get(), GZD_VELOCITY_NONE);
  const int count = gzd_get_trial_count(file.get());
  for (int number = 0; number < count; ++number) print_trial(file.get(), number);
  return 0;
}
