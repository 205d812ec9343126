// The status parser and the rule that counts thread groups once.
#include "calc/process_memory.h"

#include <gtest/gtest.h>

namespace {

std::string status(int ppid, int size_kib, int rss_kib, int lck_kib = 0) {
    return "Name:\tx\nPPid:\t" + std::to_string(ppid) + "\nVmSize:\t" + std::to_string(size_kib) +
           " kB\nVmLck:\t" + std::to_string(lck_kib) + " kB\nVmRSS:\t " + std::to_string(rss_kib) +
           " kB\n";
}

TEST(ProcessStatus, TakesTheSixKeysAtTheStartOfALine) {
    proc_info_t info;
    parse_process_status(
        "Name:\tmy daemon\nUmask:\t0022\nPid:\t77\nPPid:\t1\nTracerPid:\t5\nVmPeak:\t 99999 kB\n"
        "VmSize:\t   10000 kB\n VmSize:\t1 kB\nVmSizes:\t1 kB\nVmLck:\t      64 kB\nVmRSS:\t    "
        "5000 kB\n"
        "VmExe:\t     100 kB\nVmLib:\t    2000 kB\n"
        "PPids:\t9\nVmRSSs:\t9\nVmLcks:\t9\nVmExes:\t9\nVmLibs:\t9\nNames:\tx\n",
        info);
    EXPECT_EQ(info.name, "my daemon");
    EXPECT_EQ(info.ppid, 1);
    EXPECT_EQ(info.vm_size, 7900);
    EXPECT_EQ(info.vm_lck, 64);
    EXPECT_EQ(info.vm_rss, 5000);
    EXPECT_TRUE(info.mappings.empty());
}

TEST(ProcessStatus, DamagedTextCountsAsFarAsItGoes) {
    struct {
        const char* text;
        std::int32_t vm_size, vm_rss;
    } const cases[] = {
        {"", 0, 0},
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

MemoryTotals total(const std::vector<std::string>& texts) {
    ProcessTables tables;
    std::int32_t pid = 100;
    for (const std::string& text : texts) {
        add_process(tables, pid++, text);
    }
    return sum_memory(tables);
}

TEST(SumMemory, ChildrenOfOneSizeAreCountedOnce) {
    EXPECT_EQ(total({}).vm_kib, 0);
    // Distinct parents: plain sums.
    EXPECT_EQ(total({status(1, 100, 7, 1), status(2, 200, 7, 2)}).vm_kib, 300);
    EXPECT_EQ(total({status(1, 100, 7, 1), status(2, 200, 7, 2)}).lck_kib, 3);
    // One parent, equal resident sizes: the first child alone, whatever the others' sizes.
    const MemoryTotals threads =
        total({status(5, 40000, 1200, 8), status(5, 40001, 1200, 9), status(5, 40000, 1200, 8)});
    EXPECT_EQ(threads.vm_kib, 40000);
    EXPECT_EQ(threads.lck_kib, 8);
    // One that differs, first or last: all of them.
    EXPECT_EQ(
        total({status(5, 40000, 1200), status(5, 40000, 1200), status(5, 40000, 1204)}).vm_kib,
        120000);
    EXPECT_EQ(total({status(5, 40000, 1204), status(5, 40000, 1200)}).vm_kib, 80000);
    // Kernel threads have no sizes; a status without a parent belongs to parent 0.
    EXPECT_EQ(total({status(2, 50, 9), "Name:\tkworker\nPPid:\t2\n", "VmSize:\t3 kB\n"}).vm_kib,
              53);
}

TEST(SumMemory, WrapsAt32Bits) {
    const MemoryTotals totals = total({status(1, 2147483647, 1, 2147483647), status(2, 2, 2, 3)});
    EXPECT_EQ(totals.vm_kib, -2147483647);
    EXPECT_EQ(totals.lck_kib, -2147483646);
}

TEST(MappingKeys, AreOrderedByBothNumbersSigned) {
    EXPECT_TRUE((map_idx_t{-1, 5} < map_idx_t{1, 0}));
    EXPECT_TRUE((map_idx_t{1, -2} < map_idx_t{1, 0}));
    EXPECT_FALSE((map_idx_t{1, 0} < map_idx_t{1, 0}));
    EXPECT_FALSE((map_idx_t{2, 0} < map_idx_t{1, 9}));
}

}  // namespace
