// load REPORT SHARED LOCKED FILES THREADS MEMORY WAIT BURN: a server's work in little, known to the
// last thread: each kind in a process of its own, so that the one that meets a limit fails alone.
// MiB of shared, locked and other memory; two processors are busy for BURN seconds, WAIT after the
// start. Writes to the file REPORT what each could get, and "up" when all have said it. Ends on
// SIGTERM. Knows nothing of who measures or limits it.
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

enum { MIB = 1 << 20, NOBODY = 65534, KINDS = 7, SIZED_KINDS = 5, REPORT = 2 };

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

// The largest comes last of the sized ones, so that it is the one that meets the limit of the
// whole.
static struct kind kinds[KINDS] = {
    {"shared", more_shared, 0, 0},        {"locked", more_locked, 0, 0},
    {"files", more_descriptors, 3, 0},    {"threads", more_threads, 1, 0},
    {"memory", more_memory, 0, 0},        {"processor1", more_processor, 0, 1},
    {"processor2", more_processor, 0, 1},
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

// Says what it got, waits for the next one to be started, and stays.
static void be(struct kind* kind) {
    char name[16];
    snprintf(name, sizeof name, "load-%s", kind->name);
    prctl(PR_SET_NAME, name);
    signal(SIGTERM, SIG_DFL);
    // Nobody's: root would be above the limits on locked memory.
    if (setgroups(0, NULL) != 0 || setgid(NOBODY) != 0 || setuid(NOBODY) != 0) {
        _exit(1);
    }
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // forgotten when the user changes
    while (kind->got < kind->wanted && kind->more()) {
        kind->got++;
    }
    const bool all = kind->got >= kind->wanted;
    dprintf(REPORT, "%s %ld of %ld%s%s\n", kind->name, kind->got, kind->wanted, all ? "" : ": ",
            all ? "" : strerror(errno));
    raise(SIGSTOP);
    if (kind->more == more_processor) {
        burn();
    }
    sleep_on(NULL);
}

static void start(struct kind* kind) {
    const pid_t process = fork();
    if (process == 0) {
        be(kind);
    }
    if (process < 0) {
        dprintf(REPORT, "%s 0 of %ld: %s\n", kind->name, kind->wanted, strerror(errno));
        return;
    }
    waitpid(process, NULL, WUNTRACED);
    kill(process, SIGCONT);
}

static void end(int signal_number) {
    (void)signal_number;
    unlink(shared_file);
    _exit(0);
}

int main(int argc, char** argv) {
    const int report =
        argc == 9 ? open(argv[1], O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0644) : -1;
    if (report < 0) {
        fputs("usage: load REPORT SHARED LOCKED FILES THREADS MEMORY WAIT BURN\n", stderr);
        return 2;
    }
    // The descriptors of each are these: 0, 1 and the report.
    dup2(report, REPORT);
    close_range(REPORT + 1, ~0U, 0);
    begin_burning = time(NULL) + atol(argv[7]);
    end_burning = begin_burning + atol(argv[8]);
    unlink(shared_file);
    signal(SIGTERM, end);  // the first process of a container would not be ended without
    for (int i = 0; i < KINDS; i++) {
        if (i < SIZED_KINDS) {
            kinds[i].wanted = atol(argv[2 + i]);
        }
        start(&kinds[i]);
    }
    dprintf(REPORT, "up\n");
    sleep_on(NULL);
}
