// The file behind a recording, the recorder on a made-up host, and what they stand on.
#include "plan/record/recorder.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <functional>

#include "inspect/net_ifaces.h"
#include "kiln/files.h"
#include "plan/record/bounded_task.h"
#include "plan/record/recorded_pass.h"
#include "tests/plan/recordings.h"

namespace {

struct {
    off_t bytes = 0;  // of the file that was waited for last
    int waits = 0;
    std::vector<int> errors;  // what the next waits fail with, the first one last
    ino_t folder = 0;         // whose names were waited for last
    bool is_cut = true;       // where somebody wants it to be
} disk;

}  // namespace

// These three stand before those of the C library.
extern "C" int fdatasync(int fd) {
    struct stat info = {};
    disk.bytes = fstat(fd, &info) == 0 ? info.st_size : -1;
    ++disk.waits;
    if (disk.errors.empty()) {
        return 0;
    }
    errno = disk.errors.back();
    disk.errors.pop_back();
    return -1;
}

extern "C" int ftruncate(int fd, off_t size) noexcept {
    if (!disk.is_cut) {
        errno = EIO;
        return -1;
    }
    return static_cast<int>(syscall(SYS_ftruncate, fd, size));
}

extern "C" int fsync(int fd) {
    struct stat info = {};
    disk.folder = fstat(fd, &info) == 0 ? info.st_ino : 0;
    return 0;
}

namespace {

using Existing = RecordFile::Existing;

std::string text_of(const std::string& path) {
    std::string text;
    Kiln::get_file(path, text);
    return text;
}

class RecordingFile : public testing::Test {
protected:
    void put(const std::string& text) const { made_up_.put("r", text); }

    // Why it cannot be opened; empty when it can.
    std::string refusal(Existing existing) const {
        return RecordFile::open(path_, existing).reason();
    }

