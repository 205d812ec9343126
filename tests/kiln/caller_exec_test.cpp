#include "kiln/caller_exec.h"

#include <gtest/gtest.h>
#include <sys/time.h>

#include <chrono>
#include <limits>
#include <string>

#include "kiln/error.h"
#include "tests/kiln/kiln_support.h"

namespace {

const std::list<std::string> usual_env = {"PATH=/usr/bin:/bin"};

struct Collector : Kiln::CtoDynaBuf {
    explicit Collector(unsigned long limit = std::numeric_limits<unsigned long>::max(),
                       bool drain = true)
        : CtoDynaBuf(limit, drain, nullptr, -1) {}
};

// Runs a shell script unless told otherwise, and opens the protected state.
struct Caller : Kiln::CallerExec {
    explicit Caller(const char* script, const Intrinsics& options = {})
        : CallerExec("sh", {"-c", script}, usual_env, options) {}
    using CallerExec::analyzeExitStatus_, CallerExec::pid, CallerExec::wait_status;
    using CallerExec::CallerExec;
    using CallerExec::entered, CallerExec::running, CallerExec::term_signal;

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

TEST(CallerExec, ConnectsAllThreeDescriptors) {
    Kiln::CfromStaticBuf in("word\n", 5, nullptr);
    Collector out;
    Collector err;
    Caller caller("cat; echo done >&2; exit 9");
    EXPECT_EQ(caller.call_with(&in, &out, &err), 9);
    EXPECT_EQ(out.buffer, "word\n");
    EXPECT_EQ(err.buffer, "done\n");
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
        {"none", usual_env, "", ": Can't execute none: No such file or directory\n"},
        {"[", usual_env, "", ": Can't execute [: No such file or directory\n"},
        {"/etc/passwd", usual_env, "", ": Can't execute /etc/passwd: Permission denied\n"},
        {"sh", {}, "", ": Can't execute sh: No such file or directory\n"},
        // The text of the error stands twice; so it is meant.
        {"sh", usual_env, "/none",
         ": Can't chdir to /none: No such file or directory: No such file or directory\n"},
        // An unsupported search path ends the child, never the caller.
        {"none", {"PATH=/bin::/bin"}, "", ": Can't execute none: "},
    };
    for (const Case& c : cases) {
        Collector err;
        Caller caller(c.program, {}, c.env, {c.work_dir, false});
        EXPECT_EQ(caller.call_with(nullptr, nullptr, &err), 1) << c.program;
        EXPECT_NE(err.buffer.find(c.message), std::string::npos) << err.buffer;
    }
}

TEST(CallerExec, TheChildGetsItsDirectoryEnvironmentAndDispositions) {
    Collector out;
    Caller caller("sh", {"-c", "pwd; echo $A; env | wc -l; grep SigIgn /proc/self/status"},
                  {"PATH=/usr/bin:/bin", "A=b", "PWD=/"}, {"/usr", false});
    caller.call_with(nullptr, &out, nullptr);
    EXPECT_EQ(out.buffer, "/usr\nb\n3\nSigIgn:\t0000000000000000\n");
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
    const auto start = std::chrono::steady_clock::now();
    // The second one gives a false sign of its end and then writes more than a pipe holds.
    for (const char* script :
         {"echo x; sleep 20 & exit 4", "kill -CHLD $PPID; head -c 200000 /dev/zero; exit 4"}) {
        Collector out;
        EXPECT_EQ(Caller(script, {"", true}).call_with(nullptr, &out, nullptr), 4);
        Looker looker;
        EXPECT_EQ(Caller(script, {"", true}).call_with(nullptr, &looker, nullptr), 4);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
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
    caller.pid = 4294;
    std::string uses_pid;
    Kiln::get_file("/proc/sys/kernel/core_uses_pid", uses_pid);
    EXPECT_EQ(caller.getCoreDumpName(), uses_pid == "0\n" ? "core" : "core.4294");
    caller.wait_status = 0x0b;
    EXPECT_EQ(caller.getCoreDumpName(), "");
    caller.pid = 0;  // there is no such child to wait for
}

TEST(CallerExec, EnteredWithoutACallItOnlyStartsTheChild) {
    const std::set<int> before = open_descriptors();
    {
        Collector out;
        std::vector<Kiln::Connector*> connectors = {nullptr, &out, nullptr};
        Caller caller("exit 0");
        EXPECT_EQ(caller.enter(connectors), caller.pid);
        EXPECT_TRUE(caller.entered);
        EXPECT_NE(handler_of(SIGCHLD), Kiln::CallerExec::handle_CHLD);
    }
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_FALSE(has_children());
}

struct Refuser : Kiln::Connector {
    Refuser() : Connector(nullptr) {}
    long process() override { throw Kiln::Error(Kiln::Error::CallerGenericError, "refused"); }
};

TEST(CallerExec, AFailureInTheLoopRestoresTheMaskAloneAndLeaksNothing) {
    const int failed = in_helper_process([] {
        const std::set<int> before = open_descriptors();
        try {
            Refuser out;
            Caller("exec yes").call_with(nullptr, &out, nullptr);
            return 1;
        } catch (const Kiln::Error&) {
        }
        sigset_t mask;
        sigprocmask(SIG_BLOCK, nullptr, &mask);
        if (sigismember(&mask, SIGCHLD) != 0)
            return 2;
        if (handler_of(SIGCHLD) != Kiln::CallerExec::handle_CHLD || handler_of(SIGPIPE) != SIG_IGN)
            return 3;
        return open_descriptors() == before && !has_children() ? 0 : 4;
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
    using Clock = std::chrono::steady_clock;
    Clock::duration fastest = Clock::duration::max();
    for (int i = 0; i < 3; ++i) {
        const Clock::time_point start = Clock::now();
        Latecomer caller("exit 3", WEXITED | WNOWAIT);
        EXPECT_EQ(caller.call_with(nullptr, nullptr, nullptr), 3);
        fastest = std::min(fastest, Clock::now() - start);
    }
    EXPECT_LT(fastest, std::chrono::milliseconds(900));
}

TEST(CallerExec, AChildThatSomebodyElseCollectedEndsTheCall) {
    const auto old_handler = std::signal(SIGALRM, [](int) {});
    const itimerval stream = {{0, 200000}, {0, 200000}};
    const itimerval none = {};
    for (const itimerval& timer : {none, stream}) {  // also when no wait lasts to its time-out
        setitimer(ITIMER_REAL, &timer, nullptr);
        Collector out;
        Latecomer caller("echo x; exit 3", WEXITED);
        EXPECT_EQ(caller.call_with(nullptr, &out, nullptr), -1);
        EXPECT_EQ(caller.term_signal, 0);
        EXPECT_EQ(out.buffer, "x\n");
    }
    setitimer(ITIMER_REAL, &none, nullptr);
    std::signal(SIGALRM, old_handler);
}

}  // namespace
