/* The public headers serve a C client: this file is compiled as strict C99, each header alone. */
#include HEADER_UNDER_TEST

#ifdef TESTS_THE_RECORDS
/* Sizes that other languages' bindings rely on. */
typedef char lstring_keeps_its_length_first[sizeof(LSTRING) == 4 ? 1 : -1];
typedef char union_holds_every_record[sizeof(ALLF_DATA) >= sizeof(FSAMPLE) ? 1 : -1];

int use_the_records(const ALLF_DATA* record);
int use_the_records(const ALLF_DATA* record) {
  return record->fe.message != 0 && record->fs.flags == SMP_LEFT &&
         record->rec.eye == GZD_BLOCK_BOTH;
}
#endif

#ifdef TESTS_THE_FUNCTIONS
static void log_nothing(const char* message) {
  (void)message;
}

int main(void) {
  int rv = 5;
  GZDFILE* file;
  void* function;
  void (*log)(const char*) = log_nothing;
  *(void (**)(const char*))(void*)&function = log;
  gzd_set_log_function(function);
  file = gzd_open_file("/nonexistent/file.gzd", GZD_CONSISTENCY_REPAIR, 1, 1, &rv);
  return file == 0 && rv == -1 && gzd_close_file(file) == 0 ? 0 : 1;
}
#else
typedef int not_empty;
#endif