    MadeUpHost made_up_;
    const std::string path_ = made_up_.path("r");
};

TEST_F(RecordingFile, IsMadeForItsOwnerAndKeptFromOthers) {
    const mode_t mask = umask(0);
    EXPECT_EQ(refusal(Existing::append), "") << "made where there is none";
    umask(mask);
    EXPECT_EQ(std::filesystem::status(path_).permissions(), std::filesystem::perms(0600));
    EXPECT_NE(refusal(Existing::refuse).find("exists"), std::string::npos);
    put("old");
    EXPECT_EQ(refusal(Existing::append), "");
    EXPECT_EQ(text_of(path_), "old");
    EXPECT_EQ(refusal(Existing::replace), "");
    EXPECT_EQ(text_of(path_), "");
}

TEST_F(RecordingFile, IsNeverReachedThroughALink) {
    const std::string target = made_up_.path("target");
    for (const bool symbolic : {true, false}) {
        made_up_.put("target", "kept");
        ASSERT_EQ((symbolic ? symlink : link)(target.c_str(), path_.c_str()), 0);
        for (const Existing existing : {Existing::refuse, Existing::append, Existing::replace}) {
            EXPECT_NE(refusal(existing), "");
        }
        EXPECT_EQ(text_of(target), "kept");
        unlink(path_.c_str());
    }
    ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
    EXPECT_NE(refusal(Existing::append).find("no regular file"), std::string::npos);
}

TEST_F(RecordingFile, IsOneRecordersAtATime) {
    const Kiln::Result<RecordFile> opened = RecordFile::open(path_, Existing::refuse);
    ASSERT_TRUE(opened);
    const BoundedTask other =
        run_bounded([&] { return refusal(Existing::append); }, 10, no_wake_fd);
    EXPECT_NE(other.text.find("somebody is recording"), std::string::npos);
}

TEST_F(RecordingFile, KeepsNoPartOfALineThatDoesNotFit) {
    const auto write_too_much = [&] {
        signal(SIGXFSZ, SIG_IGN);
        Kiln::Result<RecordFile> opened = RecordFile::open(path_, Existing::refuse);
        auto& file = *opened;
        EXPECT_TRUE(file.append("first line\n"));
        const rlimit limit = {20, 20};
        setrlimit(RLIMIT_FSIZE, &limit);
        return file.append("second, which is longer\n").reason();
    };
    const BoundedTask task = run_bounded(write_too_much, 10, no_wake_fd);
    EXPECT_EQ(task.text, "it cannot be written: File too large");
    EXPECT_EQ(text_of(path_), "first line\n");
}

TEST_F(RecordingFile, IsOnTheDiskLineByLine) {
    Kiln::Result<RecordFile> opened = RecordFile::open(path_, Existing::refuse);
    ASSERT_TRUE(opened);
    auto& file = *opened;
    struct stat folder = {};
    ASSERT_EQ(stat(made_up_.root.c_str(), &folder), 0);
    EXPECT_EQ(disk.folder, folder.st_ino) << "its name";
    EXPECT_TRUE(file.append("one\n"));
    EXPECT_EQ(disk.bytes, 4);
    disk.waits = 0;
    disk.errors = {EINVAL, EINTR};  // a file system that has nothing to wait for
    EXPECT_TRUE(file.append("two\n"));
    EXPECT_EQ(disk.waits, 2);
    disk.errors = {EIO};
    EXPECT_EQ(file.append("three\n").reason(), "it cannot be written: Input/output error");
    EXPECT_EQ(text_of(path_), "one\ntwo\n");
}

TEST_F(RecordingFile, IsCutLaterWhereItCannotBeAtOnce) {
    Kiln::Result<RecordFile> opened = RecordFile::open(path_, Existing::refuse);
    ASSERT_TRUE(opened);
    auto& file = *opened;
    ASSERT_TRUE(file.append("first\n"));
    disk.errors = {EIO};
    disk.is_cut = false;
    EXPECT_EQ(file.append("second\n").reason(), "it cannot be written: Input/output error");
    EXPECT_EQ(file.check_untouched().reason(), "") << "nobody else has changed it";
    EXPECT_EQ(file.append("second\n").reason(), "it cannot be cut: Input/output error");
    disk.is_cut = true;
    EXPECT_TRUE(file.append("second\n"));
    EXPECT_EQ(text_of(path_), "first\nsecond\n");
    EXPECT_EQ(file.check_untouched().reason(), "");
}

TEST_F(RecordingFile, IsRefusedWhereOthersMayWriteIt) {
    put("");
    chmod(path_.c_str(), 0660);
    EXPECT_NE(refusal(Existing::append).find("others may write"), std::string::npos);
    EXPECT_NE(refusal(Existing::replace).find("others may write"), std::string::npos);
    if (geteuid() == 0) {
        chmod(path_.c_str(), 0600);
        ASSERT_EQ(chown(path_.c_str(), 65534, 65534), 0);
        EXPECT_NE(refusal(Existing::append).find("belongs to user 65534"), std::string::npos);
    }
}

TEST_F(RecordingFile, NoticesWhatOthersDoToIt) {
    const Kiln::Result<RecordFile> file = RecordFile::open(path_, Existing::refuse);
    const std::string elsewhere = made_up_.path("elsewhere");
    ASSERT_TRUE(file);
    EXPECT_EQ(file->check_untouched().reason(), "");
    ASSERT_EQ(rename(path_.c_str(), elsewhere.c_str()), 0);
    EXPECT_NE(file->check_untouched().reason().find("was renamed"), std::string::npos);
    put("another");
    EXPECT_NE(file->check_untouched().reason().find("another one stands"), std::string::npos);
    ASSERT_EQ(rename(elsewhere.c_str(), path_.c_str()), 0);
    put("x");
    EXPECT_NE(file->check_untouched().reason().find("has changed"), std::string::npos);
    unlink(path_.c_str());
    EXPECT_NE(file->check_untouched().reason().find("was removed"), std::string::npos);
}

TEST(BoundedTask, KeepsWhatWasHandedOverBeforeItHung) {
    const auto hang = [](const TakePiece& take_piece) {
        take_piece("half");
        pause();
    };
    const BoundedTask task = run_bounded(hang, 1, no_wake_fd);
    EXPECT_EQ(task.end, BoundedTask::End::too_long);
    EXPECT_EQ(task.text, "half");
}

TEST(BoundedTask, EndsAsItsTaskDoes) {
    const auto say = [] {
        std::fputs("said", stderr);
        return std::string("result");
    };
    const BoundedTask done = run_bounded(say, 10, no_wake_fd);
    EXPECT_EQ(done.end, BoundedTask::End::finished);
    EXPECT_EQ(done.text, "result");
    EXPECT_EQ(done.messages, "said");
    const auto complain = [] {
        return std::to_string(fputs(std::string(100000, 'x').c_str(), stderr));
    };
    EXPECT_EQ(run_bounded(complain, 10, no_wake_fd).messages, std::string(65536, 'x'));
    const auto die = []() -> std::string { _exit(3); };
    EXPECT_EQ(run_bounded(die, 10, no_wake_fd).end, BoundedTask::End::died);
    const auto hang = [] { return std::to_string(pause()); };
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(write(ends[1], "", 1), 1);
    EXPECT_EQ(run_bounded(hang, 10, ends[0]).end, BoundedTask::End::stopped);
    close(ends[0]);
    close(ends[1]);
}

TEST(BoundedTask, IsReapedByALaterOneWhereItDoesNotGoAway) {
    const auto stay = []() -> std::string {
        for (int fd = STDERR_FILENO; fd < 100; ++fd) {
            close(fd);
        }
        return std::to_string(pause());
    };
    EXPECT_EQ(run_bounded(stay, 10, no_wake_fd).end, BoundedTask::End::died);
    poll(nullptr, 0, 100);
    EXPECT_EQ(run_bounded([] { return std::string(); }, 10, no_wake_fd).end,
              BoundedTask::End::finished);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
}

TEST(BoundedTask, LeavesNoCommandBehind) {
    const std::function<std::string()> run = [] {
        return std::to_string(std::system("sleep 600"));
    };
    const auto own_a_task = [&] { return run_bounded(run, 600, no_wake_fd).text; };
    for (const auto& task : {run, std::function<std::string()>(own_a_task)}) {
        int ends[2];  // the command has the writing one as long as it runs
        ASSERT_EQ(pipe(ends), 0);
        EXPECT_EQ(run_bounded(task, 1, no_wake_fd).end, BoundedTask::End::too_long);
        close(ends[1]);
        pollfd command = {ends[0], POLLIN, 0};
        EXPECT_EQ(poll(&command, 1, 10000), 1);
        close(ends[0]);
    }
}

// The moments of a recorder's clocks, in milliseconds.
struct Moments {
    std::int64_t boot_ms = 5000;
    std::int64_t wall_ms = 1773324300000;  // 2026-03-12T14:05:00Z

