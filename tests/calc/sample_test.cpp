// One pass: the parsers of the commands' output, the memory scan, and what the profile keeps.
#include "calc/sample.h"

#include <dirent.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <variant>

#include "calc/memory_scan.h"
#include "calc/sample_parsers.h"
#include "tests/calc/made_up_host.h"

// The program's readdir(), which fails here after so many entries.
namespace {
int entries_left = -1;
}
extern "C" dirent* __real_readdir(DIR* directory);
extern "C" dirent* __wrap_readdir(DIR* directory) {
    if (entries_left == 0) {
        errno = EIO;
        return nullptr;
    }
    --entries_left;
    return __real_readdir(directory);
}

namespace {

TEST(SampleParsers, TakeWhatIsANumberAndWrap) {
    const std::string header = "Filesystem 1K-blocks 9 Available Use% Mounted on\n";
    const struct {
        std::int32_t (*parse)(const std::string&);
        std::string text;
        std::int32_t number;
    } cases[] = {
        {parse_count, "143\n", 143},
        {parse_count, "  12 345\r\n", 12345},
        {parse_count, "wc: no\n", 0},
        {parse_count, "7x9", 7},
        {parse_count, "4294967297", 1},
        {parse_count, std::string("1\0002", 3), 1},
        {parse_shm_pages, "segments allocated 7\npages allocated 1043\npages resident  5\n", 1043},
        {parse_shm_pages, "pages allocated\n\n x12\n", 12},
        {parse_shm_pages, "pages allocated none\n", 0},
        {parse_shm_pages, "pages resident  55\n", 0},
        {sum_used_column, "", 0},
        {sum_used_column, "/dev/a 1 2 3 4% /\n", 0},  // the header goes by place, not by text
        {sum_used_column, header + "/dev/a 1 20 8 20% /\n/dev/b\t50\t7\t43 14% /b", 27},
        {sum_used_column, header + "/dev/a-long-name\n  100 20 80 2% /\n/dev/b 5 7 4 1% /b\n", 27},
        {sum_used_column, header + "/dev/a 100\n/dev/b 50 \n\n/dev/c\n", 0},  // no such column
        {sum_used_column, header + "/dev/a 0 - - 30% /\n", 30},  // the next digits anywhere
        {sum_used_column, header + "/a 9 2147483647 1\n/b 9 1 1\n", -2147483647 - 1},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.parse(c.text), c.number) << c.text;
    }
}

constexpr const char* count_processes = "ps ax | wc -l";
constexpr const char* count_rules = "iptables -n -L -t filter | wc -l";
constexpr const char* count_routes = "ip route list | wc -l";

// Every command counts something else.
void answer_all(MadeUpHost& made_up) {
    made_up.answers = {
        {count_processes, {0, "101\n", ""}},
        {"wc -l < /proc/net/tcp", {0, "102\n", ""}},
        {"cat /proc/net/unix /proc/net/udp /proc/net/raw | wc -l", {0, "103\n", ""}},
        {"ls /proc/*/fd/* | wc -l", {0, "104\n", ""}},
        {"/usr/bin/ipcs -m -u", {0, "pages allocated 107\n", ""}},
        {"wc -l < /proc/locks", {0, "108\n", ""}},
        {count_rules, {0, "1000\n", ""}},
        {count_routes, {0, "9\n", ""}},
        {"df -k -l", {0, "head\n/dev/a 9 110 9\n", ""}},
        {"df -i -l", {0, "head\n/dev/a 9 111 9\n", ""}},
    };
    made_up.process("1", "PPid:\t0\nVmSize:\t420 kB\nVmLck:\t424 kB\n");
}

std::vector<std::int32_t> counts_of(const SampleCounts& counts) {
    std::vector<std::int32_t> list;
    for (const SampleField& field : sample_fields) {
        list.push_back(counts.*field.count);
    }
    return list;
}

TEST(Sample, EveryStepGivesItsCount) {
    MadeUpHost made_up;
    answer_all(made_up);
    Sample sample = take_sample(made_up.host);
    EXPECT_FALSE(sample.failure);
    EXPECT_EQ(counts_of(sample.counts),
              (std::vector<std::int32_t>{101, 102, 103, 104, 105, 106, 107, 108, 1009, 110, 111}));
    EXPECT_EQ(made_up.asked, 10);

    made_up.answers[count_rules] = {127, "7\n", "sh: iptables: not found\n"};
    EXPECT_EQ(take_sample(made_up.host).counts.numiptent, 9);
    made_up.answers[count_routes].status = -1;
    sample = take_sample(made_up.host);
    EXPECT_FALSE(sample.failure) << "these two are forgiven";
    EXPECT_EQ(sample.counts.numiptent, 0);
}

