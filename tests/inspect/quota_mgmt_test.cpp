#include "inspect/quota_mgmt.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <sstream>
#include <string>

#include "calc/tarn_hwcalc.h"
#include "kiln/files.h"
#include "tests/support/private_host.h"

namespace {

using private_host::write_file;

std::string error_output(const std::function<void()>& body) {
    testing::internal::CaptureStderr();
    body();
    return testing::internal::GetCapturedStderr();
}

// Stub tools: repquota prints the report kept below the mount point under its options, edquota
// fails where told to. Both note how they were called.
void make_tools() {
    private_host::write_command("repquota", "echo repquota $* >>/tmp/calls; cat $2/$1");
    private_host::write_command("edquota",
                                "echo $VISUAL $EDITOR edquota $* >>/tmp/calls\n"
                                "if [ -e $2/fail ]; then echo no graces >&2; exit 5; fi");
}

void write_report(const std::string& path, const std::string& kind, const std::string& ids) {
    std::string text = "*** Report for " + kind + " quotas on device x\n-----\n";
    std::istringstream list(ids);
    for (std::string id; list >> id;) {
        text += "#" + id + "  --  1 0 0 1 0 0\n";
    }
    write_file(path, text + "\n");
}

int count(const std::string& mount_table) {
    write_file("/etc/mtab", mount_table);
    PhysParams params;
    params.quotaugidlimit = 77;
    EXPECT_EQ(TarnHWCalc().calcQuotaUGIDLimit(&params), 0);
    return params.quotaugidlimit;
}

TEST(QuotaCount, CountsDistinctIdsOfAllDevices) {
    private_host::run([] {
        make_tools();
        write_file("/tmp/d1", "");
        write_report("/tmp/m1/-unv", "user", "0 500 501");
        write_report("/tmp/m1/-gnv", "group", "0 100 101");
        write_report("/tmp/m2/-unv", "user", "0 501 502");
        EXPECT_EQ(count("/tmp/d1 /tmp/m1 ext4 rw,noquota,usrquota=x 0 0\n"), 0);
        EXPECT_FALSE(std::filesystem::exists("/tmp/calls"));
        EXPECT_EQ(count("/tmp/d1 /tmp/m1 ext4 rw,grpquota,usrquota 0 0\n"
                        "/tmp/m2 /tmp/m2 ext4 usrquota 0 0\n/tmp/m2 /tmp/m2 ext4 usrquota 0 0\n"),
                  4 + 3);
        std::string calls;
        EXPECT_EQ(Kiln::get_file("/tmp/calls", calls), 0);
        EXPECT_EQ(calls.find("repquota -unv /tmp/m1\ncat cat edquota -utf /tmp/m1\n"
                             "repquota -gnv /tmp/m1\ncat cat edquota -gtf /tmp/m1\n"),
                  0U);
        EXPECT_EQ(count("/tmp/d1 /tmp/m1 ext4 grpquota 0 0\n"), 3);
        EXPECT_EQ(count("/tmp/m2 /tmp/m2 ext4 quota 0 0\n"), 3 * 2);
        // The first matching option alone decides whether the old style is counted.
        EXPECT_EQ(count("/tmp/m2 /tmp/m2 ext4 usrquota,quota 0 0\n"), 3);
        write_file("/tmp/m2/fail", "");
        EXPECT_EQ(error_output([] { EXPECT_EQ(count("/tmp/m2 /tmp/m2 ext4 quota 0 0\n"), 0); }),
                  "Error: Error running 'VISUAL=cat EDITOR=cat edquota -utf /tmp/m2':\n"
                  "no graces\n\n");
    });
}

TEST(QuotaCount, FailsWithoutAMountTable) {
    private_host::run([] {
        TarnHWCalc calc;
        PhysParams params;
        params.quotaugidlimit = 77;
        EXPECT_EQ(calc.calcQuotaUGIDLimit(&params), TarnHWCalc::ERR_MTAB);
        EXPECT_STREQ(calc.error_text, "Error opening '/etc/mtab': No such file or directory");
        EXPECT_EQ(params.quotaugidlimit, 77);
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
        const auto complaint = [&](const char* name) {
            return error_output([&] {
                EXPECT_EQ(QuotaMgmt::quota_is_enabled_phys(name, usr, grp, &where), -1);
                EXPECT_TRUE(!usr && !grp && where == "old");
            });
        };
        EXPECT_EQ(complaint("/tmp/m1"),
                  "Error: Error reading '/etc/mtab': No such file or directory\n");
        write_file("/etc/mtab",
                   "none\n\n/tmp/gone  /tmp/m1 ext4 usrquota\n/tmp/dev1 /tmp/m\\040x\n"
                   "/tmp/dev1 /tmp/m1 ext4 quota,grpquota 0 0\n");
        EXPECT_EQ(complaint("/tmp/x"), "Error: Partition or mount point '/tmp/x' does not exist\n");
        EXPECT_EQ(complaint("/tmp"),
                  "Error: Partition or mount point '/tmp' is missing from /etc/mtab\n");
        EXPECT_EQ(QuotaMgmt::quota_is_enabled_phys("/tmp/link", usr, grp, &where), 0);
        EXPECT_TRUE(!usr && !grp && where == "/tmp/m\\040x");
        EXPECT_EQ(QuotaMgmt::quota_is_enabled_phys("/tmp/m1/.", usr, grp, &where), 0);
        EXPECT_TRUE(usr && grp && where == "/tmp/m1");
    });
}

}  // namespace