    TimeSources sources() {
        return {[this] { return boot_ms; }, [this] { return wall_ms; }};
    }
    void pass(std::int64_t ms) {
        boot_ms += ms;
        wall_ms += ms;
    }
};

// Ten minutes were recorded in the boot "one", which began when the machine was up for 5 s.
Recording ten_minutes() {
    Recording recording;
    recording.header = header_of("box", {3600, 300});
    recording.header.boot_ms = 5000;
    recording.header.hardware.emplace().boot_id = "one";
    recording.passes = {pass_of(1, 0, 1), pass_of(2, 600, 1)};
    return recording;
}

TEST(RecordingClock, IsNeverSet) {
    Moments now;
    const RecordingClock clock(now.sources());
    EXPECT_EQ(clock.now_ms(), 0);
    now.wall_ms -= 86400000;
    now.boot_ms += 61000;
    EXPECT_EQ(clock.now_ms(), 61000);
}

TEST(RecordingClock, GoesOnWhereARecordingStopped) {
    constexpr std::int64_t day_ms = 86400000;
    struct Case {
        const char* what;
        const char* boot_id;
        std::int64_t boot_ms;
        std::int64_t wall_since_start_ms;
        std::int64_t now_ms;
        bool is_believed;
    };
    const Case cases[] = {
        {"the same boot, whatever the clock says", "one", 905000, -day_ms, 900000, true},
        {"a reboot: the wall clock", "two", 20000, 900000, 900000, true},
        {"a clock that is behind", "two", 20000, 500000, 620000, false},
        {"30 days are a long time", "two", 20000, 30 * day_ms + 600000, 30 * day_ms + 600000, true},
        {"more are a clock that was set", "two", 20000, 30 * day_ms + 600001, 620000, false},
        {"75 years", "two", 20000, 27394 * day_ms, 620000, false},
    };
    for (const Case& test : cases) {
        Moments now;
        now.boot_ms = test.boot_ms;
        now.wall_ms += test.wall_since_start_ms;
        const RecordingClock clock(now.sources(), ten_minutes(), test.boot_id);
        EXPECT_EQ(clock.now_ms(), test.now_ms) << test.what;
        EXPECT_EQ(!clock.doubts(), test.is_believed) << test.what;
    }
    // The clock was a year behind and was set right while it recorded: the last line says so.
    Recording set_right = ten_minutes();
    Moments now;
    now.wall_ms += 365 * day_ms;
    set_right.last_clock_ms = now.wall_ms;
    now.wall_ms += 60000;
    EXPECT_EQ(RecordingClock(now.sources(), set_right, "two").now_ms(), 660000);
}

class MadeUpRecorder : public RecordingFile {
protected:
    MadeUpRecorder() { let_commands_answer(made_up_); }

