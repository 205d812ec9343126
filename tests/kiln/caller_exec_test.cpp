#include "kiln/caller_exec.h"

#include <gtest/gtest.h>

#include <chrono>

#include "kiln/error.h"
#include "kiln/files.h"
#include "kiln/sig_mask.h"
#include "tests/kiln/kiln_support.h"

namespace {

using Clock = std::chrono::steady_clock;
using Environment = std::list<std::string>;
const Environment usual_env = {"PATH=/usr/bin:/bin"};

struct Collector : Kiln::CtoDynaBuf {
    explicit Collector(unsigned long limit = ~0UL, bool drain = true)
        : CtoDynaBuf(limit, drain, nullptr, -1) {}
};

// Runs a shell script, and opens the protected state.
struct Caller : Kiln::CallerExec {
    explicit Caller(const char* script, const Intrinsics& options = {},
                    const Environment& environment = usual_env)
        : CallerExec("sh", {"-c", script}, environment, options) {}
    using CallerExec::analyzeExitStatus_, CallerExec::wait_status, CallerExec::term_signal;

    int call_with(Kiln::Connector* in, Kiln::Connector* out, Kiln::Connector* err) {
        std::vector<Kiln::Connector*> entries = {in, out, err};
        call(entries);
        return getStatus();
    }
};

TEST(CallerExec, ConnectsTheChildAndGivesItItsDirectoryEnvironmentAndDispositions) {
    const std::string text = std::string(4096, 'a') + std::string(904, 'b');
    Kiln::CfromStaticBuf in(text.data(), text.size(), nullptr);  // sends its start again and again
    Collector out;
    Collector err;
    Caller caller("tr -cd a | wc -c; env; grep SigIgn /proc/self/status; pwd >&2; exit 9",
                  {"/usr", false}, {"PATH=/usr/bin:/bin", "PWD=/usr"});
    EXPECT_EQ(caller.call_with(&in, &out, &err), 9);
    EXPECT_EQ(out.buffer, "5000\nPATH=/usr/bin:/bin\nPWD=/usr\nSigIgn:\t0000000000000000\n");
    EXPECT_EQ(err.buffer, "/usr\n");
}

TEST(CallerExec, TheChildReportsWhatKeepsItFromStarting) {
    const auto report = [](const char* work_dir, const Environment& environment) {
        Collector out;
        Collector err;
        std::fputs(" ", stdout);  // not yet written, and not the child's to write
        EXPECT_EQ(Caller("", {work_dir, false}, environment).call_with(nullptr, &out, &err), 1);
        return out.buffer + err.buffer.substr(err.buffer.find(": "));
    };
    EXPECT_EQ(report("", {}), ": Can't execute sh: No such file or directory\n");
    // The text of the error stands twice; so it is meant.
    EXPECT_EQ(report("/no", usual_env),
              ": Can't chdir to /no: No such file or directory: No such file or directory\n");
    // An unsupported search path ends the child, never the caller.
    EXPECT_EQ(report("", {"PATH=/none::/bin"}).rfind(": Can't execute sh: ", 0), 0U);
}

TEST(CallerExec, ReadsTheRawStatus) {
    Collector out(10, false);  // cuts the child off
    Caller caller("exec yes");
    EXPECT_EQ(caller.call_with(nullptr, &out, nullptr), -1);
    EXPECT_EQ(caller.term_signal, SIGPIPE);
    EXPECT_EQ(caller.getCoreDumpName(), "");

    Caller idle("");
    idle.wait_status = 0x8b;  // signal 11 with a core dump
    idle.analyzeExitStatus_();
    std::string uses_pid;
    Kiln::get_file("/proc/sys/kernel/core_uses_pid", uses_pid);
    EXPECT_EQ(idle.getCoreDumpName(), uses_pid == "0\n" ? "core" : "core.0");
}

// Leaves the data where they are, so that its entry is ready at every look; or refuses them.
struct Looker : Kiln::Connector {
    explicit Looker(bool refusing = false) : Connector(nullptr), refuses(refusing) {}
    long process() override {
        return refuses ? throw Kiln::Error(Kiln::Error::CallerGenericError, "refused") : 1;
    }
    const bool refuses;
};

TEST(CallerExec, StopOnExitDoesNotWaitForWhoeverKeepsThePipe) {
    const Clock::time_point start = Clock::now();
    // The second one gives a false sign of its end and then writes more than a pipe holds.
    for (const char* script :
         {"echo x; sleep 20 & exit 4", "kill -CHLD $PPID; head -c 200000 /dev/zero; exit 4"}) {
        Looker looker;
        EXPECT_EQ(Caller(script, {"", true}).call_with(nullptr, &looker, nullptr), 4);
    }
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(10));
}

TEST(CallerExec, AnUnfinishedCallRestoresTheMaskAloneAndLeaksNothing) {
    EXPECT_TRUE(in_helper_process([] {
        const auto before = open_descriptors();
        Looker out(true);
        std::vector<Kiln::Connector*> connectors = {nullptr, &out, nullptr};
        bool fine = Caller("").enter(connectors) > 0 && std::signal(SIGPIPE, SIG_DFL) == SIG_DFL;
        try {
            Caller("exec yes").call(connectors);
            fine = false;
        } catch (const Kiln::Error&) {
        }
        sigset_t mask;
        sigprocmask(SIG_BLOCK, nullptr, &mask);
        return fine && open_descriptors() == before && !has_children() &&
               sigismember(&mask, SIGCHLD) == 0 && std::signal(SIGPIPE, SIG_DFL) == SIG_IGN &&
               std::signal(SIGCHLD, SIG_DFL) == Kiln::CallerExec::handle_CHLD;
    }));
}

// Waits for the end of the child before the loop begins; takes its status away if told to.
struct Latecomer : Caller {
    explicit Latecomer(int wait_options) : Caller("echo x; exit 3"), options(wait_options) {}
    void prepareMainLoop_() override {
        siginfo_t info;
        while (waitid(P_PID, static_cast<id_t>(pid), &info, options) < 0 && errno == EINTR) {
        }
    }
    const int options;
};

TEST(CallerExec, AnExitBeforeTheWaitIsNotFoundByTheTimeOut) {
    Kiln::SigMask mask(std::vector<int>{SIGCHLD});
    for (const bool blocked : {false, true}) {
        blocked ? mask.block() : mask.unblock();
        Clock::duration fastest = Clock::duration::max();
        for (int i = 0; i < 3; ++i) {
            const Clock::time_point start = Clock::now();
            EXPECT_EQ(Latecomer(WEXITED | WNOWAIT).call_with(nullptr, nullptr, nullptr), 3);
            fastest = std::min(fastest, Clock::now() - start);
        }
        EXPECT_LT(fastest, std::chrono::milliseconds(900));
    }
    Collector out;
    EXPECT_EQ(Latecomer(WEXITED).call_with(nullptr, &out, nullptr), -1);
    EXPECT_EQ(out.buffer, "x\n");
}

}  // namespace
