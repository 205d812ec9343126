// The status parser and the rule that counts thread groups once.
#include "calc/process_memory.h"

#include <gtest/gtest.h>

#include <tuple>
#include <utility>

namespace {

TEST(ProcessStatus, TakesItsKeysAtTheStartOfALine) {
    proc_info_t info;
    parse_process_status(
        "Name:\tmy daemon\nPid:\t77\nPPid:\t1\nTracerPid:\t5\nVmPeak:\t 99999 kB\n"
        "VmSize:\t   10000 kB\n VmSize:\t1 kB\nVmLck:\t      64 kB\nVmRSS:\t    5000 kB\n"
        "VmExe:\t     100 kB\nVmLib:\t    2000 kB\nVmSizes:\t9\nPPids:\t9\nVmRSSs:\t9\n"
        "VmLcks:\t9\nVmExes:\t9\nVmLibs:\t9\nNames:\tx\n",
        info);
    EXPECT_EQ(info.name, "my daemon");
    EXPECT_EQ(info.ppid, 1);
    EXPECT_EQ(info.vm_size, 7900);
    EXPECT_EQ(info.vm_lck, 64);
    EXPECT_EQ(info.vm_rss, 5000);
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
    struct Process {
        std::int32_t ppid, size, rss, lck;
    };
    const std::tuple<std::vector<Process>, std::int32_t, std::int32_t> cases[] = {
        {{{1, 100, 7, 1}, {2, 200, 7, 2}}, 300, 3},  // distinct parents
        // One parent, equal resident sizes: the first child alone, whatever the others' sizes.
        {{{5, 40000, 1200, 8}, {5, 40001, 1200, 9}, {5, 40000, 1200, 8}}, 40000, 8},
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

TEST(MappingKeys, AreOrderedByBothNumbersSigned) {
    EXPECT_TRUE((map_idx_t{-1, 5} < map_idx_t{1, -2}) && (map_idx_t{1, -2} < map_idx_t{1, 0}));
    EXPECT_FALSE((map_idx_t{1, 0} < map_idx_t{1, 0}) || (map_idx_t{2, 0} < map_idx_t{1, 9}));
}

}  // namespace
