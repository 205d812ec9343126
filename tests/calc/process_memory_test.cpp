// The status parser and the rule that counts thread groups once.
#include "calc/process_memory.h"

#include <gtest/gtest.h>

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
    struct {
        const char* text;
        std::int32_t vm_size, vm_rss;
    } const cases[] = {
        {"VmSize:", 0, 0},
        {"VmSize:\nVmRSS:\t7 kB", 0, 7},
        {"VmSize:\t \n VmRSS:\t7 kB", 0, 0},        // no value, and none from the next line
        {"VmSize: \v\n12", 0, 0},                   // nor through other white space
        {"VmSize:\t12kB\nVmSize:\tx\nVmRS", 0, 0},  // the last line decides
        {"VmSize:\t-5 kB\nVmRSS:\t99999999999", -5, 1215752191},  // 99999999999 mod 2^32
        {"VmExe:\t2147483647\nVmLib:\t2", 2147483647, 0},         // 0 - 2147483647 - 2 wraps
    };
    for (const auto& c : cases) {
        proc_info_t info;
        parse_process_status(c.text, info);
        EXPECT_EQ(info.vm_size, c.vm_size) << c.text;
        EXPECT_EQ(info.vm_rss, c.vm_rss) << c.text;
    }
}

TEST(SumMemory, ChildrenOfOneSizeAreCountedOnce) {
    struct Process {
        std::int32_t ppid, size, rss, lck;
    };
    const struct {
        std::vector<Process> processes;
        std::int32_t vm_kib, lck_kib;
    } cases[] = {
        {{}, 0, 0},
        {{{1, 100, 7, 1}, {2, 200, 7, 2}}, 300, 3},  // distinct parents
        // One parent, equal resident sizes: the first child alone, whatever the others' sizes.
        {{{5, 40000, 1200, 8}, {5, 40001, 1200, 9}, {5, 40000, 1200, 8}}, 40000, 8},
        // One that differs, first or last: all of them.
        {{{5, 40000, 1200, 1}, {5, 40000, 1200, 1}, {5, 40000, 1204, 1}}, 120000, 3},
        {{{5, 40000, 1204, 1}, {5, 40000, 1200, 1}}, 80000, 2},
        {{{1, 2147483647, 1, 2147483647}, {2, 2, 2, 3}}, -2147483647, -2147483646},  // 32 bits
    };
    for (const auto& c : cases) {
        ProcessTables tables;
        std::int32_t pid = 100;
        for (const Process& p : c.processes) {
            add_process(tables, pid++,
                        "PPid:\t" + std::to_string(p.ppid) + "\nVmSize:\t" +
                            std::to_string(p.size) + " kB\nVmLck:\t" + std::to_string(p.lck) +
                            " kB\nVmRSS:\t " + std::to_string(p.rss) + " kB\n");
        }
        const MemoryTotals totals = sum_memory(tables);
        EXPECT_EQ(totals.vm_kib, c.vm_kib);
        EXPECT_EQ(totals.lck_kib, c.lck_kib);
    }
}

TEST(MappingKeys, AreOrderedByBothNumbersSigned) {
    EXPECT_TRUE((map_idx_t{-1, 5} < map_idx_t{1, 0}));
    EXPECT_TRUE((map_idx_t{1, -2} < map_idx_t{1, 0}));
    EXPECT_FALSE((map_idx_t{1, 0} < map_idx_t{1, 0}) || (map_idx_t{2, 0} < map_idx_t{1, 9}));
}

}  // namespace
