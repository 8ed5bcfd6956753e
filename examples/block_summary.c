/*
 * Walks a recording and prints one line for each recording block: its times, sampling rate, eyes,
 * samples, samples without a valid position, and events.
 *
 *     block_summary trial.gzd
 */
#include <stdio.h>

#include "gzd.h"

struct block {
  RECORDINGS start;
  unsigned int samples;
  unsigned int missing;
  unsigned int events;
};

static const char* name_of_eyes(byte eye) {
  switch (eye) {
    case GZD_BLOCK_LEFT:
      return "left eye";
    case GZD_BLOCK_RIGHT:
      return "right eye";
    case GZD_BLOCK_BOTH:
      return "both eyes";
    default:
      return "no eye";
  }
}

/* The first kind of position that the sample holds decides. */
static int has_position(const FSAMPLE* sample, int eye) {
  const unsigned int flag = eye == GZD_LEFT_EYE ? SMP_LEFT : SMP_RIGHT;
  if ((sample->flags & flag) == 0) return 0;
  if ((sample->flags & SMP_GAZE) != 0) return sample->gx[eye] < MISSING_DATA;
  if ((sample->flags & SMP_HREF) != 0) return sample->hx[eye] < MISSING_DATA;
  if ((sample->flags & SMP_PUPIL_POS) != 0) return sample->pa[eye] > 0.0f;
  return 0;
}

static void count_sample(struct block* block, const FSAMPLE* sample) {
  ++block->samples;
  if (!has_position(sample, GZD_LEFT_EYE) && !has_position(sample, GZD_RIGHT_EYE)) ++block->missing;
}

static void print_block(int number, const struct block* block, unsigned int end) {
  printf("block %d: %u to %u ms, %g Hz, %s, %u samples, %u missing, %u events\n", number,
         block->start.time, end, (double)block->start.sample_rate, name_of_eyes(block->start.eye),
         block->samples, block->missing, block->events);
}

static void summarise(GZDFILE* file) {
  struct block block = {0};
  int number = 0, inside = 0, code;
  while ((code = gzd_get_next_data(file)) != GZD_END_OF_DATA) {
    const ALLF_DATA* record = gzd_get_float_data(file);
    if (record == NULL) continue;
    if (code == GZD_RECORDING && record->rec.state == GZD_BLOCK_START) {
      const struct block fresh = {0};
      block = fresh;
      block.start = record->rec;
      inside = 1;
      ++number;
    } else if (code == GZD_RECORDING && inside) {
      print_block(number, &block, record->rec.time);
      inside = 0;
    } else if (code == GZD_SAMPLE && inside) {
      count_sample(&block, &record->fs);
    } else if (inside) {
      ++block.events;
    }
  }
  if (inside) printf("block %d has no end\n", number);
}

int main(int argc, char** argv) {
  int error = 0;
  GZDFILE* file;
  if (argc != 2) {
    fprintf(stderr, "usage: block_summary FILE.gzd\n");
    return 2;
  }
  file = gzd_open_file(argv[1], GZD_CONSISTENCY_REPAIR, GZD_LOAD_EVENTS, 1, &error);
  if (file == NULL) return 1;
  gzd_set_velocity_kinds(file, GZD_VELOCITY_NONE);
  summarise(file);
  gzd_close_file(file);
  return 0;
}
