#include "kiln/runscript.h"

#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/syscall.h>

#include "kiln/close_descriptors.h"
#include "kiln/file_size_signal.h"
#include "kiln/paths.h"
#include "kiln/sig_mask.h"
#include "tests/kiln/kiln_support.h"

namespace {

// How many of these calls still succeed; below 0 for any number.
int pipes_left = -1;
int sigactions_left = -1;

}  // namespace

// The runner's calls come here instead of to the C library.
extern "C" int pipe2(int fds[2], int flags) noexcept {
    errno = ENFILE;
    return pipes_left-- == 0 ? -1 : static_cast<int>(syscall(SYS_pipe2, fds, flags));
}
extern "C" int sigaction(int number, const struct sigaction* action,
                         struct sigaction* old) noexcept {
    static auto* const real =
        reinterpret_cast<int (*)(int, const struct sigaction*, struct sigaction*)>(
            dlsym(RTLD_NEXT, "sigaction"));
    errno = EPERM;
    return sigactions_left-- == 0 ? -1 : real(number, action, old);
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
    const std::size_t much = 5000000;
    const std::tuple<const char*, int, std::string, std::string> cases[] = {
        {"exit 255", 255, "", ""},
        {"kill -9 $$", -1, "", ""},
        {"read line || echo closed", 0, "closed\n", ""},
        // The caller waits for whoever holds an output open.
        {"(sleep 0.3; echo late) & exit 2", 2, "late\n", ""},
        // The outputs end before the command does, and a lone signal is no sign of its end.
        {"kill -CHLD $PPID; exec >&- 2>&-; sleep 0.2; exit 7", 7, "", ""},
        {"head -c 5000000 /dev/zero & yes '' | head -c 5000000 >&2; wait; exit 6", 6,
         std::string(much, '\0'), std::string(much, '\n')},
    };
    const auto before = open_descriptors();
    for (const auto& [command, status, out, err] : cases) {
        EXPECT_TRUE(gives(command, status, out, err)) << command;
    }
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_FALSE(has_children());
}

TEST(Runscript, NeitherMissingNorExtraDescriptorsReachTheCommand) {
    for (int closed = 0; closed < 8; ++closed) {
        EXPECT_TRUE(in_helper_process([closed] {
            dup2(2, 200);
            for (int fd = 0; fd < 3; ++fd) {
                close((closed & (1 << fd)) != 0 ? fd : -1);
            }
            const auto before = open_descriptors();
            // 0 is the directory that ls itself has opened.
            return gives("echo a; echo b >&2; read x || exit 4", 4, "a\n", "b\n") &&
                   gives("ls /proc/self/fd", 0, "0\n1\n2\n", "") && open_descriptors() == before;
        })) << "closed descriptors "
            << closed;
    }
}

TEST(Runscript, RestoresTheSignalStateItFoundAndGivesItToTheCommand) {
    EXPECT_TRUE(in_helper_process([] {
        const auto custom = [](int) {};
        std::signal(SIGCHLD, SIG_IGN);
        std::signal(SIGPIPE, custom);
        std::signal(SIGXFSZ, SIG_DFL);
        Kiln::ignore_file_size_signal();
        Kiln::ignore_file_size_signal();  // does not take its own doing for what was there
        Kiln::SigMask mask(std::vector<int>{SIGCHLD});
        mask.block();
        const std::string blocked = mask.dump();
        return gives("echo x; exit 3", 3, "x\n", "") &&  // although children are ignored
               gives("kill -XFSZ $$", -1, "", "") && mask.dump() == blocked &&
               std::signal(SIGCHLD, SIG_DFL) == SIG_IGN &&
               std::signal(SIGPIPE, SIG_DFL) == custom && std::signal(SIGXFSZ, SIG_DFL) == SIG_IGN;
    }));
    EXPECT_TRUE(in_helper_process([] {
        std::signal(SIGXFSZ, SIG_IGN);  // by whoever started us
        const bool kept = gives("kill -XFSZ $$", 0, "", "");
        Kiln::ignore_file_size_signal();
        return gives("kill -XFSZ $$", 0, "", "") && kept;
    }));
}

TEST(Runscript, FailuresOfTheMachineryAreToldInTheErrorText) {
    EXPECT_TRUE(in_helper_process([] {
        const auto fails = [](const char* reason) {
            return gives("true", -1, "", std::string("[Caller] Generic error. ") + reason);
        };
        dup2(dup(2), 500);
        Kiln::close_descriptors_one_by_one(3, Kiln::Paths().own_descriptors);
        pipes_left = 1;
        bool fine = fails("Can't create pipe for callee's 2 fd: Too many open files in system");
        sigactions_left = 1;  // without a handler the child's end would never be noticed
        fine = fails("Can't handle signal 17: Operation not permitted") && fine;
        fine = open_descriptors() == std::set<std::string>{"0", "1", "2", "3"} && fine;
        const rlimit none = {0, 0};
        setrlimit(RLIMIT_NPROC, &none);
        const bool bound = getuid() != 0 || setuid(65534) == 0;  // root is not
        return fails("Fork returned: Resource temporarily unavailable") && bound && fine;
    }));
}

}  // namespace
