/* An outside client: counts the samples and the fixations of a recording. */
#include <gzd.h>
#include <stdio.h>

int main(int argc, char** argv) {
  int error = 0;
  int code;
  unsigned int samples = 0;
  unsigned int fixations = 0;
  GZDFILE* const file =
      argc == 2 ? gzd_open_file(argv[1], GZD_CONSISTENCY_REPAIR, 1, 1, &error) : 0;
  if (file == 0) return 1;
  while ((code = gzd_get_next_data(file)) != GZD_END_OF_DATA) {
    const ALLF_DATA* const record = gzd_get_float_data(file);
    if (record == 0) return 1;
    if (code == GZD_SAMPLE) ++samples;
    if (code == GZD_END_FIXATION) ++fixations;
  }
  gzd_close_file(file);
  printf("gzdapi %s: %u samples, %u fixations\n", gzd_get_version(), samples, fixations);
  return 0;
}
