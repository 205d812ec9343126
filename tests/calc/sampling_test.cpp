// The parsers of the counting commands' output, and the loop on stubbed commands.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>

#include "calc/sample_parsers.h"
#include "calc/scan_observer.h"
#include "calc/tarn_hwcalc.h"

namespace {

TEST(SampleParsers, Counts) {
    const std::pair<std::string, int> cases[] = {{"143\n", 143},    {"  12 345\r\n", 12345},
                                                 {"", 0},           {"wc: no\n", 0},
                                                 {"-3\n", -3},      {"7x9", 7},
                                                 {"4294967297", 1}, {std::string("1\0002", 3), 1}};
    for (const auto& [text, count] : cases) {
        EXPECT_EQ(parse_count(text), count) << text;
    }
}

TEST(SampleParsers, SharedMemoryPages) {
    EXPECT_EQ(parse_shm_pages("\n------ Shared Memory Status --------\nsegments allocated 7\n"
                              "pages allocated 1043\npages resident  55\n"),
              1043);
    EXPECT_EQ(parse_shm_pages("pages allocated\n\n x12\n"), 12);
    EXPECT_EQ(parse_shm_pages("pages allocated none\n"), 0);
    EXPECT_EQ(parse_shm_pages("pages resident  55\n"), 0);
    EXPECT_EQ(parse_shm_pages(""), 0);
}

TEST(SampleParsers, UsedColumn) {
    const std::string header = "Filesystem 1K-blocks 9 Available Use% Mounted on\n";
    const std::pair<std::string, int> cases[] = {
        {"", 0},
        {"/dev/a 1 2 3 4% /\n", 2},  // the header goes by place, not by text
        {"/dev/a 100 20 80 20% /\n/dev/b\t50\t7\t43 14% /b", 27},
        {"/dev/mapper/a-very-long-name\n      100 20 80 20% /\n/dev/b 50 7 43 14% /b\n", 27},
        {"/dev/a 100\n/dev/b 50 \n\n/dev/c\n", 0},  // lines that lack the column
        {"/dev/a 0 - - 30% /\n", 30},               // the next digits, wherever they stand
        {"/dev/a 9 2147483647 1\n/dev/b 9 1 1\n", -2147483647 - 1},
    };
    for (const auto& [lines, sum] : cases) {
        EXPECT_EQ(sum_used_column(header + lines), sum) << lines;
    }
}

class RecordingObserver : public ScanObserver {
public:
    void progress(const ScanProgress& progress) override { seen.push_back(progress); }
    void finished() override { ++finishes; }

    std::vector<ScanProgress> seen;
    int finishes = 0;
};

// Commands of the test's own stand first in PATH. "ps" prints more lines in each of its first runs
// and fewer later on, so that maxima and average can be told from samples.
class SamplingLoop : public testing::Test {
protected:
    void SetUp() override {
        char name[] = "/tmp/sampling-test-XXXXXX";
        ASSERT_NE(mkdtemp(name), nullptr);
        dir_ = name;
        old_path_ = getenv("PATH");
        setenv("PATH", (dir_ + ":" + old_path_).c_str(), 1);
        command("iptables", "echo rule");
        command("ip", "printf 'a\\nb\\n'");
        command("df", "printf 'header\\n/dev/a 100 20 80 20%% /\\n'");
        command("ps", "echo run >> " + dir_ + "/runs\nn=$(wc -l < " + dir_ +
                          "/runs)\n[ $n -gt 2 ] && n=1\nseq $((n * 10))");
    }
    void TearDown() override {
        setenv("PATH", old_path_.c_str(), 1);
        std::filesystem::remove_all(dir_);
    }
    void command(const std::string& name, const std::string& body) {
        std::ofstream(dir_ + "/" + name) << "#!/bin/sh\n" << body << "\n";
        chmod((dir_ + "/" + name).c_str(), 0755);
    }

    std::string dir_;
    std::string old_path_;
};

TEST_F(SamplingLoop, WithoutAScanTimeThereIsOnePass) {
    TarnHWCalc calc;
    PhysParams p;
    const std::time_t start = std::time(nullptr);
    ASSERT_EQ(calc.calcProcParams(&p), 0) << calc.error_text;
    EXPECT_LE(std::time(nullptr) - start, 3);
    EXPECT_EQ(p.numproc, 10);
    EXPECT_EQ(p.avnumproc, 10.0F);
    EXPECT_EQ(p.numpty, 255);
    EXPECT_EQ(p.numiptent, 3);
    EXPECT_EQ(p.diskspace, 20);
    EXPECT_EQ(p.diskinodes, 20);
    EXPECT_GT(p.numfile, 0);
    EXPECT_GT(p.privvmpages, 0);
}

// Passes at 0, 1 and 2 seconds. ps prints 10, 20 and then 10 lines: the maximum stays at 20, and
// the average is that of the running maxima 10, 20, 20: 10, then 10 + 10/2, then 15 + 5/3.
TEST_F(SamplingLoop, KeepsTheLargestAndAveragesTheRunningMaximum) {
    command("iptables", "echo rule; exit 3");  // its pipeline still succeeds through wc
    TarnHWCalc calc;
    RecordingObserver observer;
    calc.scan_time = 2;
    calc.scan_period = 1;
    calc.scan_observer = &observer;
    PhysParams p;
    ASSERT_EQ(calc.calcProcParams(&p), 0) << calc.error_text;
    std::ifstream runs(dir_ + "/runs");
    const auto passes = std::count(std::istreambuf_iterator<char>(runs), {}, '\n');
    EXPECT_GE(passes, 2);
    EXPECT_LE(passes, 3);
    EXPECT_EQ(p.numproc, 20);
    EXPECT_EQ(p.avnumproc, passes == 3 ? 15.0F + 5.0F / 3.0F : 15.0F);
    EXPECT_EQ(p.numiptent, 3);

    ASSERT_FALSE(observer.seen.empty());
    EXPECT_EQ(observer.finishes, 1);
    EXPECT_EQ(observer.seen.front().passes_done, 0);
    EXPECT_EQ(observer.seen.front().total_seconds, 2);
    EXPECT_EQ(observer.seen.back().passes_done, passes - 1);
}

TEST_F(SamplingLoop, AFailingCommandEndsTheScanAndKeepsWhatWasCounted) {
    command("df", "echo 'df: /mnt: unreachable' >&2; exit 1");
    TarnHWCalc calc;
    PhysParams p;
    EXPECT_EQ(calc.calcProcParams(&p), 2);
    EXPECT_STREQ(calc.error_text, "Error running 'df -k -l':\ndf: /mnt: unreachable\n");
    EXPECT_EQ(p.numiptent, 3);
    EXPECT_EQ(p.diskspace, 0);
}

TEST_F(SamplingLoop, TheMemoryScanOnlyEverRaises) {
    TarnHWCalc calc;
    PhysParams p;
    p.privvmpages = 2147483647;
    p.lockedpages = 2147483647;
    EXPECT_EQ(calc.calcMemInfoByVmSize(&p), 0);
    EXPECT_EQ(p.privvmpages, 2147483647);
    EXPECT_EQ(p.lockedpages, 2147483647);
}

}  // namespace
