/* Preloaded into the program by the fault test: lets one chosen call fail, and keeps count. The
 * commands that the program runs are left alone. */
#include <dirent.h>
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
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

enum { most_descriptors = 256, path_size = 64, time_limit_seconds = 60 };

/* From the environment variable FAULT, "OUTFILE CALL AT ERROR IN_CHILD ALARM": the AT-th CALL fails
 * with that system error (a name; "short" lets read(), write() and recvmsg() succeed with less than
 * they were asked for), in the program itself or, with IN_CHILD 1, in the children that it forks,
 * before they become another program. AT 0 lets none fail. malloc() and its kind count only while
 * libtarnnet is at work. With ALARM above 0 SIGALRM interrupts the program every so many
 * microseconds. */
static struct {
    char outfile[path_size];
    char call[16];
    char error_name[16];
    int at;
    int error;
    int in_child;
    int alarm_usec;
} order;

/* What came of it, shared with the children. At the end the OUTFILE gets one line: whether the call
 * has failed, how many descriptors more are open than at the start, whether a child was not waited
 * for, how many alarms rang, and the path that the failed call was given or its descriptor came
 * from, or nothing. */
static struct outcome {
    int calls;
    int hit;
    int alarms;
    char subject[path_size];
} * outcome;

static int in_child;
static int library_at_work;
static int descriptors_before;
static char path_of[most_descriptors][path_size]; /* what each descriptor was opened from */

