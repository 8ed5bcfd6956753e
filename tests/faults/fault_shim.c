/*
 * A library to be preloaded into a program, that makes one call of it fail:
 *
 *   FAULT_CALL   the function: fopen, fread, fgets, fseek, fwrite, fflush, fclose, mkostemp, malloc
 *   FAULT_AT     which call of it fails, from 1; 0: none
 *   FAULT_EVERY  1: every call from that one on fails, as on a disk that stays full
 *   FAULT_CUT    a file that is cut to half its size at that call, which itself goes on
 *   FAULT_REPORT a file that receives the number of calls, when the program ends
 *
 * Functions of one name in two forms (with 64-bit offsets, checked) count together.
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

static const char* watched_call;
static long fails_at;
static int fails_for_good;
static const char* cut_file;
static const char* report_file;
static long calls;
static int ready;

static void read_orders(void) {
  const char* at = getenv("FAULT_AT");
  const char* every = getenv("FAULT_EVERY");
  watched_call = getenv("FAULT_CALL");
  fails_at = at != NULL ? strtol(at, NULL, 10) : 0;
  fails_for_good = every != NULL && *every == '1';
  cut_file = getenv("FAULT_CUT");
  report_file = getenv("FAULT_REPORT");
  ready = 1;
}

/* From here on calls count: those of the loader and of other constructors do not. */
__attribute__((constructor)) static void begin(void) {
  read_orders();
}

/* Without stdio and malloc, which are watched. */
__attribute__((destructor)) static void report(void) {
  char digits[24];
  int place = (int)sizeof digits;
  int file;
  long rest = calls;
  ready = 0;
  if (report_file == NULL) return;
  digits[--place] = '\n';
  do {
    digits[--place] = (char)('0' + rest % 10);
    rest /= 10;
  } while (rest > 0);
  file = open(report_file, O_WRONLY | O_CREAT | O_TRUNC, 0600);
  if (file < 0) return;
  if (write(file, digits + place, sizeof digits - (size_t)place) < 0) calls = 0;
  close(file);
}

static void cut(const char* path) {
  struct stat facts;
  if (stat(path, &facts) != 0) return;
  if (truncate(path, facts.st_size / 2) != 0) errno = 0;
}

/* Counts a call. True when it is to fail. */
static int fails(const char* call, int error) {
  if (!ready || watched_call == NULL || strcmp(watched_call, call) != 0) return 0;
  ++calls;
  if (calls != fails_at && !(fails_for_good && fails_at > 0 && calls > fails_at)) return 0;
  if (cut_file != NULL) {
    cut(cut_file);
    return 0;
  }
  errno = error;
  return 1;
}

/* The function behind this one. */
static void* next_function(const char* name) {
  void* const function = dlsym(RTLD_NEXT, name);
  if (function == NULL) abort();
  return function;
}

#define NEXT(type, name)                     \
  static type next;                          \
  if (next == NULL) {                        \
    void* const found = next_function(name); \
    memcpy(&next, &found, sizeof next);      \
  }

typedef FILE* (*opener)(const char*, const char*);
typedef int (*temporary)(char*, int);
typedef char* (*line_reader)(char*, int, FILE*);
typedef size_t (*reader)(void*, size_t, size_t, FILE*);
typedef size_t (*checked_reader)(void*, size_t, size_t, size_t, FILE*);
typedef size_t (*writer)(const void*, size_t, size_t, FILE*);
typedef int (*seeker)(FILE*, long, int);
typedef int (*wide_seeker)(FILE*, off64_t, int);
typedef int (*file_call)(FILE*);

FILE* fopen(const char* path, const char* mode) {
  NEXT(opener, "fopen")
  return fails("fopen", EMFILE) ? NULL : next(path, mode);
}

FILE* fopen64(const char* path, const char* mode) {
  NEXT(opener, "fopen64")
  return fails("fopen", EMFILE) ? NULL : next(path, mode);
}

int mkostemp(char* path, int flags) {
  NEXT(temporary, "mkostemp")
  return fails("mkostemp", ENOSPC) ? -1 : next(path, flags);
}

int mkostemp64(char* path, int flags) {
  NEXT(temporary, "mkostemp64")
  return fails("mkostemp", ENOSPC) ? -1 : next(path, flags);
}

char* fgets(char* buffer, int room, FILE* file) {
  NEXT(line_reader, "fgets")
  if (!fails("fgets", EIO)) return next(buffer, room, file);
  file->_flags |= 0x20; /* the error flag of the GNU C library */
  return NULL;
}

/* A failing read leaves the error flag of its stream set. */
static void spoil(FILE* file) {
  const int descriptor = fileno(file);
  const int kept = dup(descriptor);
  const int write_only = open("/dev/null", O_WRONLY);
  if (kept >= 0 && write_only >= 0) {
    dup2(write_only, descriptor);
    (void)getc(file);
    dup2(kept, descriptor);
  }
  if (kept >= 0) close(kept);
  if (write_only >= 0) close(write_only);
  errno = EIO;
}

size_t fread(void* buffer, size_t size, size_t count, FILE* file) {
  NEXT(reader, "fread")
  if (!fails("fread", EIO)) return next(buffer, size, count, file);
  spoil(file);
  return 0;
}

size_t __fread_chk(void* buffer, size_t room, size_t size, size_t count, FILE* file) {
  NEXT(checked_reader, "__fread_chk")
  if (!fails("fread", EIO)) return next(buffer, room, size, count, file);
  spoil(file);
  return 0;
}

size_t fwrite(const void* buffer, size_t size, size_t count, FILE* file) {
  NEXT(writer, "fwrite")
  return fails("fwrite", ENOSPC) ? 0 : next(buffer, size, count, file);
}

int fseek(FILE* file, long offset, int whence) {
  NEXT(seeker, "fseek")
  return fails("fseek", EINVAL) ? -1 : next(file, offset, whence);
}

int fseeko64(FILE* file, off64_t offset, int whence) {
  NEXT(wide_seeker, "fseeko64")
  return fails("fseek", EINVAL) ? -1 : next(file, offset, whence);
}

int fflush(FILE* file) {
  NEXT(file_call, "fflush")
  return fails("fflush", ENOSPC) ? EOF : next(file);
}

int fclose(FILE* file) {
  NEXT(file_call, "fclose")
  if (!fails("fclose", ENOSPC)) return next(file);
  next(file);
  errno = ENOSPC;
  return EOF;
}

/* The C library's own: looking it up might allocate. */
extern void* __libc_malloc(size_t size);

void* malloc(size_t size) {
  return fails("malloc", ENOMEM) ? NULL : __libc_malloc(size);
}
