#include "kiln/runscript.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <string>

#include "kiln/close_descriptors.h"
#include "tests/kiln/kiln_support.h"

namespace {

// Makes a system call fail once, after so many that succeed.
struct Fault {
    int successes = -1;
    int error = 0;

    bool strikes() {
        if (successes < 0 || successes-- > 0)
            return false;
        errno = error;
        return true;
    }
};

Fault pipe_fault;
Fault wait_fault;

}  // namespace

// The runner's calls come here instead of to the C library.
extern "C" int pipe2(int fds[2], int flags) noexcept {
    return pipe_fault.strikes() ? -1 : static_cast<int>(syscall(SYS_pipe2, fds, flags));
}

extern "C" pid_t waitpid(pid_t pid, int* status, int options) {
    return wait_fault.strikes() ? -1 : wait4(pid, status, options, nullptr);
}

namespace {

struct Result {
    int status;
    std::string out;
    std::string err;
};

Result run(const std::string& command) {
    Result result = {0, "old", "old"};
    result.status = runscript(command, result.out, result.err);
    return result;
}

bool is(const Result& result, int status, const std::string& out, const std::string& err) {
    return result.status == status && result.out == out && result.err == err;
}

TEST(Runscript, GivesStatusAndBothOutputsOfThatCommandOnly) {
    struct Case {
        const char* command;
        int status;
        std::string out;
        std::string err;
    };
    const Case cases[] = {
        {"exit 3", 3, "", ""},
        {"exit 255", 255, "", ""},
        {"kill -9 $$", -1, "", ""},
        {"echo a; echo b >&2", 0, "a\n", "b\n"},
        {"printf '\\000a\\000'; printf '\\000' >&2", 0, std::string("\0a\0", 3),
         std::string(1, '\0')},
        {"read line || echo closed", 0, "closed\n", ""},
        // The caller waits for whoever holds an output open.
        {"(sleep 0.3; echo late) & exit 2", 2, "late\n", ""},
        // The outputs end before the command does.
        {"exec >&- 2>&-; sleep 0.2; exit 7", 7, "", ""},
    };
    const std::set<int> before = open_descriptors();
    for (const Case& c : cases)
        EXPECT_TRUE(is(run(c.command), c.status, c.out, c.err)) << c.command;
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_FALSE(has_children());
}

TEST(Runscript, LongCommandLinesRunOrAreRefusedByTheSystem) {
    EXPECT_TRUE(
        is(run("echo " + std::string(100000, 'x')), 0, std::string(100000, 'x') + "\n", ""));
    const Result refused =
        run("echo " + std::string(200000, 'x'));  // one argument may have 128 KiB
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.err.find("Can't execute sh: Argument list too long\n"), std::string::npos);
}

TEST(Runscript, HundredMegabytesOnBothOutputsAtOnceArriveWhole) {
    constexpr std::size_t size = 100000000;
    const Result result =
        run("head -c 100000000 /dev/zero >&2 & yes 123456789 | head -c 100000000; wait; exit 6");
    EXPECT_EQ(result.status, 6);
    EXPECT_EQ(result.err, std::string(size, '\0'));
    ASSERT_EQ(result.out.size(), size);
    std::size_t wrong = 0;
    for (std::size_t i = 0; i < size; ++i)
        wrong += result.out[i] != "123456789\n"[i % 10] ? 1U : 0U;
    EXPECT_EQ(wrong, 0U);
}

TEST(Runscript, NeitherMissingNorExtraDescriptorsReachTheCommand) {
    for (int closed = 0; closed < 8; ++closed) {
        const int failed = in_helper_process([closed] {
            for (const int fd : {9, 200})
                dup2(2, fd);
            for (int fd = 0; fd < 3; ++fd) {
                if ((closed & (1 << fd)) != 0)
                    close(fd);
            }
            const std::set<int> before = open_descriptors();
            if (!is(run("echo a; echo b >&2; read x || exit 4"), 4, "a\n", "b\n"))
                return 1;
            // 0 is the directory that ls itself has opened.
            return is(run("ls /proc/self/fd"), 0, "0\n1\n2\n", "") && open_descriptors() == before
                       ? 0
                       : 2;
        });
        EXPECT_EQ(failed, 0) << "closed descriptors " << closed;
    }
}

