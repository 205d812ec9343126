// One pass: the parsers of the commands' output, the memory scan, and what the profile keeps.
#include "calc/sample.h"

#include <dirent.h>
#include <gtest/gtest.h>

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
    const std::pair<const char*, int> cases[] = {
        {"\n------ Shared Memory Status --------\nsegments allocated 7\n"
         "pages allocated 1043\npages resident  55\n",
         1043},
        {"pages allocated\n\n x12\n", 12},
        {"pages allocated none\n", 0},
        {"pages resident  55\n", 0},
        {"", 0}};
    for (const auto& [text, pages] : cases) {
        EXPECT_EQ(parse_shm_pages(text), pages) << text;
    }
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
    EXPECT_EQ(sample.counts.shmpages, 107);
    EXPECT_STREQ(sample_fields[6].name, "shmpages");
    EXPECT_EQ(made_up.asked.size(), 10U);

    made_up.answers[count_rules] = {127, "7\n", "sh: iptables: not found\n"};
    EXPECT_EQ(take_sample(made_up.host).counts.numiptent, 9);
    made_up.answers[count_routes].status = -1;
    sample = take_sample(made_up.host);
    EXPECT_FALSE(sample.failure) << "these two are forgiven";
    EXPECT_EQ(sample.counts.numiptent, 0);
}

TEST(Sample, EndsWithTheFirstStepThatFails) {
    for (std::size_t step = 0; step < sample_steps.size(); ++step) {
        MadeUpHost made_up;
        answer_all(made_up);
        const char* command = sample_steps[step].command;
        if (command != nullptr) {
            made_up.answers[command] = {1, "99\n", "no\n"};
        } else {
            made_up.host.paths.proc = "/nonexistent/proc";
        }
        const Sample sample = take_sample(made_up.host);
        if (sample_steps[step].forgiven) {
            EXPECT_FALSE(sample.failure) << command;
            continue;
        }
        ASSERT_TRUE(sample.failure);
        EXPECT_EQ(sample.failure->step, step);
        const bool of_command = command != nullptr;
        EXPECT_EQ(sample.failure->source == SampleFailure::Source::command, of_command);
        EXPECT_EQ(sample.failure->text,
                  of_command ? std::string("Error running '") + command + "':\nno\n"
                             : "Error opening /nonexistent/proc: No such file or directory");
        // The steps before it have counted, it and those after it have not.
        std::int32_t largest = 0;
        for (const std::int32_t count : counts_of(sample.counts)) {
            largest = std::max(largest, count);
        }
        const std::int32_t last_counts[] = {0, 101, 102, 103, 104, 106, 107, 0, 0, 1009, 1009};
        EXPECT_EQ(largest, last_counts[step]) << step;
    }
}

// The numbers of processes, then what is kept of them.
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
