// One pass: the parsers of the commands' output, the memory scan, and what the profile keeps.
#include "calc/sample.h"

#include <dirent.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <variant>

#include "calc/memory_scan.h"
#include "calc/sample_parsers.h"
#include "tests/calc/made_up_host.h"

static int entries_left = -1;  // of those that the program's readdir() gives before it fails
extern "C" dirent* __real_readdir(DIR* directory);
extern "C" dirent* __wrap_readdir(DIR* directory) {
    if (entries_left-- == 0) {
        errno = EIO;
        return nullptr;
    }
    return __real_readdir(directory);
}

namespace {

using Counts = std::vector<std::int32_t>;

TEST(SampleParsers, TakeWhatIsANumberAndWrap) {
    const std::string header = "Filesystem 1K-blocks 9 Available Use% Mounted on\n";
    const struct {
        std::int32_t (*parse)(const std::string&);
        std::string text;
        std::int32_t number;
    } cases[] = {
        {parse_count, "  12 345\r\n", 12345},
        {parse_count, "wc: no\n", 0},
        {parse_count, "7x9", 7},
        {parse_count, "4294967297", 1},
        {parse_count, std::string("1\0002", 3), 1},
        {parse_shm_pages, "segments 7\npages allocated 1043\npages resident  5\n", 1043},
        {parse_shm_pages, "pages allocated\n\n x12\n", 12},
        {parse_shm_pages, "pages allocated none\n", 0},
        {parse_shm_pages, "pages resident  55\n", 0},
        {sum_used_column, "", 0},
        {sum_used_column, "/dev/a 1 2 3 4% /\n", 0},  // the header goes by place, not by text
        {sum_used_column, header + "/dev/a 1 20 8 20% /\n/dev/b\t50\t7\t43 14% /b", 27},
        {sum_used_column, header + "/dev/a-long-name\n  10 20 80 2% /\n/dev/b 5 7 4 1% /\n", 27},
        {sum_used_column, header + "/dev/a 100\n/dev/b 50 \n\n/dev/c\n", 0},  // no such column
        {sum_used_column, header + "/dev/a 0 - - 30% /\n", 30},  // the next digits anywhere
        {sum_used_column, header + "/a 9 2147483647 1\n/b 9 1 1\n", -2147483647 - 1},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.parse(c.text), c.number) << c.text;
    }
}

// Takes a pass over a host where every command counts something else; fails are those that fail.
Sample pass(const std::vector<std::string>& fails, const char* proc = nullptr) {
    MadeUpHost made_up;
    made_up.answers = {
        {"ps ax | wc -l", {0, "101\n", ""}},
        {"wc -l < /proc/net/tcp", {0, "102\n", ""}},
        {"cat /proc/net/unix /proc/net/udp /proc/net/raw | wc -l", {0, "103\n", ""}},
        {"ls /proc/*/fd/* | wc -l", {0, "104\n", ""}},
        {"/usr/bin/ipcs -m -u", {0, "pages allocated 107\n", ""}},
        {"wc -l < /proc/locks", {0, "108\n", ""}},
        {"iptables -n -L -t filter | wc -l", {0, "1000\n", ""}},
        {"ip route list | wc -l", {0, "9\n", ""}},
        {"df -k -l", {0, "head\n/dev/a 9 110 9\n", ""}},
        {"df -i -l", {0, "head\n/dev/a 9 111 9\n", ""}},
    };
    for (const std::string& command : fails) {
        made_up.answers[command] = {-1, "99\n", "no\n"};
    }
    made_up.process("1", "PPid:\t0\nVmSize:\t420 kB\nVmLck:\t424 kB\n");
    made_up.host.paths.proc = proc != nullptr ? proc : made_up.root;
    return take_sample(made_up.host);
}

Counts counts_of(const Sample& sample) {
    Counts counts;
    for (const SampleField& field : sample_fields) {
        counts.push_back(sample.counts.*field.count);
    }
    return counts;
}

