// The file behind a recording, the recorder on a made-up host, and what they stand on.
#include "plan/record/recorder.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <tuple>
#include <utility>

#include "inspect/net_ifaces.h"
#include "plan/record/bounded_task.h"
#include "plan/record/recorded_pass.h"
#include "tests/plan/recordings.h"

namespace {

struct {
    off_t bytes = 0;   // of the file that was waited for last
    ino_t folder = 0;  // whose names were waited for last
    int error = 0;     // what the next wait fails with
} disk;

}  // namespace

// These two stand before those of the C library.
extern "C" int fdatasync(int fd) {
    struct stat info = {};
    disk.bytes = fstat(fd, &info) == 0 ? info.st_size : -1;
    errno = std::exchange(disk.error, 0);
    return errno == 0 ? 0 : -1;
}

extern "C" int fsync(int fd) {
    struct stat info = {};
    disk.folder = fstat(fd, &info) == 0 ? info.st_ino : 0;
    return 0;
}

namespace {

using Existing = RecordFile::Existing;

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
};

// Ten minutes were recorded in the boot "one", which began when the machine was up for 5 s.
TEST(RecordingClock, GoesOnWhereARecordingStoppedAndIsNeverSet) {
    constexpr std::int64_t day_ms = 86400000;
    Recording ten_minutes = recording_of({1, 1}, {3600, 600}).recording;
    ten_minutes.header.boot_ms = 5000;
    ten_minutes.header.hardware.emplace().boot_id = "one";
    const std::tuple<const char*, const char*, std::int64_t, std::int64_t, bool> cases[] = {
        {"the same boot, whatever the clock says", "one", -day_ms, 905000, true},
        {"a reboot: the wall clock", "two", 900000, 900000, true},
        {"a clock that is behind", "two", 500000, 1510000, false},
        {"30 days are a long time", "two", 30 * day_ms + 600000, 30 * day_ms + 600000, true},
        {"a clock that was set", "two", 30 * day_ms + 600001, 1510000, false},
    };
    for (const auto& [what, boot_id, wall_since_start_ms, now_ms, is_believed] : cases) {
        Moments now;
        now.boot_ms = 910000;
        now.wall_ms += wall_since_start_ms;
        const RecordingClock clock(now.sources(), ten_minutes, boot_id);
        EXPECT_EQ(clock.now_ms(), now_ms) << what;
        EXPECT_EQ(!clock.doubts(), is_believed) << what;
        now.wall_ms -= day_ms;
        now.boot_ms += 61000;
        EXPECT_EQ(clock.now_ms(), now_ms + 61000) << what;
    }
}

class MadeUpRecorder : public testing::Test {
protected:
    MadeUpRecorder() { let_commands_answer(made_up_); }

    // What went wrong, or an empty text.
    std::string record(ScanSpans spans) {
        Kiln::Result<RecordFile> opened = RecordFile::open(path_, Existing::append);
        const StopSignals stop;
        sources_.host = made_up_.host;
        const std::string no_folder = made_up_.path("none");
        sources_.usage.paths = {made_up_.path("usage"), no_folder, no_folder};
        Recorder recorder(*opened, sources_, stop);
        try {
            recorder.record(spans);
        } catch (const RecordTrouble& trouble) {
            return trouble.what();
        }
        flawed_ = recorder.flawed();
        return {};
    }

    RecordedPass pass() const { return take_bounded_pass(made_up_.host, {}, 10, no_wake_fd)->pass; }

    Recording recording() const { return parsed(text_of(path_)); }

    MadeUpHost made_up_;
    const std::string path_ = made_up_.path("r");
    RecorderSources sources_;
    bool flawed_ = false;
};

TEST_F(MadeUpRecorder, HasEachLineOnTheDiskOrNothingOfIt) {
    Kiln::Result<RecordFile> file = RecordFile::open(path_, Existing::refuse);
    ASSERT_TRUE(file);
    struct stat folder = {};
    ASSERT_EQ(stat(made_up_.root.c_str(), &folder), 0);
    EXPECT_EQ(disk.folder, folder.st_ino) << "its name";
    EXPECT_TRUE(file->append("one\n"));
    EXPECT_EQ(disk.bytes, 4);
    disk.error = EINVAL;  // a file system that has nothing to wait for
    EXPECT_TRUE(file->append("two\n"));
    disk.error = EIO;
    EXPECT_EQ(file->append("three\n").reason(), "it cannot be written: Input/output error");
    EXPECT_EQ(text_of(path_), "one\ntwo\n");
}

TEST_F(MadeUpRecorder, NoticesWhatOthersDoToItsFile) {
    const Kiln::Result<RecordFile> file = RecordFile::open(path_, Existing::refuse);
    ASSERT_TRUE(file);
    const std::string exchanged = "the file was renamed, or another one stands in its place";
    const std::pair<const char*, std::string> cases[] = {
        {"true", ""},
        {"mv r elsewhere", exchanged},
        {"touch r", exchanged},
        {"mv elsewhere r && echo x >r", "somebody else has changed the file"},
        {"rm r", "the file was removed"},
    };
    for (const auto& [change, reason] : cases) {
        ASSERT_TRUE(made_up_.shell(change));
        EXPECT_EQ(file->check_untouched().reason(), reason) << change;
    }
}

