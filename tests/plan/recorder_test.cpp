// The file behind a recording, the recorder on a made-up host, and what they stand on.
#include "plan/record/recorder.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "kiln/files.h"
#include "plan/record/bounded_task.h"
#include "tests/plan/recordings.h"

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
        file.append("first line\n");
        const rlimit limit = {20, 20};
        setrlimit(RLIMIT_FSIZE, &limit);
        return file.append("second, which is longer\n");
    };
    const BoundedTask task = run_bounded(write_too_much, 10, no_wake_fd);
    EXPECT_EQ(task.text, "it cannot be written: File too large");
    EXPECT_EQ(text_of(path_), "first line\n");
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

std::int64_t wall_now = 1000000;
std::chrono::steady_clock::time_point steady_now;

TEST(ForwardClock, NeverGoesBack) {
    const auto clock_after = [](std::int64_t not_before_ms) {
        return ForwardClock(
            not_before_ms, [] { return wall_now; }, [] { return steady_now; });
    };
    ForwardClock clock = clock_after(500);
    EXPECT_EQ(clock.now_ms(), 1000000);
    // So far the wall clock goes in each minute, and what the time is then.
    const std::pair<std::int64_t, std::int64_t> minutes[] = {{60000, 1060000},
                                                             {3660000, 4720000},   // an hour ahead
                                                             {-3540000, 4780000},  // and back
                                                             {60000, 4840000}};
    for (const auto& [wall_ms, now_ms] : minutes) {
        wall_now += wall_ms;
        steady_now += std::chrono::minutes(1);
        EXPECT_EQ(clock.now_ms(), now_ms);
    }
    ForwardClock behind = clock_after(9000000);
    steady_now += std::chrono::seconds(1);
    EXPECT_EQ(behind.now_ms(), 9001000) << "a recording's last line is later than the clock";
}

class MadeUpRecorder : public RecordingFile {
protected:
    MadeUpRecorder() { let_commands_answer(made_up_); }

    // What went wrong, or an empty text.
    std::string record(ScanSpans spans) {
        Kiln::Result<RecordFile> opened = RecordFile::open(path_, Existing::append);
        const StopSignals stop;
        Recorder recorder(*opened, made_up_.host, stop);
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

    // The same watched for a second more, from the first start.
    header.start = ForwardClock::wall_ms() / 1000 - 999;
    put(header_line(header) + pass_line(pass_of(1, 0, 1)) + summary_line(summary_of(2)));
    EXPECT_EQ(record({1000, 500}), "");
    made = recording();
    ASSERT_EQ(made.passes.size(), 3U) << "one at once, one at the end";
    EXPECT_EQ(made.passes[1].number, 2);
    EXPECT_GE(made.passes[1].at_ms, 999000);
    EXPECT_EQ(made.continuations.size(), 1U);

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
        {header_line(here) + "rubbish\n", "line 2"},
        {"precious text without an end", "no recording"}};
    for (const auto& [text, reason] : cases) {
        put(text);
        EXPECT_NE(record({0, 0}).find(reason), std::string::npos) << reason;
        EXPECT_EQ(text_of(path_), text) << "nothing is changed";
    }
}

}  // namespace