TEST(Runscript, ASignalStormChangesNothing) {
    {
        const SignalStorm storm;
        for (int i = 0; i < 150; ++i) {
            EXPECT_TRUE(is(run("exit 3"), 3, "", ""));
            EXPECT_TRUE(is(run("echo a; echo b >&2; exit 5"), 5, "a\n", "b\n"));
        }
        const Result large = run("head -c 3000000 /dev/zero; exit 9");
        EXPECT_EQ(large.status, 9);
        EXPECT_EQ(large.out.size(), 3000000U);
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), 0) << "a zombie beside the sender of the signals";
    }
    // A lone one, sent while the child has its outputs closed and still runs.
    EXPECT_TRUE(is(run("kill -CHLD $PPID; exec >&- 2>&-; sleep 0.2; exit 6"), 6, "", ""));
    EXPECT_FALSE(has_children());
}

TEST(Runscript, RestoresTheSignalStateItFound) {
    struct sigaction custom = {};
    struct sigaction previous[2] = {};
    custom.sa_handler = SIG_IGN;
    sigaction(SIGCHLD, &custom, &previous[0]);
    custom.sa_handler = [](int) {};
    sigaction(SIGPIPE, &custom, &previous[1]);
    sigset_t chld;
    sigset_t mask;
    sigemptyset(&chld);
    sigaddset(&chld, SIGCHLD);
    sigprocmask(SIG_BLOCK, &chld, nullptr);

    EXPECT_TRUE(is(run("echo x; exit 3"), 3, "x\n", ""));  // the status is known although ignored

    sigprocmask(SIG_UNBLOCK, &chld, &mask);
    EXPECT_EQ(sigismember(&mask, SIGCHLD), 1);
    struct sigaction after = {};
    sigaction(SIGCHLD, &previous[0], &after);
    EXPECT_EQ(after.sa_handler, SIG_IGN);
    sigaction(SIGPIPE, &previous[1], &after);
    EXPECT_EQ(after.sa_handler, custom.sa_handler);
}

TEST(Runscript, FailuresOfTheMachineryAreToldInTheErrorText) {
    const std::string text = "[Caller] Generic error. ";
    const std::string pipe_text = text + "Can't create pipe for callee's ";
    const std::set<int> before = open_descriptors();
    const int failed = in_helper_process([&] {
        pipe_fault = {0, EMFILE};
        if (!is(run("true"), -1, "", pipe_text + "1 fd: Too many open files"))
            return 1;
        pipe_fault = {1, ENFILE};
        if (!is(run("true"), -1, "", pipe_text + "2 fd: Too many open files in system"))
            return 2;
        wait_fault = {0, EINVAL};
        if (!is(run("true"), -1, "", text + "waitpid returned -1: Invalid argument"))
            return 3;
        if (open_descriptors() != before || has_children())
            return 4;
        if (getuid() == 0 && setuid(65534) != 0)  // root may have any number of processes
            return 5;
        const rlimit none = {0, 0};
        setrlimit(RLIMIT_NPROC, &none);
        const std::string refused = "Fork returned: Resource temporarily unavailable";
        return is(run("true"), -1, "", text + refused) ? 0 : 6;
    });
    EXPECT_EQ(failed, 0);
}

TEST(Runscript, OneWrongAnswerAboutTheChildLosesNothing) {
    wait_fault = {0, ECHILD};
    EXPECT_TRUE(is(run("echo a; exit 3"), 3, "a\n", ""));
    EXPECT_FALSE(has_children());
}

TEST(CloseDescriptors, BothWaysLeaveOnlyTheLowerOnes) {
    for (const auto close_from :
         {Kiln::close_descriptors_from, Kiln::close_descriptors_one_by_one}) {
        const int failed = in_helper_process([close_from] {
            for (const int fd : {3, 4, 7, 100, 500})
                dup2(2, fd);
            close_from(4);
            return open_descriptors() == std::set<int>{0, 1, 2, 3} ? 0 : 1;
        });
        EXPECT_EQ(failed, 0);
    }
}

}  // namespace
