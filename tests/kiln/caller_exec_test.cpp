#include "kiln/caller_exec.h"

#include <fcntl.h>

#include "kiln/error.h"
#include "kiln/files.h"
#include "kiln/sig_mask.h"
#include "tests/kiln/kiln_support.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Environment = std::list<std::string>;
using Kiln::CtoDynaBuf;
const Environment usual_env = {"PATH=/usr/bin:/bin"};

// Runs a shell script, and opens the protected state.
struct Caller : Kiln::CallerExec {
    explicit Caller(const char* script, const Intrinsics& options = {},
                    const Environment& environment = usual_env)
        : CallerExec("sh", {"-c", script}, environment, options) {}
    using CallerExec::analyzeExitStatus_, CallerExec::entered, CallerExec::wait_status,
        CallerExec::term_signal;

    int call_with(Kiln::Connector* in, Kiln::Connector* out, Kiln::Connector* err) {
        std::vector<Kiln::Connector*> entries = {in, out, err};
        call(entries);
        return getStatus();
    }
    void prepareMainLoop_() override { before_loop(pid); }
    void (*before_loop)(pid_t) = [](pid_t /*child*/) {};
};

TEST(CallerExec, ConnectsTheChildAndGivesItItsDirectoryAndEnvironment) {
    const std::string text = std::string(4096, 'a') + std::string(904, 'b');
    Kiln::CfromStaticBuf in(text.data(), text.size(), nullptr);  // sends its start again and again
    CtoDynaBuf out, err;
    Caller caller("tr -cd a | wc -c; env; pwd >&2; exit 9", {"/usr", false},
                  {"PATH=/usr/bin:/bin", "PWD=/usr"});
    EXPECT_EQ(caller.call_with(&in, &out, &err), 9);
    EXPECT_FALSE(caller.entered);
    EXPECT_EQ(out.buffer, "5000\nPATH=/usr/bin:/bin\nPWD=/usr\n");
    EXPECT_EQ(err.buffer, "/usr\n");
}

