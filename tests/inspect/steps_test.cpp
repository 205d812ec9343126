// What the run prints of these steps is compared by the scenarios; here is what it does not show.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "calc/tarn_hwcalc.h"
#include "inspect/quota_mgmt.h"
#include "tests/support/private_host.h"

namespace {

using private_host::write_file;

// The answer, and behind a "|" the texts of the warnings.
std::string detect(const TarnHWCalc& calc) {
    TarnHWCalc::Warnings warnings;
    std::string text = calc.getDistribution(warnings) + "|";
    for (const TarnACalculateHWNodeWarning& warning : warnings) {
        EXPECT_EQ(warning.code, 0);
        text += warning.message;
    }
    return text;
}

TEST(DistributionStep, TriesTheScriptsInOrder) {
    private_host::run([] {
        const std::string last = "/tmp//usr/local/share/tarnp2v/distdetect-common.sh";
        TarnHWCalc calc;
        calc.dist_detect_scripts = {"/tmp/a", "/tmp/b"};
        EXPECT_EQ(detect(calc), "|OS distribution detection script (/tmp/a, /tmp/b, " + last +
                                    ") was not found. The DISTRIBUTION parameter of the CT config "
                                    "must be set manually.");
        write_file("/tmp/a", "echo a; exit 3\n");
        write_file(last, "echo last\n");
        EXPECT_EQ(detect(calc), "last|");
        write_file("/tmp/b", "echo b\n");
        EXPECT_EQ(detect(calc), "b|");
        write_file("/tmp/b", "");  // an empty answer ends the search as well
        EXPECT_EQ(detect(calc), "|OS distribution was not detected. It must be manually set.");
    });
}

TEST(MountSteps, TakeOnlyWhatTheTablesTell) {
    private_host::run([] {
        PhysParams params;
        params.nfs_used = true;
        TarnHWCalc::Warnings& warnings = params.notes.warnings;
        // A live mount that is no candidate leaves the candidate of the static table standing.
        write_file("/etc/fstab", "/dev/sr0 /m auto\n/dev/sda1 / reiserfs\n");
        write_file("/etc/mtab", "/dev/sr0 /m ext4 noquota,usrquota=x,grpquotas\n");
        const TarnHWCalc::Excludes excludes = TarnHWCalc().calcExcludes(&params, warnings);
        ASSERT_EQ(excludes.size(), 1U);
        EXPECT_TRUE(excludes[0].flag && excludes[0].path == "/m" && params.nfs_used);
        ASSERT_EQ(warnings.size(), 1U);
        EXPECT_EQ(warnings[0].code, 4);
        params.quotaugidlimit = 77;
        EXPECT_EQ(TarnHWCalc().calcQuotaUGIDLimit(&params), 0);
        EXPECT_EQ(params.quotaugidlimit, 0);
    });
}

TEST(QuotaMgmt, FindsTheMountByTheIdentityOfTheFile) {
    private_host::run([] {
        write_file("/tmp/dev1", "");
        write_file("/tmp/m1/x", "");
        std::filesystem::create_symlink("/tmp/dev1", "/tmp/link");
        bool usr = true;
        bool grp = true;
        std::string where;
        const auto find = [&](const char* name) {
            return QuotaMgmt::quota_is_enabled_phys(name, usr, grp, &where);
        };
        // A lone word, no word, an empty field, and a line that ends with its mount point.
        write_file("/etc/mtab",
                   "none\n\n/tmp/gone  /tmp/m1 ext4 usrquota\n/tmp/dev1 /tmp/m\\040x\n"
                   "/tmp/dev1 /tmp/m1 ext4 quota,grpquota 0 0\n");
        EXPECT_EQ(find("/tmp/link"), 0);
        EXPECT_TRUE(!usr && !grp && where == "/tmp/m\\040x");
        EXPECT_EQ(find("/tmp/m1/."), 0);
        EXPECT_TRUE(usr && grp && where == "/tmp/m1");
    });
}

}  // namespace
