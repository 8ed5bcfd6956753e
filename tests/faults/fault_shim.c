/*
 * A library to be preloaded into a program, that disturbs one call of it:
 *
 *   FAULT_CALL   the function: fopen, fdopen, open, mkstemp, fread, fgets, fseek, fwrite, fflush,
 *                fclose, rename, malloc (its whole family), or "any" of them
 *   FAULT_AT     which call of it is disturbed, from 1; 0: none
 *   FAULT_EVERY  1: every call from that one on, as on a disk that stays full
 *   FAULT_CUT    not the call fails: this file is cut to half its size
 *   FAULT_REMOVE not the call fails: this file goes away
 *   FAULT_SIGNAL not the call fails: the process is sent this signal
 *   FAULT_REPORT a file that receives the number of calls, when the program ends
 *
 * Functions of one name in several forms (with 64-bit offsets, checked) count together; tmpfile
 * counts as mkstemp.
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

static const char* watched_call;
static long fails_at;
static int fails_for_good;
static const char* cut_file;
static const char* removed_file;
static int sent_signal;
static const char* report_file;
static long calls;
static int ready;

static void read_orders(void) {
  const char* at = getenv("FAULT_AT");
  const char* every = getenv("FAULT_EVERY");
  const char* number = getenv("FAULT_SIGNAL");
  watched_call = getenv("FAULT_CALL");
  fails_at = at != NULL ? strtol(at, NULL, 10) : 0;
  fails_for_good = every != NULL && *every == '1';
  cut_file = getenv("FAULT_CUT");
  removed_file = getenv("FAULT_REMOVE");
  sent_signal = number != NULL ? (int)strtol(number, NULL, 10) : 0;
  report_file = getenv("FAULT_REPORT");
  ready = 1;
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

/* Disturbs the surroundings of a call that itself goes on. False when the call is to fail. */
static int disturb(void) {
  struct stat facts;
  const int kept = errno;
  if (cut_file != NULL && stat(cut_file, &facts) == 0) (void)!truncate(cut_file, facts.st_size / 2);
  if (removed_file != NULL) unlink(removed_file);
  if (sent_signal != 0) raise(sent_signal);
  errno = kept;
  return cut_file != NULL || removed_file != NULL || sent_signal != 0;
}

/* Counts a call. True when it is to fail. */
static int fails(const char* call, int error) {
  if (!ready || watched_call == NULL) return 0;
  if (strcmp(watched_call, "any") != 0 && strcmp(watched_call, call) != 0) return 0;
  ++calls;
  if (calls != fails_at && !(fails_for_good && fails_at > 0 && calls > fails_at)) return 0;
  if (disturb()) return 0;
  errno = error;
  return 1;
}

/* The function after this one. */
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

/* From main on calls count: those of the loader and of constructors do not. */
typedef int (*main_function)(int, char**, char**);
static main_function main_of_program;
static int begin(int count, char** arguments, char** environment) {
  read_orders();
  return main_of_program(count, arguments, environment);
}

int __libc_start_main(main_function program, int count, char** arguments, void (*first)(void),
                      void (*last)(void), void (*of_loader)(void), void* stack_end) {
  typedef int (*function)(main_function, int, char**, void (*)(void), void (*)(void),
                          void (*)(void), void*);
  NEXT(function, "__libc_start_main")
  main_of_program = program;
  return next(begin, count, arguments, first, last, of_loader, stack_end);
}