TEST(Sample, EndsWithTheFirstStepThatFails) {
    // The largest count of the steps before each.
    const std::int32_t counted[] = {0, 101, 102, 103, 104, 106, 107, 108, 108, 1009, 1009};
    for (std::size_t step = 0; step < sample_steps.size(); ++step) {
        if (sample_steps[step].forgiven) {
            continue;
        }
        MadeUpHost made_up;
        answer_all(made_up);
        const char* command = sample_steps[step].command;
        std::string text = "Error opening /nonexistent/proc: No such file or directory";
        if (command == nullptr) {
            made_up.host.paths.proc = "/nonexistent/proc";
        } else {
            made_up.answers[command] = {1, "99\n", "no\n"};
            text = std::string("Error running '") + command + "':\nno\n";
        }
        const Sample sample = take_sample(made_up.host);
        ASSERT_TRUE(sample.failure);
        EXPECT_EQ(sample.failure->step, step);
        EXPECT_EQ(sample.failure->text, text);
        EXPECT_EQ(sample.failure->source == SampleFailure::Source::command, command != nullptr);
        const std::vector<std::int32_t> counts = counts_of(sample.counts);
        EXPECT_EQ(*std::max_element(counts.begin(), counts.end()), counted[step]) << step;
    }
}

TEST(Profile, KeepsTheLargestAndAveragesTheMaximum) {
    PhysParams profile;
    Sample sample;
    sample.counts.numproc = 300;
    sample.counts.diskinodes = 7;
    keep_largest(profile, sample, 1);
    EXPECT_EQ(profile.avnumproc, 300.0F);
    sample.counts.numproc = 600;
    sample.counts.diskinodes = -5;
    keep_largest(profile, sample, 2);
    EXPECT_EQ(profile.avnumproc, 450.0F);
    sample.counts.numproc = 100;
    keep_largest(profile, sample, 3);
    EXPECT_EQ(profile.avnumproc, 500.0F) << "(600 - 450) / 3 above 450, though only 100 were seen";
    EXPECT_EQ(profile.numproc, 600);
    EXPECT_EQ(profile.diskinodes, 7);

    sample.failure = SampleFailure{SampleFailure::Source::command, "", 0};
    keep_largest(profile, sample, 4);
    EXPECT_EQ(profile.avnumproc, 500.0F) << "nothing was counted";
    sample.failure->step = 1;
    keep_largest(profile, sample, 4);
    EXPECT_EQ(profile.avnumproc, 525.0F);
}

std::int32_t private_pages(const MadeUpHost& made_up) {
    return std::get<MemoryPages>(scan_memory(made_up.host)).privvmpages;
}

TEST(MemoryScan, TakesTheProcessesAndStopsAtTheMachinesPages) {
    MadeUpHost made_up;
    EXPECT_EQ(private_pages(made_up), 0);
    made_up.process("12", "PPid:\t0\nVmSize:\t4095 kB\nVmLck:\t40007 kB\n");
    for (const char* name : {"self", "123abc", "0x10"}) {
        made_up.process(name, "PPid:\t1\nVmSize:\t999999 kB\n");
    }
    std::filesystem::create_directories(made_up.root + "/13");         // ended meanwhile
    std::filesystem::create_directories(made_up.root + "/14/status");  // cannot be read
    EXPECT_EQ(private_pages(made_up), 1023);
    made_up.host.physical_pages = [] { return 1023; };
    EXPECT_EQ(private_pages(made_up), 1023);
    made_up.host.physical_pages = [] { return 1000; };
    EXPECT_EQ(private_pages(made_up), 1000);
    EXPECT_EQ(std::get<MemoryPages>(scan_memory(made_up.host)).lockedpages, 10001);
}

TEST(MemoryScan, ADirectoryThatCannotBeReadToItsEndCannotBeRead) {
    MadeUpHost made_up;
    made_up.process("12", "PPid:\t0\nVmSize:\t4095 kB\n");
    entries_left = 3;  // "." and ".." and the process
    const auto found = scan_memory(made_up.host);
    entries_left = -1;
    ASSERT_TRUE(std::holds_alternative<Kiln::Reason>(found));
    EXPECT_EQ(std::get<Kiln::Reason>(found).text,
              "Error opening " + made_up.root + ": Input/output error");
}

}  // namespace
