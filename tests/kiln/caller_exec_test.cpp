#include "kiln/caller_exec.h"

#include <gtest/gtest.h>

#include <chrono>

#include "kiln/error.h"
#include "tests/kiln/kiln_support.h"

namespace {

using Clock = std::chrono::steady_clock;
const std::list<std::string> usual_env = {"PATH=/usr/bin:/bin"};

struct Collector : Kiln::CtoDynaBuf {
    explicit Collector(unsigned long limit = ~0UL, bool drain = true)
        : CtoDynaBuf(limit, drain, nullptr, -1) {}
};

// Runs a shell script unless told otherwise, and opens the protected state.
struct Caller : Kiln::CallerExec {
    explicit Caller(const char* script, const Intrinsics& options = {})
        : CallerExec("sh", {"-c", script}, usual_env, options) {}
    using CallerExec::analyzeExitStatus_, CallerExec::pid, CallerExec::wait_status;
    using CallerExec::CallerExec, CallerExec::entered, CallerExec::running, CallerExec::term_signal;

    int call_with(Kiln::Connector* in, Kiln::Connector* out, Kiln::Connector* err) {
        std::vector<Kiln::Connector*> entries = {in, out, err};
        call(entries);
        return getStatus();
    }
};

auto handler_of(int number) {
    struct sigaction action = {};
    sigaction(number, nullptr, &action);
    return action.sa_handler;
}

TEST(CallerExec, ConnectsTheChildAndGivesItItsDirectoryEnvironmentAndDispositions) {
    Kiln::CfromStaticBuf in("word\n", 5, nullptr);
    Collector out;
    Collector err;
    Caller caller("sh", {"-c", "cat; env; grep SigIgn /proc/self/status; pwd >&2; exit 9"},
                  {"PATH=/usr/bin:/bin", "PWD=/usr"}, {"/usr", false});
    EXPECT_EQ(caller.call_with(&in, &out, &err), 9);
    EXPECT_EQ(out.buffer, "word\nPATH=/usr/bin:/bin\nPWD=/usr\nSigIgn:\t0000000000000000\n");
    EXPECT_EQ(err.buffer, "/usr\n");
    EXPECT_FALSE(caller.running || caller.entered);
}

TEST(CallerExec, TheChildReportsWhatKeepsItFromStarting) {
    struct Case {
        const char* program;
        std::list<std::string> env;
        const char* work_dir;
        const char* message;
    };
    const Case cases[] = {
        {"sh", {}, "", ": Can't execute sh: No such file or directory\n"},
        // The text of the error stands twice; so it is meant.
        {"sh", usual_env, "/none",
         ": Can't chdir to /none: No such file or directory: No such file or directory\n"},
        // An unsupported search path ends the child, never the caller.
        {"none", {"PATH=/bin::/bin"}, "", ": Can't execute none: "},
    };
    for (const Case& c : cases) {
        Collector out;
        Collector err;
        std::fputs(" ", stdout);  // not yet written, and not the child's to write
        Caller caller(c.program, {}, c.env, {c.work_dir, false});
        EXPECT_EQ(caller.call_with(nullptr, &out, &err), 1) << c.program;
        EXPECT_NE(err.buffer.find(c.message), std::string::npos) << err.buffer;
        EXPECT_EQ(out.buffer, "");
    }
}

TEST(CallerExec, AFullBufferThatDoesNotDrainCutsTheChildOff) {
    Collector out(10, false);
    Caller caller("yes", {}, usual_env, {});
    EXPECT_EQ(caller.call_with(nullptr, &out, nullptr), -1);
    EXPECT_EQ(caller.term_signal, SIGPIPE);
    EXPECT_EQ(out.buffer, "y\ny\ny\ny\ny\n");
}

// Leaves the data where they are, so that its entry is ready at every look.
struct Looker : Kiln::Connector {
    Looker() : Connector(nullptr) {}
    long process() override { return 1; }
};

TEST(CallerExec, StopOnExitDoesNotWaitForWhoeverKeepsThePipe) {
    const std::set<int> before = open_descriptors();
    const Clock::time_point start = Clock::now();
    // The second one gives a false sign of its end and then writes more than a pipe holds.
    for (const char* script :
         {"echo x; sleep 20 & exit 4", "kill -CHLD $PPID; head -c 200000 /dev/zero; exit 4"}) {
        Collector out;
        Looker looker;
        EXPECT_EQ(Caller(script, {"", true}).call_with(nullptr, &out, nullptr), 4);
        EXPECT_EQ(Caller(script, {"", true}).call_with(nullptr, &looker, nullptr), 4);
    }
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(10));
    EXPECT_EQ(open_descriptors(), before);
}

