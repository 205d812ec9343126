// load REPORT [NAME=NUMBER]...: a server's work in little, known to the last thread: each kind in a
// process of its own, so that the one that meets a limit fails alone. Writes to the file REPORT
// what each could get, "up" when all have said it, and later that one was killed. Ends on SIGTERM.
// Knows nothing of who measures or limits it.
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <grp.h>
#include <limits.h>
#include <pthread.h>
#include <signal.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

enum { MIB = 1 << 20, NOBODY = 65534, KINDS = 7 };

static const char* const shared_file = "/dev/shm/load";
static char piece[MIB];

// Each of these gets one more of its kind, or leaves the reason in errno.

static void* sleep_on(void* thread) {
    while (pause() != 0) {  // whatever wakes it
    }
    return thread;
}

static bool more_threads(void) {
    pthread_attr_t small;
    pthread_t thread;
    pthread_attr_init(&small);
    pthread_attr_setstacksize(&small, PTHREAD_STACK_MIN);
    return (errno = pthread_create(&thread, &small, sleep_on, NULL)) == 0;
}

static bool more_descriptors(void) {
    return dup(0) >= 0;
}

static void* new_mib(void) {
    return mmap(NULL, MIB, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
}

static bool more_memory(void) {
    void* mib = new_mib();
    return mib != MAP_FAILED && memset(mib, 1, MIB) != NULL;
}

static bool more_locked(void) {
    void* mib = new_mib();
    return mib != MAP_FAILED && mlock(mib, MIB) == 0;
}

static bool more_shared(void) {
    static int file = -1;
    if (file < 0) {
        file = open(shared_file, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    }
    return write(file, piece, MIB) == MIB;
}

static bool more_processor(void) {
    return true;
}

struct kind {
    const char* name;
    bool (*more)(void);
    long got;
    long wanted;
};

// The largest comes last, so that it is the one that meets the limit of the whole.
static struct kind kinds[KINDS] = {
    {"shared", more_shared, 0, 0},        {"locked", more_locked, 0, 0},
    {"files", more_descriptors, 3, 0},    {"threads", more_threads, 1, 0},
    {"processor1", more_processor, 0, 1}, {"processor2", more_processor, 0, 1},
    {"memory", more_memory, 0, 0},
};

static time_t begin_burning;
static time_t end_burning;

static void burn(void) {
    while (time(NULL) < begin_burning) {
        sleep(1);
    }
    while (time(NULL) < end_burning) {
        for (volatile int turn = 0; turn < 1000000; turn++) {
        }
    }
}

static void be(struct kind* kind, int report) {
    char name[16];
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
    while (kind->got < kind->wanted && kind->more()) {
        kind->got++;
    }
    const bool all = kind->got >= kind->wanted;
    dprintf(2, "%s %ld of %ld%s%s\n", kind->name, kind->got, kind->wanted, all ? "" : ": ",
            all ? "" : strerror(errno));
    if (kind->more == more_processor) {
        burn();
    }
    sleep_on(NULL);
}

static void start(struct kind* kind, FILE* report) {
    int ends[2];
    char line[128];
    const pid_t process = pipe(ends) == 0 ? fork() : -1;
    if (process == 0) {
        be(kind, ends[1]);
    }
    if (process < 0) {
        fprintf(report, "%s 0 of %ld: %s\n", kind->name, kind->wanted, strerror(errno));
        return;
    }
    close(ends[1]);
    // The reading end stays open: the writing one is among the descriptors that were counted.
    FILE* said = fdopen(ends[0], "r");
    if (said != NULL && fgets(line, sizeof line, said) != NULL) {
        fputs(line, report);
    }
}

static long number_of(const char* name, char** wishes, long otherwise) {
    const size_t length = strlen(name);
    for (; *wishes != NULL; wishes++) {
        if (strncmp(*wishes, name, length) == 0 && (*wishes)[length] == '=') {
            return atol(*wishes + length + 1);
        }
    }
    return otherwise;
}

static void end(int signal_number) {
    (void)signal_number;
    unlink(shared_file);
    _exit(0);
}

int main(int argc, char** argv) {
    FILE* report = argc < 2 ? NULL : fopen(argv[1], "we");
    if (report == NULL) {
        fputs("usage: load REPORT [NAME=NUMBER]...\n", stderr);
        return 2;
    }
    setvbuf(report, NULL, _IOLBF, 0);
    begin_burning = time(NULL) + number_of("burn_after", argv + 2, 0);
    end_burning = begin_burning + number_of("burn_for", argv + 2, 0);
    unlink(shared_file);
    signal(SIGTERM, end);  // the first process of a container would not be ended without
    for (struct kind* kind = kinds; kind < kinds + KINDS; kind++) {
        kind->wanted = number_of(kind->name, argv + 2, kind->wanted);
        if (kind->wanted > 0) {
            start(kind, report);
        }
    }
    fputs("up\n", report);
    for (int status; waitpid(-1, &status, 0) > 0;) {
        if (WIFSIGNALED(status)) {
            fprintf(report, "one was killed by signal %d\n", WTERMSIG(status));
        }
    }
    sleep_on(NULL);
}