    // What went wrong, or an empty text.
    std::string record(ScanSpans spans) {
        Kiln::Result<RecordFile> opened = RecordFile::open(path_, Existing::append);
        const StopSignals stop;
        sources_.host = made_up_.host;
        sources_.usage.paths = {made_up_.path("none"), made_up_.path("none"),
                                made_up_.path("none")};
        Recorder recorder(*opened, sources_, stop);
        try {
            recorder.record(spans);
        } catch (const RecordTrouble& trouble) {
            return trouble.what();
        }
        flawed_ = recorder.flawed();
        return {};
    }

    Recording recording() const { return parsed(text_of(path_)); }

    // The first line of a recording of this host.
    RecordingHeader header_here() {
        EXPECT_EQ(record({0, 0}), "");
        return recording().header;
    }

    RecorderSources sources_;
    bool flawed_ = false;
};

TEST_F(MadeUpRecorder, GoesOnAfterAPassThatFailed) {
    made_up_.answers["df -k -l"] = {1, "", "no more\n"};
    EXPECT_EQ(record({1, 1}), "");
    EXPECT_TRUE(flawed_);
    const Recording made = recording();
    ASSERT_GE(made.passes.size(), 2U);
    EXPECT_EQ(made.passes[1].number, 2);
    EXPECT_EQ(made.passes[1].failure, "Error running 'df -k -l':\nno more\n");
    EXPECT_EQ(made.passes[1].taken.to_ulong(), 0x1FFU) << "all but the two of the disk";
    EXPECT_EQ(made.passes[1].counts[&PhysParams::numproc], 7);
    EXPECT_EQ(made.passes[1].counts[&PhysParams::numiptent], 14);
}

TEST_F(MadeUpRecorder, TakesAPassWithAUsageBeyondBelief) {
    made_up_.put("uptime", "4000000000000000.00 1.00\n");
    UsageSources usage;
    usage.paths = {made_up_.path(""), made_up_.path("none"), made_up_.path("none")};
    const std::optional<TakenPass> taken = take_bounded_pass(made_up_.host, usage, 10, no_wake_fd);
    ASSERT_TRUE(taken);
    EXPECT_EQ(taken->pass.failure.value_or("none"), "none");
    EXPECT_TRUE(taken->pass.taken.all());
}

// What the host forgives, and what it cannot know.
TEST_F(MadeUpRecorder, ForgivesAStepThatWasRun) {
    const auto taken_with = [&](const char* command, const MadeUpHost::Answer& answer) {
        const auto usual = made_up_.answers[command];
        made_up_.answers[command] = answer;
        const RecordedPass pass = take_bounded_pass(made_up_.host, {}, 10, no_wake_fd)->pass;
        made_up_.answers[command] = usual;
        return pass.failure.value_or("none") + " " + std::to_string(pass.taken.count());
    };
    const char* const rules = "iptables -n -L -t filter | wc -l";
    const char* const routes = "ip route list | wc -l";
    const std::string of_rules = "Error running '" + std::string(rules) + "':\n";
    const std::string of_routes = "Error running '" + std::string(routes) + "':\n";
    EXPECT_EQ(taken_with(rules, {1, "", "no such table\n"}), "none 11");
    EXPECT_EQ(taken_with(rules, {-1, "", "Fork returned: EAGAIN"}),
              of_rules + "Fork returned: EAGAIN 8");
    EXPECT_EQ(taken_with(rules, {2, "", "sh: 1: Cannot fork\n"}),
              of_rules + "sh: 1: Cannot fork\n 8");
    EXPECT_EQ(taken_with(routes, {2, "", "sh: 1: Cannot fork\n"}),
              of_routes + "sh: 1: Cannot fork\n 8")
        << "half of a count is none";
}

TEST_F(MadeUpRecorder, NamesTheStepThatDidNotComeBackAndWhatItSaid) {
    const auto usual = made_up_.host.run;
    for (const SampleStep& step : sample_steps) {
        if (step.command == nullptr) {
            continue;
        }
        made_up_.host.run = [&](const std::string& command, std::string& out, std::string& err) {
            if (command == step.command) {
                std::fputs("out of memory\n", stderr);
                _exit(1);
            }
            return usual(command, out, err);
        };
        EXPECT_EQ(take_bounded_pass(made_up_.host, {}, 10, no_wake_fd)->pass.failure,
                  "Error running '" + std::string(step.command) +
                      "':\nit ended before its time\nout of memory\n");
    }
    made_up_.host.run = [&](const std::string& command, std::string& out, std::string& err) {
        std::fputs("said\n", stderr);
        return usual(command, out, err);
    };
    EXPECT_EQ(take_bounded_pass(made_up_.host, {}, 10, no_wake_fd)->messages.substr(0, 10),
              "said\nsaid\n");
}

// The first pass finds no room, the second does: the commands, in a child each, move the limit.
TEST_F(MadeUpRecorder, KeepsLinesUntilThereIsRoom) {
    const auto usual = made_up_.host.run;
    const auto record_on_full_disk = [&] {
        signal(SIGXFSZ, SIG_IGN);
        const std::string counter = made_up_.path("passes");
        made_up_.host.run = [&](const std::string& command, std::string& out, std::string& err) {
            if (command.rfind("ps", 0) == 0) {
                std::fputs("odd\n", stderr);
                made_up_.put("passes", text_of(counter) + "x");
                const rlim_t room = text_of(counter).size() > 1 ? 100000 : 400;
                const rlimit limit = {room, 100000};
                prlimit(getppid(), RLIMIT_FSIZE, &limit, nullptr);
            }
            return usual(command, out, err);
        };
        const std::string trouble = record({1, 1});
        return trouble + (flawed_ ? "flawed" : "");
    };
    const BoundedTask task = run_bounded(record_on_full_disk, 20, no_wake_fd);
    EXPECT_EQ(task.text, "flawed");
    EXPECT_NE(task.messages.find("File too large; going on"), std::string::npos);
    EXPECT_NE(task.messages.find("what was kept in memory is written"), std::string::npos);
    EXPECT_NE(task.messages.find("tarnhwplan: odd\n"), std::string::npos) << "of the pass itself";
    const Recording made = recording();
    EXPECT_GE(made.passes.size(), 2U);
    EXPECT_TRUE(made.summary_is_last);
}

TEST_F(MadeUpRecorder, KeepsWhatEveryStepFound) {
    const auto ifaces = list_net_ifaces();
    if (!ifaces) {
        GTEST_SKIP() << "the machine has no network interface";
    }
    made_up_.put("mtab",
                 "/dev/null /012 ext4 usrquota 0 0\n/dev/gone /gone ext4 usrquota 0 0\n"
                 "nas:/x /x nfs rw 0 0\n");
    made_up_.put("dns", "search a.example b.example\nnameserver 192.0.2.53\n");
    made_up_.answers["repquota -unv /012"].out = "user quotas\n---\n#0 -- 1 0 0 1 0 0\n";
    Moments now;
    sources_.time = now.sources();
    testing::internal::CaptureStderr();
    EXPECT_EQ(record({0, 0}), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "tarnhwplan: Error: Partition or mount point '/dev/gone' does not exist\n");
    EXPECT_FALSE(flawed_);
    Recording made = recording();
    utsname system = {};
    uname(&system);
    EXPECT_EQ(made.header.start, 1773324300);
    EXPECT_EQ(made.header.boot_ms, 5000);
    EXPECT_FALSE(made.passes.at(0).clock_ms) << "nobody has set it";
    EXPECT_EQ(made.header.kernel, system.release);
    EXPECT_EQ(made.header.machine, system.machine);
    const Findings& findings = made.summary->findings;
    EXPECT_EQ(findings.quotaugidlimit, 1);
    EXPECT_EQ(findings.ifaces.size(), ifaces->size());
    EXPECT_EQ(findings.notes.warnings.size(), 1U) << "of the distribution";
    EXPECT_EQ(findings.hostname, "box");
    EXPECT_EQ(findings.ns_attrs.nameservers, Remarks{"192.0.2.53"});
    EXPECT_EQ(findings.ns_attrs.search_domains, (Remarks{"a.example", "b.example"}));
    EXPECT_TRUE(findings.nfs_found);
    ASSERT_EQ(findings.notes.excludes.size(), 1U);
    EXPECT_EQ(findings.notes.excludes[0].path, "/x/*");
    EXPECT_EQ(findings.messages, "Error: Partition or mount point '/dev/gone' does not exist\n");

    // Each one that fails is said.
    unlink(path_.c_str());
    unlink(made_up_.path("mtab").c_str());
    const std::string why =
        "Error opening '" + made_up_.path("mtab") + "': No such file or directory";
    testing::internal::CaptureStderr();
    EXPECT_EQ(record({0, 0}), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "tarnhwplan: quotas: " + why + "\n");
    EXPECT_TRUE(flawed_);
    made = recording();
    ASSERT_EQ(made.summary->findings.failures.size(), 1U);
    EXPECT_EQ(made.summary->findings.failures[0].text, why);
}

TEST_F(MadeUpRecorder, HasWhatTheCheckFound) {
    sources_.check = [] { return CheckFindings{{"ps is missing", "install it", {"NUMPROC"}}}; };
    sources_.is_root = false;
    EXPECT_EQ(record({0, 0}), "");
    const Recording made = recording();
    EXPECT_EQ(made.header.root, false);
    ASSERT_EQ(made.checks.size(), 1U);
    EXPECT_EQ(made.checks[0].findings.at(0).lines, std::vector<std::string>{"NUMPROC"});
}

TEST_F(MadeUpRecorder, GoesOnWithOneThatStopped) {
    RecordingHeader header = header_here();
    header.spans = {1000, 500};
    header.start -= 1000;

    // Over, but without its last line; the torn one is cut off.
    const std::string lines = header_line(header) + pass_line(pass_of(1, 0, 1));
    put(lines + "{\"pass\":2,\"at_ms\":");
    EXPECT_EQ(record({1000, 500}), "");
    Recording made = recording();
    EXPECT_EQ(made.passes.size(), 1U);
    EXPECT_TRUE(made.summary_is_last);
    const std::string over = text_of(path_);
    EXPECT_EQ(over.substr(0, lines.size()), lines);
    EXPECT_EQ(record({1000, 500}), "");
    EXPECT_EQ(text_of(path_), over) << "nothing more to do";

    // The same watched for a second more, from the first start, by a clock that stands still
    // meanwhile.
    header.start = 1773324300;
    const auto since_start_ms = [this] {
        const bool was_taken = text_of(path_).find("{\"pass\":2,") != std::string::npos;
        return std::int64_t{was_taken ? 1000000 : 999000};
    };
    sources_.time = {since_start_ms, [&] { return header.start * 1000 + since_start_ms(); }};
    put(header_line(header) + pass_line(pass_of(1, 0, 1)) + summary_line(summary_of(2)));
    EXPECT_EQ(record({1000, 500}), "");
    made = recording();
    ASSERT_EQ(made.passes.size(), 3U) << "one at once, one at the end";
    EXPECT_EQ(made.passes[1].number, 2);
    EXPECT_EQ(made.passes[1].at_ms, 999000);
    EXPECT_EQ(made.passes[2].at_ms, 1000000);
    ASSERT_EQ(made.continuations.size(), 1U);
    EXPECT_EQ(made.continuations[0].at_ms, 999000);
    EXPECT_EQ(made.continuations[0].kernel, header.kernel);

    // Killed before the first line was whole.
    put(header_line(header).substr(0, 30));
    EXPECT_EQ(record({0, 0}), "");
    EXPECT_EQ(recording().passes.size(), 1U);
}

TEST_F(MadeUpRecorder, GoesOnWithNoOther) {
    const RecordingHeader here = header_here();
    RecordingHeader other_host = here;
    RecordingHeader other_machine = here;
    RecordingHeader other_pages = here;
    other_host.host = "other";
    other_machine.machine = "other";
    other_pages.page_size = 512;
    const std::pair<std::string, const char*> cases[] = {
        {header_line(other_host), "another host"},
        {header_line(other_machine), "another host"},
        {header_line(other_pages) + "{\"torn", "pages"},
        {header_line(here) + "rubbish\n" + pass_line(pass_of(1, 0, 1)), "line 2"},
        {"precious text without an end", "no recording"}};
    for (const auto& [text, reason] : cases) {
        put(text);
        EXPECT_NE(record({0, 0}).find(reason), std::string::npos) << reason;
        EXPECT_EQ(text_of(path_), text) << "nothing is changed";
    }
}

}  // namespace