TEST(CallerExec, ReadsTheRawStatus) {
    Caller caller("");
    caller.wait_status = 0x137f;  // stopped: neither exited nor ended by a signal
    caller.analyzeExitStatus_();
    EXPECT_EQ(caller.getStatus(), -1);
    EXPECT_EQ(caller.term_signal, 0);
    caller.wait_status = 0x8b;  // signal 11 with a core dump
    caller.analyzeExitStatus_();
    std::string uses_pid;
    Kiln::get_file("/proc/sys/kernel/core_uses_pid", uses_pid);
    EXPECT_EQ(caller.getCoreDumpName(), uses_pid == "0\n" ? "core" : "core.0");
    caller.wait_status = 0x0b;
    EXPECT_EQ(caller.getCoreDumpName(), "");
}

struct Refuser : Kiln::Connector {
    Refuser() : Connector(nullptr) {}
    long process() override { throw Kiln::Error(Kiln::Error::CallerGenericError, "refused"); }
};

TEST(CallerExec, AnUnfinishedCallRestoresTheMaskAloneAndLeaksNothing) {
    const int failed = in_helper_process([] {
        const std::set<int> before = open_descriptors();
        Collector unread;
        std::vector<Kiln::Connector*> connectors = {nullptr, &unread, nullptr};
        if (Caller("").enter(connectors) <= 0 || handler_of(SIGPIPE) == SIG_IGN) {
            return 1;
        }
        try {
            Refuser out;
            Caller("exec yes").call_with(nullptr, &out, nullptr);
            return 2;
        } catch (const Kiln::Error&) {
        }
        sigset_t mask;
        sigprocmask(SIG_BLOCK, nullptr, &mask);
        if (sigismember(&mask, SIGCHLD) != 0) {
            return 3;
        }
        if (handler_of(SIGCHLD) != Kiln::CallerExec::handle_CHLD ||
            handler_of(SIGPIPE) != SIG_IGN) {
            return 4;
        }
        return open_descriptors() == before && !has_children() ? 0 : 5;
    });
    EXPECT_EQ(failed, 0);
}

// Waits for the end of the child before the loop begins; takes its status away if told to.
struct Latecomer : Caller {
    Latecomer(const char* script, int wait_options) : Caller(script), options(wait_options) {}
    void prepareMainLoop_() override {
        siginfo_t info;
        while (waitid(P_PID, static_cast<id_t>(pid), &info, options) < 0 && errno == EINTR) {
        }
    }
    const int options;
};

TEST(CallerExec, AnExitBeforeTheWaitIsNotFoundByTheTimeOut) {
    sigset_t chld;
    sigemptyset(&chld);
    sigaddset(&chld, SIGCHLD);
    for (const int how : {SIG_UNBLOCK, SIG_BLOCK, SIG_UNBLOCK}) {  // what the caller has done
        sigprocmask(how, &chld, nullptr);
        Clock::duration fastest = Clock::duration::max();
        for (int i = 0; i < 3; ++i) {
            const Clock::time_point start = Clock::now();
            Latecomer caller("exit 3", WEXITED | WNOWAIT);
            EXPECT_EQ(caller.call_with(nullptr, nullptr, nullptr), 3);
            fastest = std::min(fastest, Clock::now() - start);
        }
        EXPECT_LT(fastest, std::chrono::milliseconds(900));
    }
}

TEST(CallerExec, AChildThatSomebodyElseCollectedEndsTheCall) {
    const auto old_handler = std::signal(SIGALRM, [](int) {});
    // Also when no wait lasts to its time-out.
    for (const itimerval& timer : {itimerval{}, {{0, 200000}, {0, 200000}}, itimerval{}}) {
        setitimer(ITIMER_REAL, &timer, nullptr);
        Collector out;
        EXPECT_EQ(Latecomer("echo x; exit 3", WEXITED).call_with(nullptr, &out, nullptr), -1);
        EXPECT_EQ(out.buffer, "x\n");
    }
    std::signal(SIGALRM, old_handler);
}

}  // namespace