TEST(Sample, EveryStepGivesItsCountUntilOneFails) {
    EXPECT_EQ(counts_of(pass({})),
              (Counts{101, 102, 103, 104, 105, 106, 107, 108, 1009, 110, 111}));
    for (const SampleStep& step : sample_steps) {
        const std::string command = step.command != nullptr ? step.command : "none";
        const bool forgiven = command.rfind("ip", 0) == 0 || command == "none";
        EXPECT_EQ(pass({command}).failure.has_value(), !forgiven) << command;
    }
    EXPECT_EQ(pass({"iptables -n -L -t filter | wc -l"}).counts.numiptent, 9);

    const Sample failed = pass({"/usr/bin/ipcs -m -u"});
    ASSERT_TRUE(failed.failure);
    EXPECT_EQ(failed.failure->source, SampleFailure::Source::command);
    EXPECT_EQ(failed.failure->step, 5U);
    EXPECT_EQ(failed.failure->text, "Error running '/usr/bin/ipcs -m -u':\nno\n");
    EXPECT_EQ(counts_of(failed), (Counts{101, 102, 103, 104, 105, 106, 0, 0, 0, 0, 0}));

    const Sample blind = pass({}, "/nonexistent/proc");
    ASSERT_TRUE(blind.failure);
    EXPECT_EQ(blind.failure->source, SampleFailure::Source::processes);
    EXPECT_EQ(blind.failure->text, "Error opening /nonexistent/proc: No such file or directory");
    EXPECT_EQ(counts_of(blind), (Counts{101, 102, 103, 104, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(Profile, KeepsTheLargestAndAveragesTheMaximum) {
    PhysParams profile;
    Sample sample;
    const auto average_after = [&](std::int32_t numproc, std::int32_t diskinodes, int pass_no) {
        sample.counts.numproc = numproc;
        sample.counts.diskinodes = diskinodes;
        keep_largest(profile, sample, pass_no);
        return profile.avnumproc;
    };
    EXPECT_EQ(average_after(300, 7, 1), 300.0F);
    EXPECT_EQ(average_after(600, -5, 2), 450.0F);
    EXPECT_EQ(average_after(100, 6, 3), 500.0F) << "(600 - 450) / 3 above it: 600 is the maximum";
    EXPECT_EQ(profile.diskinodes, 7);
    sample.failure = SampleFailure{SampleFailure::Source::command, "", 0};
    EXPECT_EQ(average_after(0, 0, 4), 500.0F) << "nothing was counted";
    sample.failure->step = 1;
    EXPECT_EQ(average_after(0, 0, 4), 525.0F);
}

TEST(MemoryScan, TakesTheProcessesAndStopsAtTheMachinesPages) {
    MadeUpHost made_up;
    const auto scanned = [&] { return std::get<MemoryPages>(scan_memory(made_up.host)); };
    made_up.process("12", "PPid:\t0\nVmSize:\t4095 kB\nVmLck:\t40007 kB\n");
    made_up.process("12abc", "PPid:\t1\nVmSize:\t999999 kB\n");
    made_up.process("15", "PPid:\t0\nVmRSS:\t1 kB\n");  // unlike its sibling: all are counted
    std::filesystem::create_directories(made_up.root + "/13");         // ended meanwhile
    std::filesystem::create_directories(made_up.root + "/14/status");  // cannot be read
    EXPECT_EQ(scanned().privvmpages, 1023);
    made_up.host.physical_pages = [] { return 1000; };
    EXPECT_EQ(scanned().privvmpages, 1000);
    EXPECT_EQ(scanned().lockedpages, 10001);

    entries_left = 3;
    const auto found = scan_memory(made_up.host);
    entries_left = -1;
    ASSERT_TRUE(std::holds_alternative<Kiln::Reason>(found)) << "not read to its end";
    EXPECT_EQ(std::get<Kiln::Reason>(found).text,
              "Error opening " + made_up.root + ": Input/output error");
}

}  // namespace
