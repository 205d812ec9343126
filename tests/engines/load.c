// load REPORT [NAME=NUMBER]...: a server's work in little, known to the last thread: each kind in a
// process of its own, so that the one that meets a limit fails alone. Writes to the file REPORT
// what each could get, "up" when all have said it, and later who was killed. Ends on SIGTERM. Knows
// nothing of who measures or limits it.
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <grp.h>
#include <limits.h>
#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

enum { MIB = 1 << 20, NOBODY = 65534, KINDS = 7 };

static long seconds_now(void) {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec;
}

// Each kind gets as much as it can of what is wanted, returns how much, and leaves the reason for
// less in errno.

static void* sleep_on(void* thread) {
    while (pause() != 0) {  // whatever wakes it
    }
    return thread;
}

static long get_threads(long wanted) {
    long got = 1;
    pthread_attr_t small;
    pthread_t thread;
    pthread_attr_init(&small);
    pthread_attr_setstacksize(&small, PTHREAD_STACK_MIN);
    while (got < wanted && (errno = pthread_create(&thread, &small, sleep_on, NULL)) == 0) {
        got++;
    }
    return got;
}

static long get_descriptors(long wanted) {
    long got = 3;
    while (got < wanted && dup(0) >= 0) {
        got++;
    }
    return got;
}

static long get_memory(long mib) {
    long got = 0;
    for (char* piece; got < mib; got++) {
        if ((piece = mmap(NULL, MIB, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) ==
            MAP_FAILED) {
            break;
        }
        memset(piece, 1, MIB);
    }
    return got;
}

static long get_locked(long mib) {
    long got = 0;
    for (char* piece; got < mib; got++) {
        piece = mmap(NULL, MIB, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (piece == MAP_FAILED || mlock(piece, MIB) != 0) {
            break;
        }
    }
    return got;
}

static long get_shared(long mib) {
    static char piece[MIB];
    const char* name = "/dev/shm/load";
    long got = 0;
    memset(piece, 1, sizeof piece);
    unlink(name);
    int file = open(name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    while (file >= 0 && got < mib && write(file, piece, MIB) == MIB) {
        got++;
    }
    return got;
}

static long begin_burning;  // since the boot
static long end_burning;

static long get_processor(long unused) {
    (void)unused;
    return 1;
}

struct kind {
    const char* name;
    long wanted;
    long (*get)(long wanted);
    pid_t process;
};

// The largest comes last, so that it is the one that meets the limit of the whole.
static struct kind kinds[KINDS] = {
    {"shared", 0, get_shared, 0},        {"locked", 0, get_locked, 0},
    {"files", 0, get_descriptors, 0},    {"threads", 0, get_threads, 0},
    {"processor1", 1, get_processor, 0}, {"processor2", 1, get_processor, 0},
    {"memory", 0, get_memory, 0},
};

static void live_on(const struct kind* kind) {
    if (kind->get != get_processor) {
        sleep_on(NULL);
    }
    while (seconds_now() < begin_burning) {
        sleep(1);
    }
    while (seconds_now() < end_burning) {
        for (volatile int turn = 0; turn < 1000000; turn++) {
        }
    }
    sleep_on(NULL);
}

static void be(const struct kind* kind, int report) {
    char name[16];
    char line[128];
    snprintf(name, sizeof name, "load-%s", kind->name);
    prctl(PR_SET_NAME, name);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    signal(SIGTERM, SIG_DFL);
    // Nobody's: root would be above the limits on locked memory.
    if (setgroups(0, NULL) != 0 || setgid(NOBODY) != 0 || setuid(NOBODY) != 0) {
        _exit(1);
    }
    // Its descriptors are to be these: 0, 1, and the pipe as 2.
    dup2(report, 2);
    close_range(3, ~0U, 0);
    errno = 0;
    long got = kind->get(kind->wanted);
    int length =
        snprintf(line, sizeof line, "%s %ld of %ld%s%s\n", kind->name, got, kind->wanted,
                 got < kind->wanted ? ": " : "", got < kind->wanted ? strerror(errno) : "");
    if (write(2, line, (size_t)length) != length) {
        _exit(1);
    }
    live_on(kind);
}

static void start(struct kind* kind, FILE* report) {
    int ends[2];
    char line[128];
    if (pipe(ends) != 0 || (kind->process = fork()) < 0) {
        fprintf(report, "%s 0 of %ld: %s\n", kind->name, kind->wanted, strerror(errno));
        return;
    }
    if (kind->process == 0) {
        be(kind, ends[1]);
    }
    close(ends[1]);
    ssize_t length = read(ends[0], line, sizeof line);
    if (length > 0) {
        fwrite(line, 1, (size_t)length, report);
    }
    // The reading end stays open: the writing one is among the descriptors that were counted.
}

static const char* name_of(pid_t process) {
    for (int i = 0; i < KINDS; i++) {
        if (kinds[i].process == process) {
            return kinds[i].name;
        }
    }
    return "a stranger";
}

static volatile sig_atomic_t ended;

static void end(int signal_number) {
    ended = signal_number;
}

static void read_wishes(char** wishes) {
    for (; *wishes != NULL; wishes++) {
        char* value = strchr(*wishes, '=');
        if (value == NULL) {
            continue;
        }
        *value++ = '\0';
        for (int i = 0; i < KINDS; i++) {
            if (strcmp(kinds[i].name, *wishes) == 0) {
                kinds[i].wanted = atol(value);
            }
        }
        if (strcmp(*wishes, "burn_after") == 0) {
            begin_burning = seconds_now() + atol(value);
        } else if (strcmp(*wishes, "burn_for") == 0) {
            end_burning = begin_burning + atol(value);
        }
    }
}

int main(int argc, char** argv) {
    FILE* report = argc < 2 ? NULL : fopen(argv[1], "we");
    if (report == NULL) {
        fputs("usage: load REPORT [NAME=NUMBER]...\n", stderr);
        return 2;
    }
    setvbuf(report, NULL, _IOLBF, 0);
    read_wishes(argv + 2);
    struct sigaction action = {.sa_handler = end};
    sigaction(SIGTERM, &action,
              NULL);  // the first process of a container would not be ended without
    sigaction(SIGINT, &action, NULL);
    for (int i = 0; i < KINDS; i++) {
        if (kinds[i].wanted > 0) {
            start(&kinds[i], report);
        }
    }
    fputs("up\n", report);
    while (!ended) {
        int status;
        pid_t gone = waitpid(-1, &status, 0);
        if (gone > 0 && WIFSIGNALED(status)) {
            fprintf(report, "%s was killed by signal %d\n", name_of(gone), WTERMSIG(status));
        } else if (gone < 0 && errno == ECHILD) {
            pause();
        }
    }
    unlink("/dev/shm/load");
    return 0;
}
