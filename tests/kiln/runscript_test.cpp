#include "kiln/runscript.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/syscall.h>

#include "kiln/close_descriptors.h"
#include "kiln/paths.h"
#include "kiln/sig_mask.h"
#include "tests/kiln/kiln_support.h"

namespace {

int pipes_left = -1;  // below 0 for any number

}  // namespace

// The runner's calls come here instead of to the C library.
extern "C" int pipe2(int fds[2], int flags) noexcept {
    errno = ENFILE;
    return pipes_left-- == 0 ? -1 : static_cast<int>(syscall(SYS_pipe2, fds, flags));
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
    const std::size_t much = 100000000;
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
        {"head -c 100000000 /dev/zero & tr '\\0' e </dev/zero | head -c 100000000 >&2; wait; exit "
         "6",
         6, std::string(much, '\0'), std::string(much, 'e')},
    };
    const auto before = open_descriptors();
    for (const Case& c : cases) {
        EXPECT_TRUE(gives(c.command, c.status, c.out, c.err)) << c.command;
    }
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_FALSE(has_children());
}

TEST(Runscript, NeitherMissingNorExtraDescriptorsReachTheCommand) {
    for (int closed = 0; closed < 8; ++closed) {
        EXPECT_TRUE(in_helper_process([closed] {
            dup2(2, 200);
            for (int fd = 0; fd < 3; ++fd) {
                if ((closed & (1 << fd)) != 0) {
                    close(fd);
                }
            }
            const auto before = open_descriptors();
            // 0 is the directory that ls itself has opened.
            return gives("echo a; echo b >&2; read x || exit 4", 4, "a\n", "b\n") &&
                   gives("ls /proc/self/fd", 0, "0\n1\n2\n", "") && open_descriptors() == before;
        })) << "closed descriptors "
            << closed;
    }
}

TEST(Runscript, RestoresTheSignalStateItFound) {
    EXPECT_TRUE(in_helper_process([] {
        const auto custom = [](int) {};
        std::signal(SIGCHLD, SIG_IGN);
        std::signal(SIGPIPE, custom);
        Kiln::SigMask mask(std::vector<int>{SIGCHLD});
        mask.block();
        const std::string blocked = mask.dump();
        return gives("echo x; exit 3", 3, "x\n", "") &&  // although children are ignored
               mask.dump() == blocked && std::signal(SIGCHLD, SIG_DFL) == SIG_IGN &&
               std::signal(SIGPIPE, SIG_DFL) == custom;
    }));
}

TEST(Runscript, FailuresOfTheMachineryAreToldInTheErrorText) {
    EXPECT_TRUE(in_helper_process([] {
        const std::string text = "[Caller] Generic error. ";
        dup2(dup(2), 500);
        Kiln::close_descriptors_one_by_one(
            3, Kiln::Paths().own_descriptors);  // the way of old kernels
        pipes_left = 1;
        const bool no_pipe =
            gives("true", -1, "",
                  text + "Can't create pipe for callee's 2 fd: Too many open files in system");
        const bool given_back = open_descriptors() == std::set<std::string>{"0", "1", "2", "3"};
        const rlimit none = {0, 0};
        setrlimit(RLIMIT_NPROC, &none);
        const bool bound = getuid() != 0 || setuid(65534) == 0;  // root is not
        return no_pipe && given_back && bound &&
               gives("true", -1, "", text + "Fork returned: Resource temporarily unavailable");
    }));
}

}  // namespace
