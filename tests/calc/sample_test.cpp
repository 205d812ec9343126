// What the profile keeps of a pass, and the ends of the memory scan. Scenarios show the counts.
#include "calc/sample.h"

#include <dirent.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <utility>

#include "calc/memory_scan.h"
#include "calc/process_memory.h"
#include "tests/support/made_up_host.h"

static int entries_left = -1;  // of those that the program's readdir() gives before it fails
extern "C" dirent* __real_readdir(DIR* directory);
extern "C" dirent* __wrap_readdir(DIR* directory) {
    errno = entries_left == 0 ? EIO : errno;
    return entries_left-- == 0 ? nullptr : __real_readdir(directory);
}

namespace {

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
    sample.taken.reset(place_of(&PhysParams::numproc));
    EXPECT_EQ(average_after(900, 4), 500.0F) << "nothing was counted";
}

TEST(ProcessStatus, HasTheNameToo) {
    proc_info_t info;
    parse_process_status("Name:\tmy daemon\nNames:\tx\nName\n", info);
    EXPECT_EQ(info.name, "my daemon");
}

TEST(SumMemory, TakesTheFirstOfChildrenOfOneSize) {
    ProcessTables tables;
    add_process(tables, 101, "PPid:\t5\nVmSize:\t40000\nVmLck:\t8\n");
    add_process(tables, 102, "PPid:\t5\nVmSize:\t40001\nVmLck:\t9\n");
    const MemoryTotals totals = sum_memory(tables);
    EXPECT_EQ(std::pair(totals.vm_kib, totals.lck_kib), std::pair(40000, 8));
}

TEST(MemoryScan, StopsAtTheMachinesPagesAndNeedsTheWholeDirectory) {
    MadeUpHost made_up;
    made_up.put("19/status", "PPid:\t0\nVmSize:\t4095 kB\nVmLck:\t40007 kB\n");
    EXPECT_EQ(scan_memory(made_up.host)->privvmpages, 1023);
    made_up.host.physical_pages = [] { return 1000; };
    EXPECT_EQ(scan_memory(made_up.host)->privvmpages, 1000);
    EXPECT_EQ(scan_memory(made_up.host)->lockedpages, 10001);

    entries_left = 2;
    const auto found = scan_memory(made_up.host);
    entries_left = -1;
    ASSERT_FALSE(found);
    EXPECT_EQ(found.reason(), "Error opening " + made_up.root + ": Input/output error");
}

}  // namespace
