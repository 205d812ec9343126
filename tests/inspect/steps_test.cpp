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

TEST(ExcludeStep, ChangesTheProfileOnlyForWhatItFinds) {
    private_host::run([] {
        PhysParams params;
        params.nfs_used = true;
        params.diskinodes = 5;
        TarnHWCalc::Warnings& warnings = params.notes.warnings;
        EXPECT_TRUE(TarnHWCalc().calcExcludes(&params, warnings).empty());
        EXPECT_TRUE(params.nfs_used && params.diskinodes == 5 && warnings.empty());
        // A live mount that is no candidate leaves the candidate of the static table standing.
        write_file("/etc/fstab", "/dev/sr0 /m auto\n/dev/sda1 / reiserfs\n");
        write_file("/etc/mtab", "/dev/sr0 /m ext4\n/dev/sda1 / reiserfs\n");
        const TarnHWCalc::Excludes excludes = TarnHWCalc().calcExcludes(&params, warnings);
        ASSERT_EQ(excludes.size(), 1U);
        EXPECT_TRUE(excludes[0].flag && excludes[0].path == "/m");
        EXPECT_EQ(params.diskinodes, 1000000);
        ASSERT_EQ(warnings.size(), 1U);
        EXPECT_EQ(warnings[0].code, 4);
    });
}

TEST(QuotaCount, AsksNothingWithoutQuotasAndFailsWithoutATable) {
    private_host::run([] {
        TarnHWCalc calc;
        PhysParams params;
        params.quotaugidlimit = 77;
        EXPECT_EQ(calc.calcQuotaUGIDLimit(&params), TarnHWCalc::ERR_MTAB);
        EXPECT_STREQ(calc.error_text, "Error opening '/etc/mtab': No such file or directory");
        EXPECT_EQ(params.quotaugidlimit, 77);
        private_host::write_command("repquota", "touch /tmp/asked");
        write_file("/etc/mtab", "/tmp /tmp ext4 rw,noquota,usrquota=x,grpquotas 0 0\n");
        EXPECT_EQ(calc.calcQuotaUGIDLimit(&params), 0);
        EXPECT_EQ(params.quotaugidlimit, 0);
        EXPECT_FALSE(std::filesystem::exists("/tmp/asked"));
    });
}

TEST(QuotaMgmt, FindsTheMountByTheIdentityOfTheFile) {
    private_host::run([] {
        write_file("/tmp/dev1", "");
        write_file("/tmp/m1/x", "");
        std::filesystem::create_symlink("/tmp/dev1", "/tmp/link");
        bool usr = true;
        bool grp = true;
        std::string where = "old";
        const auto find = [&](const char* name) {
            return QuotaMgmt::quota_is_enabled_phys(name, usr, grp, &where);
        };
        testing::internal::CaptureStderr();
        EXPECT_EQ(find("/tmp/m1"), -1);
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  "Error: Error reading '/etc/mtab': No such file or directory\n");
        EXPECT_TRUE(!usr && !grp && where == "old");
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