/* Whether this call is the one that is to fail; errno is set then. */
static int fails(const char* call, const char* subject) {
    if (outcome == NULL || order.in_child != in_child || strcmp(order.call, call) != 0 ||
        ++outcome->calls != order.at) {
        return 0;
    }
    outcome->hit = 1;
    snprintf(outcome->subject, sizeof(outcome->subject), "%s", subject);
    errno = order.error;
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

/* A function that only fails or does as always. */
#define FAULTY(result, name, parameters, arguments, failure, subject) \
    result name parameters {                                          \
        REAL(name)                                                    \
        return fails(#name, subject) ? (failure) : real arguments;    \
    }

FAULTY(int, dup2, (int fd, int wanted), (fd, wanted), -1, "")
FAULTY(int, execve, (const char* path, char* const argv[], char* const env[]), (path, argv, env),
       -1, path)
FAULTY(int, ppoll,
       (struct pollfd * fds, nfds_t count, const struct timespec* timeout, const sigset_t* mask),
       (fds, count, timeout, mask), -1, "")
FAULTY(pid_t, waitpid, (pid_t pid, int* status, int flags), (pid, status, flags), -1, "")
FAULTY(DIR*, opendir, (const char* path), (path), NULL, path)
FAULTY(FILE*, fdopen, (int fd, const char* mode), (fd, mode), NULL, subject_of(fd))
FAULTY(int, scandir,
       (const char* path, struct dirent*** list, int (*filter)(const struct dirent*),
        int (*compare)(const struct dirent**, const struct dirent**)),
       (path, list, filter, compare), -1, path)
FAULTY(int, stat, (const char* path, struct stat* status), (path, status), -1, path)
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

/* With the error "short" these three do something, but less than they were asked for. */
#define FAILS_SHORT(name, fd, shortened, as_always) \
    REAL(name)                                      \
    if (fails(#name, subject_of(fd))) {             \
        return order.error != 0 ? -1 : (shortened); \
    }                                               \
    return as_always;

ssize_t read(int fd, void* to,
             size_t size){FAILS_SHORT(read, fd, real(fd, to, 1), real(fd, to, size))}

ssize_t write(int fd, const void* from,
              size_t size){FAILS_SHORT(write, fd, real(fd, from, 1), real(fd, from, size))}

ssize_t recvmsg(int fd, struct msghdr* message, int flags) {
    FAILS_SHORT(recvmsg, fd, real(fd, message, flags) - 1, real(fd, message, flags))
}

int open(const char* path, int flags, ...) {
    REAL(open)
    va_list arguments;
    va_start(arguments, flags);
    const int mode = (flags & O_CREAT) != 0 ? va_arg(arguments, int) : 0;
    va_end(arguments);
    if (fails("open", path)) {
        return -1;
    }
    const int fd = real(path, flags, mode);
    remember(fd, path);
    return fd;
}

/* The same calls under the names that they have for large files. */
int open64(const char* path, int flags, ...) __attribute__((alias("open")));
int stat64(const char* path, struct stat64* status) {
    return stat(path, (struct stat*)status);
}

int socket(int family, int type, int protocol) {
    REAL(socket)
    const int fd = fails("socket", "") ? -1 : real(family, type, protocol);
    remember(fd, "");
    return fd;
}

int pipe2(int ends[2], int flags) {
    REAL(pipe2)
    if (fails("pipe2", "") || real(ends, flags) != 0) {
        return -1;
    }
    remember(ends[0], "");
    remember(ends[1], "");
    return 0;
}

/* As the kernel does it: the descriptor is gone, whatever the result. */
int close(int fd) {
    REAL(close)
    const int failed = fails("close", subject_of(fd));
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
    if ((command == F_GETFL || command == F_SETFL) && fails("fcntl", "")) {
        return -1;
    }
    return real(fd, command, value);
}

pid_t fork(void) {
    REAL(fork)
    if (fails("fork", "")) {
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
    return fails("sem_init", "") ? -1 : real(semaphore, shared, value);
}

int sem_post(sem_t* semaphore) {
    REAL(sem_post)
    library_at_work = 0;
    return real(semaphore);
}

#define FAULTY_MEMORY(name, parameters, arguments)                          \
    void* name parameters {                                                 \
        REAL(name)                                                          \
        return library_at_work && fails(#name, "") ? NULL : real arguments; \
    }

FAULTY_MEMORY(malloc, (size_t size), (size))
FAULTY_MEMORY(calloc, (size_t count, size_t size), (count, size))
FAULTY_MEMORY(realloc, (void* memory, size_t size), (memory, size))

char* strdup(const char* text) {
    REAL(strdup)
    return library_at_work && fails("strdup", "") ? NULL : real(text);
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
    outcome->alarms++;
}

static void start_alarms(void) {
    struct sigaction action;
    memset(&action, 0, sizeof(action));
    action.sa_handler = take_alarm; /* without SA_RESTART */
    sigaction(SIGALRM, &action, NULL);
    const struct timeval period = {0, order.alarm_usec};
    const struct itimerval timer = {period, period};
    setitimer(ITIMER_REAL, &timer, NULL);
}

/* A program that does not end is killed. */
static void limit_time(void) {
    struct sigevent event;
    memset(&event, 0, sizeof(event));
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = SIGKILL;
    timer_t timer;
    const struct itimerspec limit = {{0, 0}, {time_limit_seconds, 0}};
    if (timer_create(CLOCK_MONOTONIC, &event, &timer) == 0) {
        timer_settime(timer, 0, &limit, NULL);
    }
}

static int error_of(const char* name) {
    for (int error = 1; error < 134; ++error) {
        const char* known = strerrorname_np(error);
        if (known != NULL && strcmp(known, name) == 0) {
            return error;
        }
    }
    return 0;
}

__attribute__((constructor)) static void start(void) {
    const char* text = getenv("FAULT");
    if (text == NULL ||
        sscanf(text, "%63s %15s %d %15s %d %d", order.outfile, order.call, &order.at,
               order.error_name, &order.in_child, &order.alarm_usec) != 6) {
        return;
    }
    order.error = error_of(order.error_name);
    unsetenv("FAULT");
    unsetenv("LD_PRELOAD");
    void* mapped =
        mmap(NULL, sizeof(*outcome), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) {
        return;
    }
    limit_time();
    descriptors_before = count_descriptors();
    outcome = mapped;
    if (order.alarm_usec > 0) {
        start_alarms();
    }
    errno = 0; /* as it is when nothing is preloaded */
}

__attribute__((destructor)) static void finish(void) {
    if (outcome == NULL || in_child) {
        return;
    }
    const struct itimerval never = {{0, 0}, {0, 0}};
    setitimer(ITIMER_REAL, &never, NULL);
    const struct outcome seen = *outcome;
    outcome = NULL; /* what follows is not the program's */
    const int more = count_descriptors() - descriptors_before;
    const int children_left = waitpid(-1, NULL, WNOHANG) >= 0;
    const int fd = open(order.outfile, O_WRONLY | O_CLOEXEC);
    dprintf(fd, "%d %d %d %d %s\n", seen.hit, more, children_left, seen.alarms, seen.subject);
    close(fd);
}