/* A function that fails with `result` and an error, else calls the next of its name. */
#define FAILING(type, name, parameters, arguments, call, error, result) \
  type name parameters {                                                \
    typedef type(*function) parameters;                                 \
    NEXT(function, #name)                                               \
    return fails(call, error) ? (result) : next arguments;              \
  }

FAILING(FILE*, fopen, (const char* path, const char* mode), (path, mode), "fopen", EMFILE, NULL)
FAILING(FILE*, fopen64, (const char* path, const char* mode), (path, mode), "fopen", EMFILE, NULL)
FAILING(FILE*, fdopen, (int file, const char* mode), (file, mode), "fdopen", ENOMEM, NULL)
FAILING(FILE*, tmpfile, (void), (), "mkstemp", ENOSPC, NULL)
FAILING(FILE*, tmpfile64, (void), (), "mkstemp", ENOSPC, NULL)
FAILING(int, mkstemp, (char* name), (name), "mkstemp", ENOSPC, -1)
FAILING(int, mkstemp64, (char* name), (name), "mkstemp", ENOSPC, -1)
FAILING(int, mkostemp, (char* name, int flags), (name, flags), "mkstemp", ENOSPC, -1)
FAILING(int, mkostemp64, (char* name, int flags), (name, flags), "mkstemp", ENOSPC, -1)
FAILING(int, rename, (const char* from, const char* to), (from, to), "rename", EIO, -1)
FAILING(size_t, fwrite, (const void* buffer, size_t size, size_t count, FILE* file),
        (buffer, size, count, file), "fwrite", ENOSPC, 0)
FAILING(int, fseek, (FILE * file, long offset, int whence), (file, offset, whence), "fseek", EINVAL,
        -1)
FAILING(int, fseeko64, (FILE * file, off64_t offset, int whence), (file, offset, whence), "fseek",
        EINVAL, -1)
FAILING(int, fflush, (FILE * file), (file), "fflush", ENOSPC, EOF)

/* Under names of their own: the header's open has no third parameter to hand on. */
int watched_open(const char* path, int flags, mode_t mode) __asm__("open");
int watched_open64(const char* path, int flags, mode_t mode) __asm__("open64");

int watched_open(const char* path, int flags, mode_t mode) {
  typedef int (*opener)(const char*, int, ...);
  NEXT(opener, "open64")
  return fails("open", EMFILE) ? -1 : next(path, flags, mode);
}

int watched_open64(const char* path, int flags, mode_t mode) {
  return watched_open(path, flags, mode);
}

/* A failing read leaves the error flag of its stream set: that of the GNU C library. */
static void spoil(FILE* file) {
  file->_flags |= 0x20;
  errno = EIO;
}

#define READING(type, name, parameters, arguments, call, file, result) \
  type name parameters {                                               \
    typedef type(*function) parameters;                                \
    NEXT(function, #name)                                              \
    if (!fails(call, EIO)) return next arguments;                      \
    spoil(file);                                                       \
    return result;                                                     \
  }

READING(size_t, fread, (void* buffer, size_t size, size_t count, FILE* file),
        (buffer, size, count, file), "fread", file, 0)
READING(size_t, __fread_chk, (void* buffer, size_t room, size_t size, size_t count, FILE* file),
        (buffer, room, size, count, file), "fread", file, 0)
READING(char*, fgets, (char* buffer, int size, FILE* file), (buffer, size, file), "fgets", file,
        NULL)
READING(char*, __fgets_chk, (char* buffer, size_t room, int size, FILE* file),
        (buffer, room, size, file), "fgets", file, NULL)

int fclose(FILE* file) {
  typedef int (*function)(FILE*);
  NEXT(function, "fclose")
  if (!fails("fclose", ENOSPC)) return next(file);
  next(file);
  errno = ENOSPC;
  return EOF;
}

/* The C library's own: looking them up might allocate. */
#define ALLOCATING(name, original, parameters, arguments)       \
  extern void* original parameters;                             \
  void* name parameters {                                       \
    return fails("malloc", ENOMEM) ? NULL : original arguments; \
  }

ALLOCATING(malloc, __libc_malloc, (size_t size), (size))
ALLOCATING(calloc, __libc_calloc, (size_t count, size_t size), (count, size))
ALLOCATING(realloc, __libc_realloc, (void* memory, size_t size), (memory, size))
ALLOCATING(aligned_alloc, __libc_memalign, (size_t alignment, size_t size), (alignment, size))