TEST_F(MadeUpRecorder, GoesOnAfterAPassThatFailedAndHasWhatTheCheckFound) {
    made_up_.answers["df -k -l"] = {1, "", "no more\n"};
    sources_.check = [] { return CheckFindings{{"ps is missing", "install it", {"NUMPROC"}}}; };
    sources_.is_root = false;
    EXPECT_EQ(record({1, 1}), "");
    EXPECT_TRUE(flawed_);
    const Recording made = recording();
    EXPECT_EQ(made.header.root, false);
    ASSERT_EQ(made.checks.size(), 1U);
    EXPECT_EQ(made.checks[0].findings.at(0).lines, std::vector<std::string>{"NUMPROC"});
    ASSERT_GE(made.passes.size(), 2U);
    EXPECT_EQ(made.passes[1].number, 2);
    EXPECT_EQ(made.passes[1].failure, "Error running 'df -k -l':\nno more\n");
    EXPECT_EQ(made.passes[1].taken.to_ulong(), 0x1FFU) << "all but the two of the disk";
    EXPECT_EQ(made.passes[1].counts[&PhysParams::numiptent], 14);
}

// What the host forgives, and what it cannot know: half of a count is none.
TEST_F(MadeUpRecorder, ForgivesAStepThatWasRun) {
    MadeUpHost::Answer& rules = made_up_.answers["iptables -n -L -t filter | wc -l"];
    rules = {1, "", "no such table\n"};
    EXPECT_EQ(pass().failure, std::nullopt);
    rules = {2, "", "sh: 1: Cannot fork\n"};
    EXPECT_EQ(pass().taken.count(), 8U) << "all but its own and the two of the disk";
}

TEST_F(MadeUpRecorder, NamesTheStepThatDidNotComeBackAndWhatItSaid) {
    made_up_.host.run = [usual = made_up_.host.run](const std::string& command, std::string& out,
                                                    std::string& err) {
        if (command == "df -i -l") {
            std::fputs("out of memory\n", stderr);
            _exit(1);
        }
        return usual(command, out, err);
    };
    EXPECT_EQ(pass().failure,
              "Error running 'df -i -l':\nit ended before its time\nout of memory\n");
    EXPECT_EQ(pass().taken.count(), 10U) << "those before it";
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
    if (!list_net_ifaces()) {
        GTEST_SKIP() << "the machine has no network interface";
    }
    made_up_.put("mtab",
                 "/dev/null /012 ext4 usrquota 0 0\n/dev/gone /gone ext4 usrquota 0 0\n"
                 "nas:/x /x nfs rw 0 0\n");
    made_up_.put("dns", "search a.example b.example\nnameserver 192.0.2.53\n");
    made_up_.put("usage/uptime", "4000000000000000.00 1.00\n");  // beyond belief
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
    EXPECT_EQ(made.header.kernel, system.release);
    EXPECT_EQ(made.header.machine, system.machine);
    EXPECT_TRUE(made.passes.at(0).taken.all());
    EXPECT_EQ(made.summary->findings.ifaces.size(), list_net_ifaces()->size());
    made.summary->findings.ifaces.clear();
    made.summary->findings.notes.warnings.at(0).message.clear();  // of the distribution
    EXPECT_EQ(part_text(made.summary->findings),
              R"({"quotaugidlimit":1,"interfaces":[],"distribution":"","hostname":"box",)"
              R"("nameservers":["192.0.2.53"],"search_domains":["a.example","b.example"],)"
              R"("warnings":[{"code":0,"message":""}],"excludes":[{"flag":true,"path":"/x/*"}],)"
              R"("nfs":true,"reiserfs":false,"failures":[],"messages":)"
              R"("Error: Partition or mount point '/dev/gone' does not exist\n"})");
}

TEST_F(MadeUpRecorder, SaysWhichStepFailed) {
    const std::string why =
        "Error opening '" + made_up_.path("mtab") + "': No such file or directory";
    testing::internal::CaptureStderr();
    EXPECT_EQ(record({0, 0}), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "tarnhwplan: quotas: " + why + "\n");
    EXPECT_TRUE(flawed_);
    EXPECT_EQ(recording().summary->findings.failures.at(0).text, why);
}

TEST_F(MadeUpRecorder, GoesOnWithOneThatStopped) {
    EXPECT_EQ(record({0, 0}), "");
    RecordingHeader header = recording().header;  // of this host
    header.spans = {1000, 500};
    header.start -= 1000;

    // Over, but without its last line; the torn one is cut off.
    const std::string lines = header_line(header) + pass_line(pass_of(1, 0, 1));
    made_up_.put("r", lines + "{\"pass\":2,\"at_ms\":");
    EXPECT_EQ(record({1000, 500}), "");
    const std::string over = text_of(path_);
    EXPECT_EQ(over.substr(0, lines.size()), lines);
    EXPECT_EQ(recording().passes.size(), 1U);
    EXPECT_TRUE(recording().summary_is_last);
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
    made_up_.put("r",
                 header_line(header) + pass_line(pass_of(1, 0, 1)) + summary_line(summary_of(2)));
    EXPECT_EQ(record({1000, 500}), "");
    const Recording made = recording();
    ASSERT_EQ(made.passes.size(), 3U) << "one at once, one at the end";
    EXPECT_EQ(made.passes[1].number, 2);
    EXPECT_EQ(made.passes[1].at_ms, 999000);
    EXPECT_EQ(made.passes[2].at_ms, 1000000);
    EXPECT_EQ(made.continuations.at(0).at_ms, 999000);
    EXPECT_EQ(made.continuations[0].kernel, header.kernel);

    // Killed before the first line was whole.
    made_up_.put("r", header_line(header).substr(0, 30));
    EXPECT_EQ(record({0, 0}), "");
    EXPECT_EQ(recording().passes.size(), 1U);
}

}  // namespace
