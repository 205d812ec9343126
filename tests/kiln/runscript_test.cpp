#include "kiln/runscript.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/syscall.h>

#include "kiln/close_descriptors.h"
#include "tests/kiln/kiln_support.h"

namespace {

// Makes a system call fail once, after so many that succeed.
struct Fault {
    int successes = -1;
    int error = 0;

    bool strikes() {
        if (successes < 0 || successes-- > 0) {
            return false;
        }
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

// Whether the command ends with this status and writes this and nothing else.
bool gives(const std::string& command, int status, const std::string& out, const std::string& err) {
    std::string actual_out = "old";
    std::string actual_err = "old";
    return runscript(command, actual_out, actual_err) == status && actual_out == out &&
           actual_err == err;
}

TEST(Runscript, GivesStatusAndBothOutputsOfThatCommandOnly) {
    struct Case {
        const char* command;
        int status;
        std::string out;
        std::string err;
    };
    const Case cases[] = {
        {"exit 255", 255, "", ""},
        {"kill -9 $$", -1, "", ""},
        {"read line || echo closed", 0, "closed\n", ""},
        // The caller waits for whoever holds an output open.
        {"(sleep 0.3; echo late) & exit 2", 2, "late\n", ""},
        // The outputs end before the command does, and a lone signal is no sign of its end.
        {"kill -CHLD $PPID; exec >&- 2>&-; sleep 0.2; exit 7", 7, "", ""},
    };
    const std::set<int> before = open_descriptors();
    for (const Case& c : cases) {
        EXPECT_TRUE(gives(c.command, c.status, c.out, c.err)) << c.command;
    }
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_FALSE(has_children());
}

TEST(Runscript, HundredMegabytesOnBothOutputsAtOnceArriveWhole) {
    std::string text;
    while (text.size() < 100000000) {
        text += "123456789\n";
    }
    EXPECT_TRUE(
        gives("head -c 100000000 /dev/zero >&2 & yes 123456789 | head -c 100000000; wait; exit 6",
              6, text, std::string(100000000, '\0')));
}

TEST(Runscript, NeitherMissingNorExtraDescriptorsReachTheCommand) {
    for (int closed = 0; closed < 8; ++closed) {
        const int failed = in_helper_process([closed] {
            dup2(2, 200);
            for (int fd = 0; fd < 3; ++fd) {
                if ((closed & (1 << fd)) != 0) {
                    close(fd);
                }
            }
            const std::set<int> before = open_descriptors();
            // 0 is the directory that ls itself has opened.
            return gives("echo a; echo b >&2; read x || exit 4", 4, "a\n", "b\n") &&
                           gives("ls /proc/self/fd", 0, "0\n1\n2\n", "") &&
                           open_descriptors() == before
                       ? 0
                       : 1;
        });
        EXPECT_EQ(failed, 0) << "closed descriptors " << closed;
    }
}

// The usual way is seen in the commands above.
TEST(CloseDescriptors, OneByOneLeavesOnlyTheLowerOnes) {
    const int failed = in_helper_process([] {
        for (const int fd : {3, 4, 7, 500}) {
            dup2(2, fd);
        }
        Kiln::close_descriptors_one_by_one(4);
        return open_descriptors() == std::set<int>{0, 1, 2, 3} ? 0 : 1;
    });
    EXPECT_EQ(failed, 0);
}

TEST(Runscript, ASignalStormChangesNothing) {
    const SignalStorm storm;
    for (int i = 0; i < 150; ++i) {
        EXPECT_TRUE(gives("exit 3", 3, "", ""));
        EXPECT_TRUE(gives("echo a; echo b >&2; exit 5", 5, "a\n", "b\n"));
    }
    EXPECT_TRUE(gives("head -c 3000000 /dev/zero; exit 9", 9, std::string(3000000, '\0'), ""));
    EXPECT_FALSE(has_children());
}

TEST(Runscript, RestoresTheSignalStateItFound) {
    const int failed = in_helper_process([] {
        std::signal(SIGCHLD, SIG_IGN);
        const auto custom = [](int) {};
        std::signal(SIGPIPE, custom);
        sigset_t chld;
        sigset_t mask;
        sigemptyset(&chld);
        sigaddset(&chld, SIGCHLD);
        sigprocmask(SIG_BLOCK, &chld, nullptr);
        const bool known = gives("echo x; exit 3", 3, "x\n", "");  // although children are ignored
        sigprocmask(SIG_BLOCK, nullptr, &mask);
        const bool restored = sigismember(&mask, SIGCHLD) == 1 &&
                              std::signal(SIGCHLD, SIG_DFL) == SIG_IGN &&
                              std::signal(SIGPIPE, SIG_DFL) == custom;
        return known && restored ? 0 : 1;
    });
    EXPECT_EQ(failed, 0);
}

TEST(Runscript, FailuresOfTheMachineryAreToldInTheErrorText) {
    const std::string text = "[Caller] Generic error. ";
    const int failed = in_helper_process([&] {
        const std::set<int> before = open_descriptors();
        pipe_fault = {1, ENFILE};
        if (!gives("true", -1, "",
                   text + "Can't create pipe for callee's 2 fd: Too many open files in system")) {
            return 1;
        }
        wait_fault = {0, EINVAL};
        if (!gives("true", -1, "", text + "waitpid returned -1: Invalid argument")) {
            return 2;
        }
        if (open_descriptors() != before || has_children()) {
            return 3;
        }
        const rlimit none = {0, 0};
        setrlimit(RLIMIT_NPROC, &none);
        if (getuid() == 0 && setuid(65534) != 0) {  // root may have any number of processes
            return 4;
        }
        const std::string refused = "Fork returned: Resource temporarily unavailable";
        return gives("true", -1, "", text + refused) ? 0 : 5;
    });
    EXPECT_EQ(failed, 0);
}

TEST(Runscript, OneWrongAnswerAboutTheChildLosesNothing) {
    wait_fault = {0, ECHILD};
    EXPECT_TRUE(gives("echo a; exit 3", 3, "a\n", ""));
    EXPECT_FALSE(has_children());
}

}  // namespace
