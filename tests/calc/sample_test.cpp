// One pass: the parsers of the commands' output, the processes, what the profile keeps.
#include "calc/sample.h"

#include <dirent.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <tuple>
#include <utility>

#include "calc/memory_scan.h"
#include "calc/process_memory.h"
#include "calc/sample_parsers.h"
#include "tests/support/made_up_host.h"

static int entries_left = -1;  // of those that the program's readdir() gives before it fails
extern "C" dirent* __real_readdir(DIR* directory);
extern "C" dirent* __wrap_readdir(DIR* directory) {
    errno = entries_left == 0 ? EIO : errno;
    return entries_left-- == 0 ? nullptr : __real_readdir(directory);
}

namespace {

TEST(SampleParsers, TakeWhatIsANumberAndWrap) {
    const std::string header = "Filesystem 1K-blocks 9 Available Use% Mounted on\n";
    const std::tuple<std::int32_t (*)(const std::string&), std::string, std::int32_t> cases[] = {
        {parse_count, "  12 345\r\n", 12345},
        {parse_count, "wc: no\n", 0},
        {parse_count, std::string("1\0002", 3), 1},
        {parse_shm_pages, "segments 7\npages allocated 1043\npages resident  5\n", 1043},
        {parse_shm_pages, "pages allocated\n\n x12\n", 12},
        {parse_shm_pages, "pages resident  55\n", 0},
        {sum_used_column, "/dev/a 1 2 3 4% /\n", 0},  // the header goes by place, not by text
        {sum_used_column, header + "/dev/a 1 20 8 20% /\n/dev/b\t50\t7\t43 14% /b", 27},
        {sum_used_column, header + "/dev/a-long-name\n  10 20 80 2% /\n/dev/b 5 7 4 1% /\n", 27},
        {sum_used_column, header + "/dev/a 100\n/dev/b 50 \n\n/dev/c\n", 0},  // no such column
        {sum_used_column, header + "/dev/a 0 - - 30% /\n", 30},  // the next digits anywhere
        {sum_used_column, header + "/a 9 2147483647 1\n/b 9 1 1\n", -2147483647 - 1},
    };
    for (const auto& [parse, text, number] : cases) {
        EXPECT_EQ(parse(text), number) << text;
    }
}

TEST(Profile, KeepsTheLargestAndAveragesTheMaximum) {
    PhysParams profile;
    Sample sample;
    sample.taken.set();
    const auto average_after = [&](std::int32_t numproc, int pass_no) {
        sample.counts[&PhysParams::numproc] = numproc;
        keep_largest(profile, sample, pass_no);
        return profile.avnumproc;
    };
    EXPECT_EQ(average_after(300, 1), 300.0F);
    EXPECT_EQ(average_after(600, 2), 450.0F);
    EXPECT_EQ(average_after(100, 3), 500.0F) << "(600 - 450) / 3 above it: 600 is the maximum";
    profile.shmpages = -5;  // it wrapped
    sample.taken.reset();
    EXPECT_EQ(average_after(900, 4), 500.0F) << "nothing was counted";
    sample.taken.set(place_of(&PhysParams::numproc));
    EXPECT_EQ(average_after(0, 4), 525.0F);
    EXPECT_EQ(profile.shmpages, -5) << "a step that was not taken raises nothing";
}

TEST(ProcessStatus, TakesItsKeysAtTheStartOfALine) {
    proc_info_t info;
    parse_process_status(
        "Name:\tmy daemon\nPid:\t77\nPPid:\t1\nTracerPid:\t5\nVmPeak:\t 99999 kB\n"
        "VmSize:\t   10000 kB\n VmSize:\t1 kB\nVmLck:\t      64 kB\nVmRSS:\t    5000 kB\n"
        "VmExe:\t     100 kB\nVmLib:\t    2000 kB\nVmSizes:\t9\nPPids:\t9\nVmRSSs:\t9\n"
        "VmLcks:\t9\nVmExes:\t9\nVmLibs:\t9\nNames:\tx\n",
        info);
    EXPECT_EQ(info.name, "my daemon");
    EXPECT_EQ(std::tuple(info.ppid, info.vm_size, info.vm_lck, info.vm_rss),
              std::tuple(1, 7900, 64, 5000));
}

TEST(ProcessStatus, DamagedTextCountsAsFarAsItGoes) {
    const std::tuple<const char*, std::int32_t, std::int32_t> cases[] = {
        {"VmSize:\nVmRSS:\t7 kB", 0, 7},
        {"VmSize: \v\n12", 0, 0},                                 // none from the next line
        {"VmSize:\t12kB\nVmSize:\tx\nVmRS", 0, 0},                // the last line decides
        {"VmSize:\t-5 kB\nVmRSS:\t99999999999", -5, 1215752191},  // 99999999999 mod 2^32
        {"VmExe:\t2147483647\nVmLib:\t2", 2147483647, 0},         // 0 - 2147483647 - 2 wraps
    };
    for (const auto& [text, vm_size, vm_rss] : cases) {
        proc_info_t info;
        parse_process_status(text, info);
        EXPECT_EQ(std::pair(info.vm_size, info.vm_rss), std::pair(vm_size, vm_rss)) << text;
    }
}

TEST(SumMemory, ChildrenOfOneSizeAreCountedOnce) {
    using Process = std::array<std::int32_t, 4>;  // parent, size, resident and locked
    const std::tuple<std::vector<Process>, std::int32_t, std::int32_t> cases[] = {
        {{{1, 100, 7, 1}, {2, 200, 7, 2}}, 300, 3},  // distinct parents
        // One parent, equal resident sizes: the first child alone, whatever the others' sizes.
        {{{5, 40000, 1200, 8}, {5, 40001, 1200, 9}, {5, 40002, 1200, 7}}, 40000, 8},
        // One that differs, first or last: all of them.
        {{{5, 40000, 1200, 1}, {5, 40000, 1200, 1}, {5, 40000, 1204, 1}}, 120000, 3},
        {{{5, 40000, 1204, 1}, {5, 40000, 1200, 1}}, 80000, 2},
        {{{1, 2147483647, 1, 2147483647}, {2, 2, 2, 3}}, -2147483647, -2147483646},  // 32 bits
    };
    for (const auto& [processes, vm_kib, lck_kib] : cases) {
        ProcessTables tables;
        std::int32_t pid = 100;
        for (const auto& [ppid, size, rss, lck] : processes) {
            tables.processes[pid] = {{}, "", rss, lck, size, ppid};
            tables.children[ppid].push_back(pid++);
        }
        const MemoryTotals totals = sum_memory(tables);
        EXPECT_EQ(std::pair(totals.vm_kib, totals.lck_kib), std::pair(vm_kib, lck_kib));
    }
}

TEST(MemoryScan, TakesTheProcessesAndStopsAtTheMachinesPages) {
    MadeUpHost made_up;
    const auto scanned = [&] { return *scan_memory(made_up.host); };
    made_up.put("19/status", "PPid:\t0\nVmSize:\t4095 kB\nVmLck:\t40007 kB\n");
    made_up.put("19abc/status", "PPid:\t1\nVmSize:\t999999 kB\n");
    made_up.put("13/no_status", "");  // ended meanwhile
    made_up.put("14/status/no_file", "");
    made_up.put("15/status", "PPid:\t0\nVmRSS:\t1 kB\n");  // unlike its sibling: all are counted
    EXPECT_EQ(scanned().privvmpages, 1023);
    made_up.host.physical_pages = [] { return 1000; };
    EXPECT_EQ(scanned().privvmpages, 1000);
    EXPECT_EQ(scanned().lockedpages, 10001);

    entries_left = 3;
    const auto found = scan_memory(made_up.host);
    entries_left = -1;
    ASSERT_FALSE(found) << "not read to its end";
    EXPECT_EQ(found.reason(), "Error opening " + made_up.root + ": Input/output error");
}

}  // namespace
