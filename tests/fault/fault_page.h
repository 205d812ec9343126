/* What the fault test and the library that it preloads into the program share: one page of memory.
 * The test fills the first half before a run, the library the second half during it. */
#ifndef TESTS_FAULT_FAULT_PAGE_H
#define TESTS_FAULT_FAULT_PAGE_H

/* The environment variable that names the file to map. */
#define FAULT_PAGE_VARIABLE "FAULT_PAGE"

/* The calls that can be made to fail, each a function of the C library. */
#define FAULT_CALLS(X) \
    X(open)            \
    X(read)            \
    X(write)           \
    X(close)           \
    X(pipe2)           \
    X(fork)            \
    X(dup2)            \
    X(execve)          \
    X(fcntl)           \
    X(ppoll)           \
    X(waitpid)         \
    X(nanosleep)       \
    X(opendir)         \
    X(setmntent)       \
    X(fdopen)          \
    X(scandir)         \
    X(stat)            \
    X(access)          \
    X(gethostname)     \
    X(sysconf)         \
    X(socket)          \
    X(setsockopt)      \
    X(bind)            \
    X(getsockname)     \
    X(sendto)          \
    X(recvmsg)         \
    X(sem_init)        \
    X(malloc)          \
    X(calloc)          \
    X(realloc)         \
    X(strdup)

enum fault_call {
    FAULT_NONE,
#define FAULT_ID(name) FAULT_##name,
    FAULT_CALLS(FAULT_ID)
#undef FAULT_ID
};

struct fault_page {
    /* The order: the at-th of these calls fails with that system error, in the program itself or in
     * the children that it forks, before they become another program. at 0 only counts. With the
     * error 0 read(), write() and recvmsg() succeed with less than they were asked for. The four of
     * malloc() and its kind count only while libtarnnet is at work. */
    int call;
    int at;
    int error;
    int in_child;
    int alarm_usec; /* let SIGALRM interrupt the program this often; 0 for never */

    /* The outcome. */
    int calls;        /* how many there were */
    int hit;          /* one of them failed */
    char subject[64]; /* the path that the failed call was given or its descriptor came from, or
                         nothing */
    int alarms;       /* how many the program took */
    int finished;     /* the program ended by exit */
    int descriptors_before; /* open ones at its start and at its end */
    int descriptors_after;
    int children_left; /* it ended with a child that it had not waited for */
};

#endif