TEST(CallerExec, TheChildReportsWhatKeepsItFromStarting) {
    const auto report = [](const char* work_dir, const Environment& environment) {
        CtoDynaBuf out, err;
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
    CtoDynaBuf out(10, false, nullptr, -1);  // cuts the child off
    Caller caller("exec yes");
    EXPECT_EQ(caller.call_with(nullptr, &out, nullptr), -1);
    EXPECT_EQ(caller.term_signal, SIGPIPE);
    EXPECT_EQ(caller.getCoreDumpName(), "");
    Caller idle("", {"", false, {"/proc/self/stat"}});  // does not begin with a zero
    idle.wait_status = 0x8b;                            // signal 11 with a core dump
    idle.analyzeExitStatus_();
    EXPECT_EQ(idle.getCoreDumpName(), "core.0");
}

// Leaves the data where they are, so that its entry is ready at every look.
struct Looker : Kiln::Connector {
    Looker() : Connector(nullptr) {}
    long process() override { return 1; }
};
struct Refuser : Looker {
    long process() override { throw Kiln::Error(Kiln::Error::CallerGenericError, "refused"); }
};

TEST(CallerExec, StopOnExitWaitsForTheChildAndForNobodyElse) {
    const Clock::time_point start = Clock::now();
    Looker looker;
    Caller deserted("echo x; sleep 20 & exit 4", {"", true});
    EXPECT_EQ(deserted.call_with(nullptr, &looker, nullptr), 4);
    EXPECT_LT(Clock::now() - start, 10s);
    // A false sign of the end is taken for it: nobody reads what is written behind it, and the
    // child's own end is still waited for.
    CtoDynaBuf out;
    Caller healthy(
        "trap '' PIPE; kill -CHLD $PPID; sleep 0.2; head -c 200000 /dev/zero 2>&- || exit 5",
        {"", true});
    EXPECT_EQ(healthy.call_with(nullptr, &out, nullptr), 5);
    EXPECT_EQ(out.buffer.size(), 0U);
}

TEST(CallerExec, AnUnfinishedCallRestoresTheMaskAloneAndLeaksNothing) {
    in_own_process([] {
        const long before = open_descriptors();
        Refuser out;
        std::vector<Kiln::Connector*> connectors = {nullptr, &out, nullptr};
        std::signal(SIGPIPE, SIG_DFL);
        EXPECT_GT(Caller("").enter(connectors), 0);
        EXPECT_EQ(std::signal(SIGPIPE, SIG_DFL), SIG_DFL);
        EXPECT_THROW(Caller("exec yes").call(connectors), Kiln::Error);
        sigset_t mask;
        sigprocmask(SIG_BLOCK, nullptr, &mask);
        EXPECT_EQ(sigismember(&mask, SIGCHLD), 0);
        EXPECT_EQ(open_descriptors(), before);
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
        EXPECT_EQ(std::signal(SIGPIPE, SIG_DFL), SIG_IGN);
        EXPECT_EQ(std::signal(SIGCHLD, SIG_DFL), Kiln::CallerExec::handle_CHLD);
    });
}

TEST(CallerExec, AnExitBeforeTheWaitIsNotFoundByTheTimeOut) {
    Kiln::SigMask mask(std::vector<int>{SIGCHLD});
    const Clock::time_point start = Clock::now();
    for (int i = 0; i < 10; ++i) {
        i % 2 == 0 ? mask.block() : mask.unblock();
        Caller caller("exit 3");
        caller.before_loop = [](pid_t child) {
            const auto id = static_cast<id_t>(child);
            while (waitid(P_PID, id, nullptr, WEXITED | WNOWAIT) < 0 && errno == EINTR) {
            }
        };
        EXPECT_EQ(caller.call_with(nullptr, nullptr, nullptr), 3);
    }
    EXPECT_LT(Clock::now() - start, 5s);  // each time-out takes one
}

TEST(Connectors, LimitWhatTheyKeepAndSayWhetherToGoOn) {
    // Limit, whether to drain; result, bytes kept, bytes copied up to here.
    const std::tuple<unsigned long, bool, long, std::size_t, off_t> cases[] = {
        {4097, false, 4096, 4096, 4096},
        {4096, false, 0, 4096, 4096},  // just full, though nothing was dropped
        {10, true, 4096, 10, 8192},
    };
    const Kiln::File tee(std::tmpfile());
    const Kiln::Descriptor zeros(open("/dev/zero", O_RDONLY));
    pollfd entry = {zeros.get(), 0, 0};
    for (const auto& [limit, drain, result, kept, copied] : cases) {
        Kiln::CtoDynaBuf buffer(limit, drain, &entry, fileno(tee.get()));
        EXPECT_EQ(buffer.process(), result) << limit;
        EXPECT_EQ(buffer.buffer.size(), kept) << limit;
        EXPECT_EQ(lseek(fileno(tee.get()), 0, SEEK_CUR), copied) << limit;
    }
}

int ends[2] = {-1, -1};

TEST(WriteAll, GoesOnAfterAPartialWrite) {
    ASSERT_EQ(pipe(ends), 0);
    char text[65537] = "";
    struct sigaction make_room = {};  // without SA_RESTART
    make_room.sa_handler = [](int) {
        char full[65536];  // what a pipe holds
        EXPECT_EQ(read(ends[0], full, sizeof full), 65536);
    };
    sigaction(SIGALRM, &make_room, nullptr);
    ualarm(50000, 0);
    EXPECT_EQ(Kiln::write_all(ends[1], (std::string(65536, 'x') + "yz").data(), 65538), 0U);
    EXPECT_EQ(read(ends[0], text, sizeof text), 2);
    EXPECT_STREQ(text, "yz");
}

}  // namespace
