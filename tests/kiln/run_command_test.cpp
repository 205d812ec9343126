#include <sys/prctl.h>
#include <sys/syscall.h>

#include "kiln/owners.h"
#include "kiln/runscript.h"
#include "tests/kiln/kiln_support.h"

namespace {

bool kills = true;

}  // namespace

// The runner's calls come here instead of to the C library.
extern "C" int kill(pid_t pid, int signal_number) noexcept {
    return kills ? static_cast<int>(syscall(SYS_kill, pid, signal_number)) : 0;
}

namespace {

using Kiln::CommandEnd;
using std::chrono::milliseconds;

// "how status out|err", and "late" when somebody's sleep of 20 seconds was waited for.
std::string outcome(const char* command, const Kiln::RunLimits& limits) {
    const auto start = std::chrono::steady_clock::now();
    std::string out = "old";
    std::string err = "old";
    const CommandEnd end = Kiln::run_command(command, out, err, limits);
    const char* const names[] = {"exited", "stopped", "timed out", "failed"};
    const bool late = std::chrono::steady_clock::now() - start > std::chrono::seconds(10);
    return names[end.how] + (" " + std::to_string(end.status)) + (end.left_behind ? " left" : "") +
           " " + out + "|" + err + (late ? " late" : "");
}

TEST(RunCommand, WaitsForTheCommandAndALittleForOthers) {
    const Kiln::RunLimits patient = {-1, std::nullopt, std::chrono::seconds(20)};
    const Kiln::RunLimits impatient = {-1, std::nullopt, milliseconds(0)};
    EXPECT_EQ(outcome("echo a; echo b >&2; exit 255", patient), "exited 255 a\n|b\n");
    EXPECT_EQ(outcome("exec >&- 2>&-; sleep 0.1; exit 4", patient), "exited 4 |");
    // The group is the command's own, and a false sign is no end.
    EXPECT_EQ(outcome("kill -CHLD $PPID; sleep 0.1; echo x; kill -9 0", patient), "exited -1 x\n|");
    EXPECT_EQ(outcome("(sleep 0.1; echo y) & echo x; exit 2", patient), "exited 2 x\ny\n|");
    // All that it has written itself is there, though others hold the outputs on.
    EXPECT_EQ(outcome("sleep 20 & printf '%65536d' 1; exit 3", impatient).size(), 10 + 65536U);
}

TEST(RunCommand, KillsTheWholeGroupAtTheTimeLimit) {
    EXPECT_TRUE(in_helper_process([] {
        prctl(PR_SET_CHILD_SUBREAPER, 1);  // what the command leaves is ours to wait for
        const auto before = open_descriptors();
        bool fine = outcome("trap '' TERM; echo x; sleep 20 & sleep 20 & wait",
                            {-1, milliseconds(700)}) == "timed out -1 x\n|";
        int status = 0;
        for (int sleeper = 0; sleeper < 2; ++sleeper) {
            fine = wait(&status) > 0 && WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL && fine;
        }
        return fine && open_descriptors() == before;
    }));
}

int stop[2] = {-1, -1};

TEST(RunCommand, StopsAtOnceWhenTheDescriptorSaysSo) {
    ASSERT_EQ(pipe(stop), 0);
    const Kiln::Descriptor owners[] = {Kiln::Descriptor(stop[0]), Kiln::Descriptor(stop[1])};
    const Kiln::RunLimits limits = {stop[0], std::chrono::seconds(20), std::chrono::seconds(20)};
    EXPECT_EQ(outcome("exit 3", limits), "exited 3 |");
    std::signal(SIGALRM, [](int) { EXPECT_EQ(write(stop[1], "x", 1), 1); });
    EXPECT_EQ(outcome("echo x; kill -ALRM $PPID; exec sleep 20", limits), "stopped -1 x\n|");
    EXPECT_EQ(outcome("exec sleep 20", limits), "stopped -1 |");  // from the start
    char flag = 0;
    EXPECT_EQ(read(stop[0], &flag, 1), 1);
    EXPECT_EQ(outcome("(sleep 0.2; kill -ALRM $PPID; sleep 20) & exit 0", limits),
              "stopped -1 |");  // others hold the outputs
}

TEST(RunCommand, LeavesWhatCannotBeKilled) {
    kills = false;
    EXPECT_EQ(outcome("exec sleep 20", {-1, milliseconds(10)}), "timed out -1 left |");
    kills = true;
    EXPECT_EQ(outcome("exit 1", {}), "exited 1 |");
}

}  // namespace
