/* Put before the C library by LD_PRELOAD: lets one operation on the files of a folder fail, or the disk
   become full, or ends or stops the process there.

     QELM_FAULT_ROOT   operations on files below this folder count (and on relative paths, when the process
                       began below it); all others are let through
     QELM_FAULT_AT     which of them it is, from 1; 0 or nothing: none
     QELM_FAULT        fail   this one fails
                       space  from this one on there is no more room: what needs some fails
                       kill   SIGKILL, a write is done by half before
                       stop   SIGSTOP before it, and it is done when the process goes on
     QELM_FAULT_LOG    a line "OPERATION PATH" is added there for each operation that counts */
#define _GNU_SOURCE
#include <dirent.h>
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

enum { kDescriptors = 4096 };
enum Kind { kNone, kFail, kSpace, kKill, kStop };

static char root[PATH_MAX];
static size_t root_length;
static int relative_counts;
static long fault_at;
static enum Kind fault_kind;
static int log_file = -1;
static atomic_long operations;
/* 0: not ours, 1: open for reading, 2: for writing. */
static atomic_char descriptors[kDescriptors];

__attribute__((constructor)) static void Begin(void) {
  const char* folder = getenv("QELM_FAULT_ROOT");
  if (folder == NULL) return;
  snprintf(root, sizeof root, "%s/", folder);
  root_length = strlen(root);
  char here[PATH_MAX];
  if (getcwd(here, sizeof here - 1) != NULL) {
    strcat(here, "/");
    relative_counts = strncmp(here, root, root_length) == 0;
  }
  const char* at = getenv("QELM_FAULT_AT");
  fault_at = at == NULL ? 0 : strtol(at, NULL, 10);
  const char* kind = getenv("QELM_FAULT");
  static const char* const kinds[] = {"", "fail", "space", "kill", "stop"};
  for (int i = 0; kind != NULL && i < 5; ++i) {
    if (strcmp(kind, kinds[i]) == 0) fault_kind = (enum Kind)i;
  }
  const char* log = getenv("QELM_FAULT_LOG");
  if (log != NULL) {
    log_file = (int)syscall(SYS_openat, AT_FDCWD, log, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  }
}

static int Ours(const char* path) {
  if (root_length == 0 || path == NULL) return 0;
  return path[0] == '/' ? strncmp(path, root, root_length) == 0 : relative_counts;
}

static int OursAt(int folder, const char* path) {
  if (path == NULL) return 0;
  if (path[0] == '/' || folder == AT_FDCWD) return Ours(path);
  return folder >= 0 && folder < kDescriptors && descriptors[folder] != 0;
}

static char Known(int file) { return file >= 0 && file < kDescriptors ? descriptors[file] : 0; }

static void Note(int file, int writes) {
  if (file >= 0 && file < kDescriptors) descriptors[file] = writes ? 2 : 1;
}

/* Counts an operation. What is to become of it: kNone for nothing. */
static enum Kind Count(const char* operation, const char* path, int needs_space) {
  const long n = ++operations;
  if (log_file >= 0) {
    char line[PATH_MAX + 64];
    const int length = snprintf(line, sizeof line, "%s %s\n", operation, path);
    syscall(SYS_write, log_file, line, (size_t)length);
  }
  if (fault_at == 0 || n < fault_at) return kNone;
  if (fault_kind == kSpace) return needs_space ? kSpace : kNone;
  if (n != fault_at) return kNone;
  if (fault_kind == kStop) {
    syscall(SYS_kill, getpid(), SIGSTOP);
    return kNone;
  }
  return fault_kind;
}

static void Die(void) {
  syscall(SYS_kill, getpid(), SIGKILL);
  for (;;) pause();
}

/* Whether the operation fails, with errno set. */
static int Fails(const char* operation, const char* path, int needs_space, int error) {
  const int before = errno;
  const enum Kind kind = Count(operation, path, needs_space);
  errno = before;
  if (kind == kNone) return 0;
  if (kind == kKill) Die();
  errno = kind == kSpace ? ENOSPC : error;
  return 1;
}

#define REAL(name)               \
  static __typeof__(&name) real; \
  if (real == NULL) real = (__typeof__(&name))dlsym(RTLD_NEXT, #name)

static int OpenFails(const char* path, int flags) {
  const int creates = (flags & O_CREAT) != 0 && faccessat(AT_FDCWD, path, F_OK, 0) != 0;
  const int writes = (flags & O_ACCMODE) != O_RDONLY;
  return Fails(creates ? "create" : writes ? "open-to-write" : "open", path, creates, EACCES);
}

#define OPEN(name)                                                                            \
  int name(const char* path, int flags, ...) {                                                \
    REAL(name);                                                                               \
    va_list arguments;                                                                        \
    va_start(arguments, flags);                                                               \
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0; \
    va_end(arguments);                                                                        \
    if (!Ours(path)) return real(path, flags, mode);                                          \
    if (OpenFails(path, flags)) return -1;                                                    \
    const int file = real(path, flags, mode);                                                 \
    Note(file, (flags & O_ACCMODE) != O_RDONLY);                                              \
    return file;                                                                              \
  }
OPEN(open)
OPEN(open64)

#define OPENAT(name)                                                                          \
  int name(int folder, const char* path, int flags, ...) {                                    \
    REAL(name);                                                                               \
    va_list arguments;                                                                        \
    va_start(arguments, flags);                                                               \
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0; \
    va_end(arguments);                                                                        \
    if (!OursAt(folder, path)) return real(folder, path, flags, mode);                        \
    if (OpenFails(path, flags)) return -1;                                                    \
    const int file = real(folder, path, flags, mode);                                         \
    Note(file, (flags & O_ACCMODE) != O_RDONLY);                                              \
    return file;                                                                              \
  }
OPENAT(openat)
OPENAT(openat64)

#define FOPEN(name)                                                                                \
  FILE* name(const char* path, const char* mode) {                                                 \
    REAL(name);                                                                                    \
    if (!Ours(path)) return real(path, mode);                                                      \
    const int flags = mode[0] == 'r' && strchr(mode, '+') == NULL ? O_RDONLY : O_WRONLY | O_CREAT; \
    if (OpenFails(path, flags)) return NULL;                                                       \
    FILE* file = real(path, mode);                                                                 \
    if (file != NULL) Note(fileno(file), flags != O_RDONLY);                                       \
    return file;                                                                                   \
  }
FOPEN(fopen)
FOPEN(fopen64)

ssize_t read(int file, void* buffer, size_t size) {
  REAL(read);
  if (Known(file) != 0 && Fails("read", "", 0, EIO)) return -1;
  return real(file, buffer, size);
}

ssize_t write(int file, const void* buffer, size_t size) {
  REAL(write);
  if (Known(file) == 0) return real(file, buffer, size);
  const enum Kind kind = Count("write", "", 1);
  if (kind == kNone) return real(file, buffer, size);
  if (kind != kFail && size > 1) {
    /* What there was room for, or time. */
    const ssize_t written = real(file, buffer, size / 2);
    if (kind == kKill) Die();
    return written;
  }
  if (kind == kKill) Die();
  errno = ENOSPC;
  return -1;
}

ssize_t writev(int file, const struct iovec* pieces, int count) {
  REAL(writev);
  if (Known(file) != 0 && Fails("write", "", 1, ENOSPC)) return -1;
  return real(file, pieces, count);
}

/* By what name it is open. */
static const char* NameOf(int file, char name[PATH_MAX]) {
  char link[64];
  snprintf(link, sizeof link, "/proc/self/fd/%d", file);
  const long length = syscall(SYS_readlinkat, AT_FDCWD, link, name, PATH_MAX - 1);
  name[length < 0 ? 0 : length] = '\0';
  return name;
}

int fsync(int file) {
  REAL(fsync);
  char name[PATH_MAX];
  if (Known(file) != 0 && Fails("fsync", NameOf(file, name), 0, EIO)) return -1;
  return real(file);
}

int close(int file) {
  REAL(close);
  const char known = Known(file);
  if (known != 0) descriptors[file] = 0;
  if (known == 2 && Fails("close", "", 0, EIO)) {
    real(file);
    errno = EIO;
    return -1;
  }
  return real(file);
}

int fclose(FILE* stream) {
  REAL(fclose);
  const int file = fileno(stream);
  const char known = Known(file);
  if (known != 0) descriptors[file] = 0;
  const int fails = known == 2 && Fails("close", "", 0, EIO);
  const int result = real(stream);
  if (!fails) return result;
  errno = EIO;
  return EOF;
}

int flock(int file, int operation) {
  REAL(flock);
  if (Known(file) != 0 && Fails("flock", "", 0, ENOLCK)) return -1;
  return real(file, operation);
}

int fchmod(int file, mode_t mode) {
  REAL(fchmod);
  if (Known(file) != 0 && Fails("fchmod", "", 0, EPERM)) return -1;
  return real(file, mode);
}

int rename(const char* from, const char* to) {
  REAL(rename);
  if (Ours(to) && Fails("rename", to, 0, EACCES)) return -1;
  return real(from, to);
}

#define ON_PATH(name, needs_space, error)                                \
  int name(const char* path) {                                           \
    REAL(name);                                                          \
    if (Ours(path) && Fails(#name, path, needs_space, error)) return -1; \
    return real(path);                                                   \
  }
ON_PATH(unlink, 0, EBUSY)
ON_PATH(remove, 0, EBUSY)
ON_PATH(rmdir, 0, EBUSY)

int mkdir(const char* path, mode_t mode) {
  REAL(mkdir);
  struct stat there;
  const int needs_space = fstatat(AT_FDCWD, path, &there, 0) != 0;
  if (Ours(path) && Fails("mkdir", path, needs_space, EACCES)) return -1;
  return real(path, mode);
}

int unlinkat(int folder, const char* path, int flags) {
  REAL(unlinkat);
  if (OursAt(folder, path) && Fails("unlink", path, 0, EBUSY)) return -1;
  return real(folder, path, flags);
}

DIR* opendir(const char* path) {
  REAL(opendir);
  if (Ours(path) && Fails("opendir", path, 0, EACCES)) return NULL;
  return real(path);
}

int access(const char* path, int mode) {
  REAL(access);
  if (Ours(path) && Fails("access", path, 0, EACCES)) return -1;
  return real(path, mode);
}

#define STAT(name, type)                                        \
  int name(const char* path, struct type* result) {             \
    REAL(name);                                                 \
    if (Ours(path) && Fails(#name, path, 0, EACCES)) return -1; \
    return real(path, result);                                  \
  }
STAT(stat, stat)
STAT(stat64, stat64)
STAT(lstat, stat)
STAT(lstat64, stat64)
STAT(statvfs, statvfs)
STAT(statvfs64, statvfs64)

int fstat(int file, struct stat* result) {
  REAL(fstat);
  if (Known(file) != 0 && Fails("fstat", "", 0, EIO)) return -1;
  return real(file, result);
}
