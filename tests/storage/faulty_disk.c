/* A disk that fails or a process that dies at a chosen call, for a program that runs with this library preloaded.
 *
 * Calls on files below DISK_ROOT are counted; with DISK_CHANGES set, only those that change something. The call
 * number DISK_AT fails with the error number DISK_ERROR, or, with DISK_KILL, ends the process by SIGKILL right
 * after it was carried out. DISK_LOG names a file that receives a line for each counted call. Thread: any. */
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
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

enum kind { reads, changes };

static atomic_long count;

/* The path below a descriptor, or a path relative to it. */
static const char* resolved(int folder, const char* path, char* buffer) {
    if (path && path[0] == '/')
        return path;
    char link[64];
    char base[PATH_MAX];
    if (folder == AT_FDCWD)
        snprintf(link, sizeof link, "/proc/self/cwd");
    else
        snprintf(link, sizeof link, "/proc/self/fd/%d", folder);
    const ssize_t length = syscall(SYS_readlink, link, base, sizeof base - 1);
    if (length < 0)
        return "";
    base[length] = 0;
    if (path)
        snprintf(buffer, 2 * PATH_MAX, "%s/%s", base, path);
    else
        snprintf(buffer, 2 * PATH_MAX, "%s", base);
    return buffer;
}

/* Whether this call is the chosen one. */
static int isChosen(enum kind kind, const char* name, int folder, const char* path) {
    const char* root = getenv("DISK_ROOT");
    char buffer[2 * PATH_MAX];
    const int saved = errno;
    const char* where = root ? resolved(folder, path, buffer) : "";
    errno = saved;
    if (!root || strncmp(where, root, strlen(root)) != 0 || (kind == reads && getenv("DISK_CHANGES")))
        return 0;
    const long number = atomic_fetch_add(&count, 1) + 1;
    const char* log = getenv("DISK_LOG");
    if (log) {
        char line[3 * PATH_MAX];
        const int length = snprintf(line, sizeof line, "%ld %s %s\n", number, name, where);
        const long descriptor = syscall(SYS_openat, AT_FDCWD, log, O_WRONLY | O_CREAT | O_APPEND, 0600);
        syscall(SYS_write, descriptor, line, length);
        syscall(SYS_close, descriptor);
    }
    const char* at = getenv("DISK_AT");
    return at && number == atol(at);
}

/* Defines the function that stands before the C library's. */
#define STAND_IN(result, failed, kind, name, folder, path, parameters, arguments)                                  \
    result name parameters {                                                                                       \
        static result(*next) parameters;                                                                           \
        if (!next)                                                                                                 \
            next = (result(*) parameters)dlsym(RTLD_NEXT, #name);                                                  \
        const int chosen = isChosen(kind, #name, folder, path);                                                    \
        if (chosen && !getenv("DISK_KILL")) {                                                                      \
            errno = atoi(getenv("DISK_ERROR"));                                                                    \
            return failed;                                                                                         \
        }                                                                                                          \
        result outcome = next arguments;                                                                           \
        if (chosen)                                                                                                \
            kill(getpid(), SIGKILL);                                                                               \
        return outcome;                                                                                            \
    }

STAND_IN(ssize_t, -1, reads, read, fd, NULL, (int fd, void* to, size_t size), (fd, to, size))
STAND_IN(ssize_t, -1, changes, write, fd, NULL, (int fd, const void* from, size_t size), (fd, from, size))
STAND_IN(ssize_t, -1, changes, pwrite64, fd, NULL, (int fd, const void* from, size_t size, off64_t at),
         (fd, from, size, at))
STAND_IN(int, -1, changes, fsync, fd, NULL, (int fd), (fd))
STAND_IN(int, -1, changes, fdatasync, fd, NULL, (int fd), (fd))
STAND_IN(int, -1, changes, fchmod, fd, NULL, (int fd, mode_t mode), (fd, mode))
STAND_IN(int, -1, changes, ftruncate64, fd, NULL, (int fd, off64_t size), (fd, size))
STAND_IN(int, -1, changes, rename, AT_FDCWD, to, (const char* from, const char* to), (from, to))
STAND_IN(int, -1, changes, renameat2, there, to,
         (int here, const char* from, int there, const char* to, unsigned flags), (here, from, there, to, flags))
STAND_IN(int, -1, changes, link, AT_FDCWD, to, (const char* from, const char* to), (from, to))
STAND_IN(int, -1, changes, unlink, AT_FDCWD, path, (const char* path), (path))
STAND_IN(int, -1, changes, unlinkat, folder, path, (int folder, const char* path, int flags), (folder, path, flags))
STAND_IN(int, -1, changes, rmdir, AT_FDCWD, path, (const char* path), (path))
STAND_IN(int, -1, changes, mkdir, AT_FDCWD, path, (const char* path, mode_t mode), (path, mode))
STAND_IN(DIR*, NULL, reads, opendir, AT_FDCWD, path, (const char* path), (path))
STAND_IN(DIR*, NULL, reads, fdopendir, fd, NULL, (int fd), (fd))
STAND_IN(struct dirent*, NULL, reads, readdir, dirfd(stream), NULL, (DIR * stream), (stream))
STAND_IN(struct dirent64*, NULL, reads, readdir64, dirfd(stream), NULL, (DIR * stream), (stream))

/* The mode is there only where a file may be made. */
#define STAND_IN_OPEN(name, folder, parameters, arguments)                                                         \
    int name parameters {                                                                                          \
        static int(*next) parameters;                                                                              \
        if (!next)                                                                                                 \
            next = (int(*) parameters)dlsym(RTLD_NEXT, #name);                                                     \
        mode_t mode = 0;                                                                                           \
        if (flags & (O_CREAT | __O_TMPFILE)) {                                                                     \
            va_list list;                                                                                          \
            va_start(list, flags);                                                                                 \
            mode = va_arg(list, mode_t);                                                                           \
            va_end(list);                                                                                          \
        }                                                                                                          \
        const int chosen = isChosen(flags & O_CREAT ? changes : reads, #name, folder, path);                       \
        if (chosen && !getenv("DISK_KILL")) {                                                                      \
            errno = atoi(getenv("DISK_ERROR"));                                                                    \
            return -1;                                                                                             \
        }                                                                                                          \
        const int outcome = next arguments;                                                                        \
        if (chosen)                                                                                                \
            kill(getpid(), SIGKILL);                                                                               \
        return outcome;                                                                                            \
    }

STAND_IN_OPEN(open, AT_FDCWD, (const char* path, int flags, ...), (path, flags, mode))
STAND_IN_OPEN(open64, AT_FDCWD, (const char* path, int flags, ...), (path, flags, mode))
STAND_IN_OPEN(openat, folder, (int folder, const char* path, int flags, ...), (folder, path, flags, mode))
STAND_IN_OPEN(openat64, folder, (int folder, const char* path, int flags, ...), (folder, path, flags, mode))
