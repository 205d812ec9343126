/* Preloaded into the program by the fault test: lets one chosen call fail, and keeps count. The
 * commands that the program runs are left alone. */
#include <dirent.h>
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <mntent.h>
#include <poll.h>
#include <semaphore.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include "fault_page.h"

enum { most_descriptors = 256 };

static struct fault_page* page;
static int in_child;
static int library_at_work;
static char path_of[most_descriptors][64]; /* what each descriptor was opened from */

/* Whether this call is the one that is to fail; errno is set then. */
static int fails(enum fault_call call, const char* subject) {
    if (page == NULL || page->call != (int)call || page->in_child != in_child) {
        return 0;
    }
    if (++page->calls != page->at) {
        return 0;
    }
    page->hit = 1;
    snprintf(page->subject, sizeof(page->subject), "%s", subject);
    errno = page->error;
    return 1;
}

static const char* subject_of(int fd) {
    return fd >= 0 && fd < most_descriptors ? path_of[fd] : "";
}

static void remember(int fd, const char* path) {
    if (fd >= 0 && fd < most_descriptors) {
        snprintf(path_of[fd], sizeof(path_of[fd]), "%s", path);
    }
}

/* The function that would have been called without this library. */
#define REAL(name)                                  \
    static __typeof__(name)* real;                  \
    if (real == NULL) {                             \
        *(void**)(&real) = dlsym(RTLD_NEXT, #name); \
    }

/* The same calls under the names that they have for large files. */
#define FAULT_stat64 FAULT_stat

/* A function that only fails or does as always. */
#define FAULTY(result, name, parameters, arguments, failure, subject)     \
    result name parameters {                                              \
        REAL(name)                                                        \
        return fails(FAULT_##name, subject) ? (failure) : real arguments; \
    }

FAULTY(int, dup2, (int fd, int wanted), (fd, wanted), -1, "")
FAULTY(int, execve, (const char* path, char* const argv[], char* const env[]), (path, argv, env),
       -1, path)
FAULTY(int, ppoll,
       (struct pollfd * fds, nfds_t count, const struct timespec* timeout, const sigset_t* mask),
       (fds, count, timeout, mask), -1, "")
FAULTY(pid_t, waitpid, (pid_t pid, int* status, int flags), (pid, status, flags), -1, "")
FAULTY(DIR*, opendir, (const char* path), (path), NULL, path)
FAULTY(FILE*, setmntent, (const char* path, const char* mode), (path, mode), NULL, path)
FAULTY(FILE*, fdopen, (int fd, const char* mode), (fd, mode), NULL, subject_of(fd))
FAULTY(int, scandir,
       (const char* path, struct dirent*** list, int (*filter)(const struct dirent*),
        int (*compare)(const struct dirent**, const struct dirent**)),
       (path, list, filter, compare), -1, path)
FAULTY(int, stat, (const char* path, struct stat* status), (path, status), -1, path)
FAULTY(int, stat64, (const char* path, struct stat64* status), (path, status), -1, path)
FAULTY(int, access, (const char* path, int mode), (path, mode), -1, path)
FAULTY(int, gethostname, (char* name, size_t size), (name, size), -1, "")
FAULTY(long, sysconf, (int name), (name), -1, "")
FAULTY(int, setsockopt, (int fd, int level, int name, const void* value, socklen_t size),
       (fd, level, name, value, size), -1, "")
FAULTY(int, bind, (int fd, const struct sockaddr* address, socklen_t size), (fd, address, size), -1,
       "")
FAULTY(int, getsockname, (int fd, struct sockaddr* address, socklen_t* size), (fd, address, size),
       -1, "")
FAULTY(ssize_t, sendto,
       (int fd, const void* from, size_t size, int flags, const struct sockaddr* to,
        socklen_t length),
       (fd, from, size, flags, to, length), -1, "")

/* With the system error 0 these three do something, but less than they were asked for. */
#define FAILS_SHORT(name, fd, shortened, as_always) \
    REAL(name)                                      \
    if (fails(FAULT_##name, subject_of(fd))) {      \
        return page->error != 0 ? -1 : (shortened); \
    }                                               \
    return as_always;

ssize_t read(int fd, void* to,
             size_t size){FAILS_SHORT(read, fd, real(fd, to, 1), real(fd, to, size))}

ssize_t write(int fd, const void* from,
              size_t size){FAILS_SHORT(write, fd, real(fd, from, 1), real(fd, from, size))}

ssize_t recvmsg(int fd, struct msghdr* message, int flags) {
    FAILS_SHORT(recvmsg, fd, real(fd, message, flags) - 1, real(fd, message, flags))
}

/* The time that has not been slept is what the caller goes on with. */
int nanosleep(const struct timespec* wanted, struct timespec* left) {
    REAL(nanosleep)
    if (fails(FAULT_nanosleep, "")) {
        *left = *wanted;
        return -1;
    }
    return real(wanted, left);
}

int open(const char* path, int flags, ...) {
    REAL(open)
    va_list arguments;
    va_start(arguments, flags);
    const int mode = (flags & O_CREAT) != 0 ? va_arg(arguments, int) : 0;
    va_end(arguments);
    if (fails(FAULT_open, path)) {
        return -1;
    }
    const int fd = real(path, flags, mode);
    remember(fd, path);
    return fd;
}

int open64(const char* path, int flags, ...) __attribute__((alias("open")));

int socket(int family, int type, int protocol) {
    REAL(socket)
    const int fd = fails(FAULT_socket, "") ? -1 : real(family, type, protocol);
    remember(fd, "");
    return fd;
}

int pipe2(int ends[2], int flags) {
    REAL(pipe2)
    if (fails(FAULT_pipe2, "") || real(ends, flags) != 0) {
        return -1;
    }
    remember(ends[0], "");
    remember(ends[1], "");
    return 0;
}

/* As the kernel does it: the descriptor is gone, whatever the result. */
int close(int fd) {
    REAL(close)
    const int failed = fails(FAULT_close, subject_of(fd));
    const int error = errno;
    remember(fd, "");
    const int result = real(fd);
    if (failed) {
        errno = error;
        return -1;
    }
    return result;
}

/* Only the calls for the status flags can fail with a good descriptor. */
int fcntl(int fd, int command, ...) {
    REAL(fcntl)
    va_list arguments;
    va_start(arguments, command);
    const int value = command == F_SETFL || command == F_SETFD ? va_arg(arguments, int) : 0;
    va_end(arguments);
    if ((command == F_GETFL || command == F_SETFL) && fails(FAULT_fcntl, "")) {
        return -1;
    }
    return real(fd, command, value);
}

pid_t fork(void) {
    REAL(fork)
    if (fails(FAULT_fork, "")) {
        return -1;
    }
    const pid_t child = real();
    in_child = in_child || child == 0;
    return child;
}

/* The library starts with its semaphore, and posts it when an inventory is made. */
int sem_init(sem_t* semaphore, int shared, unsigned value) {
    REAL(sem_init)
    library_at_work = 1;
    return fails(FAULT_sem_init, "") ? -1 : real(semaphore, shared, value);
}

int sem_post(sem_t* semaphore) {
    REAL(sem_post)
    library_at_work = 0;
    return real(semaphore);
}

#define FAULTY_MEMORY(name, parameters, arguments)                                 \
    void* name parameters {                                                        \
        REAL(name)                                                                 \
        return library_at_work && fails(FAULT_##name, "") ? NULL : real arguments; \
    }

FAULTY_MEMORY(malloc, (size_t size), (size))
FAULTY_MEMORY(calloc, (size_t count, size_t size), (count, size))
FAULTY_MEMORY(realloc, (void* memory, size_t size), (memory, size))

char* strdup(const char* text) {
    REAL(strdup)
    return library_at_work && fails(FAULT_strdup, "") ? NULL : real(text);
}

static int count_descriptors(void) {
    int count = 0;
    for (int fd = 0; fd < most_descriptors; ++fd) {
        struct stat status;
        count += fstat(fd, &status) == 0;
    }
    return count;
}

static void take_alarm(int number) {
    (void)number;
    page->alarms++;
}

static void start_alarms(void) {
    struct sigaction action;
    memset(&action, 0, sizeof(action));
    action.sa_handler = take_alarm; /* without SA_RESTART */
    sigaction(SIGALRM, &action, NULL);
    const struct timeval period = {0, page->alarm_usec};
    const struct itimerval timer = {period, period};
    setitimer(ITIMER_REAL, &timer, NULL);
}

__attribute__((constructor)) static void start(void) {
    const char* path = getenv(FAULT_PAGE_VARIABLE);
    const int fd = path == NULL ? -1 : open(path, O_RDWR | O_CLOEXEC);
    if (fd < 0) {
        return;
    }
    struct fault_page* mapped =
        mmap(NULL, sizeof(*page), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    close(fd);
    unsetenv(FAULT_PAGE_VARIABLE);
    unsetenv("LD_PRELOAD");
    if (mapped == MAP_FAILED) {
        return;
    }
    mapped->descriptors_before = count_descriptors();
    page = mapped;
    if (page->alarm_usec > 0) {
        start_alarms();
    }
    errno = 0; /* as it is when nothing is preloaded */
}

__attribute__((destructor)) static void finish(void) {
    if (page == NULL || in_child) {
        return;
    }
    struct fault_page* mapped = page;
    page = NULL; /* what follows is not the program's */
    const struct itimerval never = {{0, 0}, {0, 0}};
    setitimer(ITIMER_REAL, &never, NULL);
    mapped->descriptors_after = count_descriptors();
    mapped->children_left = waitpid(-1, NULL, WNOHANG) >= 0;
    mapped->finished = 1;
}
