#include "kiln/runscript.h"

#include <sys/resource.h>

#include "kiln/close_descriptors.h"
#include "kiln/file_size_signal.h"
#include "kiln/owners.h"
#include "kiln/paths.h"
#include "kiln/sig_mask.h"
#include "tests/kiln/kiln_support.h"

namespace {

// "status out|err"
std::string ran(const std::string& command) {
    std::string out = "old", err = "old";
    const std::string status = std::to_string(runscript(command, out, err));
    return status + " " + out + "|" + err;
}

TEST(Runscript, GivesBothOutputsWhole) {
    const std::string much(5000000, '\n');
    EXPECT_TRUE(ran("yes '' | head -c 5000000 | tee /dev/stderr; exit 6") ==
                "6 " + much + "|" + much);
}

TEST(Runscript, NeitherMissingNorExtraDescriptorsReachTheCommand) {
    for (int closed = 0; closed < 8; ++closed) {
        in_own_process([closed] {
            dup2(2, 200);
            for (int fd = 0; fd < 3; ++fd) {
                close((closed & (1 << fd)) != 0 ? fd : -1);
            }
            const long before = open_descriptors();
            // 0 is the directory that ls itself has opened.
            EXPECT_EQ(ran("ls /proc/self/fd; echo b >&2; read x || exit 4"), "4 0\n1\n2\n|b\n");
            EXPECT_EQ(open_descriptors(), before);
        });
    }
}

TEST(Runscript, RestoresTheSignalStateItFoundAndGivesItToTheCommand) {
    in_own_process([] {
        const auto custom = [](int) {};
        std::signal(SIGCHLD, SIG_IGN);
        std::signal(SIGPIPE, custom);
        std::signal(SIGXFSZ, SIG_DFL);
        Kiln::ignore_file_size_signal();
        Kiln::SigMask mask(std::vector<int>{SIGCHLD});
        mask.block();
        const std::string blocked = mask.dump();
        EXPECT_EQ(ran("echo x; exit 3"), "3 x\n|");  // although children are ignored
        EXPECT_EQ(ran("kill -PIPE $$") + ran("kill -XFSZ $$"), "-1 |-1 |");
        EXPECT_EQ(mask.dump(), blocked);
        EXPECT_EQ(std::signal(SIGCHLD, SIG_DFL), SIG_IGN);
        EXPECT_EQ(std::signal(SIGPIPE, SIG_DFL), custom);
        EXPECT_EQ(std::signal(SIGXFSZ, SIG_DFL), SIG_IGN);
    });
    in_own_process([] {
        std::signal(SIGXFSZ, SIG_IGN);  // by whoever started us
        Kiln::ignore_file_size_signal();
        EXPECT_EQ(ran("kill -XFSZ $$"), "0 |");
    });
}

TEST(Runscript, FailuresOfTheMachineryAreToldInTheErrorText) {
    in_own_process([] {
        const std::string caller = "-1 |[Caller] Generic error. ";
        dup2(dup(2), 500);
        Kiln::close_descriptors_one_by_one(3, Kiln::Paths().own_descriptors);
        const rlimit none = {0, 0}, five = {5, 99}, many = {99, 99};  // 3 and 4 are one pipe
        setrlimit(RLIMIT_NPROC, &none);
        EXPECT_TRUE(getuid() != 0 || setuid(65534) == 0);  // root is not bound
        EXPECT_EQ(ran(""), caller + "Fork returned: Resource temporarily unavailable");
        setrlimit(RLIMIT_NOFILE, &five);
        const std::string no_pipe = ran("");
        setrlimit(RLIMIT_NOFILE, &many);  // a sanitizer's checks need some too
        EXPECT_EQ(no_pipe, caller + "Can't create pipe for callee's 2 fd: Too many open files");
        EXPECT_EQ(open_descriptors(), 4);
    });
}

}  // namespace
