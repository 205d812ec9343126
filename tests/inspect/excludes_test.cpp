#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "calc/tarn_hwcalc.h"
#include "tests/support/private_host.h"

namespace {

std::string excludes_of_host(PhysParams& params) {
    std::string text;
    for (const auto& exclude : TarnHWCalc().calcExcludes(&params, params.notes.warnings)) {
        text += (exclude.flag ? "+" : "K") + exclude.path + ' ';
    }
    return text;
}

TEST(ExcludeStep, PutsTheLiveTableOverTheStaticOne) {
    private_host::run([] {
        private_host::replace_file("/proc/filesystems", "nodev\tproc\n\text3\n");
        private_host::write_file("/etc/fstab",
                                 "proc /proc proc defaults 0 0\n/dev/sr0 /media auto user 0 0\n"
                                 "srv:/d /data/ nfs ro 0 0\n/dev/sda1 / reiserfs rw 0 0\n");
        private_host::write_file("/etc/mtab",
                                 "/dev/sda1 / reiserfs rw 0 0\n/dev/sr0 /media iso9660 ro 0 0\n"
                                 "x /proc/bus proc rw 0 0\n/dev/sda2 /data/ ext3 rw 0 0\n");
        PhysParams params;
        EXPECT_EQ(excludes_of_host(params), "+/data/* +/media/* K/proc/* ");
        EXPECT_TRUE(params.nfs_used);
        EXPECT_EQ(params.diskinodes, 1000000);
        ASSERT_EQ(params.notes.warnings.size(), 1U);
        EXPECT_EQ(params.notes.warnings[0].code, 4);
        EXPECT_EQ(params.notes.warnings[0].message,
                  "Some of partitions contain reiserfs, which makes impossible to calculate the "
                  "DISKINODES parameter. It will be set to an enough high value.");
    });
}

TEST(ExcludeStep, LivesWithoutTablesAndListsAHugeLoginRecordFile) {
    private_host::run([] {
        std::filesystem::create_directories("/etc/mtab");
        private_host::write_file("/var/log/lastlog", "");
        PhysParams params;
        params.nfs_used = true;
        params.diskinodes = 5;
        std::filesystem::resize_file("/var/log/lastlog", std::uintmax_t{1073741824});
        EXPECT_EQ(excludes_of_host(params), "");
        std::filesystem::resize_file("/var/log/lastlog", std::uintmax_t{1073741825});
        EXPECT_EQ(excludes_of_host(params), "+/var/log/lastlog ");
        EXPECT_TRUE(params.nfs_used && params.notes.warnings.empty());
        EXPECT_EQ(params.diskinodes, 5);
    });
}

}  // namespace
