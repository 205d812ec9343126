// The inspections on a host made of a few files, with quota tools that answer from a table.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "inspect/distribution.h"
#include "inspect/excludes.h"
#include "inspect/quota_count.h"
#include "inspect/quota_mgmt.h"
#include "inspect/resolver.h"
#include "tests/support/made_up_host.h"

namespace {

// The ids of the quotas are the digits in the name of a mount point.
class HostTest : public testing::Test, protected MadeUpHost {
protected:
    HostTest() {
        EXPECT_EQ(mkfifo(path("fifo").c_str(), 0600), 0);
        host.run = [this](const std::string& command, std::string& out, std::string& complaint) {
            asked += command + "\n";
            complaint = "moans";
            if (command.rfind("repquota", 0) == 0) {
                out = command[10] == 'u' ? "user quotas\n---\n" : "group quotas\n---\n";
                for (const char id : command.substr(command.find('/') + 1)) {
                    out += std::string("#") + id + "\n";
                }
            }
            return failing.count(command) == 0 ? 0 : 3;
        };
    }

    // The count or the reason, then what was logged.
    std::string count() {
        asked.clear();
        testing::internal::CaptureStderr();
        const auto result = count_quota_ids(host);
        return (result ? std::to_string(*result) : result.reason()) +
               testing::internal::GetCapturedStderr();
    }

    std::string excluded() const {
        std::string text;
        for (const TarnAExcludePath& exclude : find_excludes(host).excludes) {
            text += (exclude.flag ? "+" : "K") + exclude.path + " ";
        }
        return text;
    }

    // The answer, and behind a "|" the codes and texts of the warnings.
    std::string detect(const std::vector<std::string>& scripts) const {
        const DistributionFinding finding = detect_distribution(host, scripts);
        std::string text = finding.name + "|";
        for (const TarnACalculateHWNodeWarning& warning : finding.warnings) {
            text += std::to_string(warning.code) + warning.message;
        }
        return text;
    }

    std::set<std::string> failing;  // commands
    std::string asked;              // all commands, one a line
};

using Distribution = HostTest;
using Excludes = HostTest;
using QuotaCount = HostTest;

TEST_F(Distribution, TriesTheScriptsInOrder) {
    const std::vector<std::string> scripts = {path("a"), path("b")};
    EXPECT_EQ(detect(scripts), "|0OS distribution detection script (" + path("a") + ", " +
                                   path("b") + ", " + path("detect") +
                                   ") was not found. The DISTRIBUTION parameter of the CT config "
                                   "must be set manually.");
    put("a", "echo a; exit 3\n");
    put("detect", "echo ' last  one'\n");
    EXPECT_EQ(detect(scripts), "lastone|");
    put("b", "echo b\n");
    EXPECT_EQ(detect(scripts), "b|");
    put("b", "");  // an empty answer ends the search as well
    EXPECT_EQ(detect(scripts), "|0OS distribution was not detected. It must be manually set.");
}

TEST_F(Excludes, LiveMountsReplaceStaticOnes) {
    put("types", "nodev\tproc\n");
    put("fstab", "/dev/sr0 /m auto\n/dev/sr1 /n auto\n/dev/sda1 / reiserfs\nproc /a/proc proc\n");
    put("mtab", "/dev/sr0 /m ext4 rw\n/dev/sr1 /n iso9660\n/dev/sda1 / reiserfs\nbox:/ / nfs\n");
    EXPECT_EQ(excluded(), "K/a/proc/* +/m +/n/* ");
    const ExcludeFindings findings = find_excludes(host);
    EXPECT_TRUE(findings.nfs_found && findings.reiserfs_found);
    ASSERT_EQ(findings.warnings.size(), 1U);
    EXPECT_EQ(findings.warnings[0].code, 4);
}

TEST_F(Excludes, AHugeLoginRecordIsListedThroughALink) {
    put("sparse", "");
    std::filesystem::create_symlink(path("sparse"), path("record"));
    for (const std::uintmax_t size : {1073741824U, 1073741825U}) {
        std::filesystem::resize_file(path("sparse"), size);
        EXPECT_EQ(excluded(), size == 1073741824U ? "" : "+" + path("record") + " ");
    }
}

// A directory, a file that opens but cannot be read (nothing is mapped at its start), a FIFO whose
// other end nobody opens, a device without an end.
TEST_F(HostTest, WhatCannotBeReadIsNotThere) {
    const std::string mtab = path("mtab");
    std::string reasons = count();
    put("mtab", "proc /proc proc\nauto /misc autofs");
    put("dns", "nameserver 10.0.0.1\n");
    EXPECT_EQ(excluded(), "+/misc ");
    EXPECT_EQ(read_resolver(host).nameservers, std::vector<std::string>{"10.0.0.1"});
    for (const std::string& table :
         {root, std::string("/proc/self/mem"), path("fifo"), std::string("/dev/zero")}) {
        host.paths.fstab = host.paths.filesystems = host.paths.resolv_conf = table;
        host.paths.mtab = mtab;
        EXPECT_EQ(excluded(), "+/misc ");
        EXPECT_TRUE(read_resolver(host).nameservers.empty());
        host.paths.mtab = table;
        EXPECT_EQ(excluded(), "");
        reasons += "; " + count();
    }
    EXPECT_EQ(reasons, "Error opening '" + mtab + "': No such file or directory; Error opening '" +
                           root +
                           "': Is a directory; Error opening '/proc/self/mem': "
                           "Input/output error; Error opening '" +
                           path("fifo") +
                           "': Operation not supported; Error opening '/dev/zero': Operation not "
                           "supported");
    host.paths.mtab = "/dev/null";
    EXPECT_EQ(count(), "0") << "somebody wants the table to be empty";
}

// Devices of every system stand in for disks.
TEST_F(QuotaCount, AsksTheToolsForEveryMountWithQuotas) {
    const std::string edit = "VISUAL=cat EDITOR=cat edquota -";
    const std::string users = "repquota -unv /012\n" + edit + "utf /012\n";
    const std::string groups = "repquota -gnv /012\n" + edit + "gtf /012\n";
    const std::string others = "repquota -unv /23\n" + edit + "utf /23\n";
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"/dev/null /012 ext4 rw,noquota,usrquota=x,grpquotas", "0", ""},
        {"/dev/null /012 ext4 usrquota,grpquota\n/dev/zero /23 ext4 rw,usrquota", "7",
         users + groups + others},
        {"/dev/null /012 ext4 rw,grpquota", "3", groups},
        // The first option alone tells the old style, which counts users twice and no groups.
        {"/dev/null /012 ext4 usrquota,quota\n/dev/zero /23 ext4 usrquota", "4", users + others},
        {"/dev/null /012 ext4 quota,grpquota\n/dev/zero /23 ext4 usrquota", "8",
         users + groups + others},
        // A device mounted twice is asked twice where it is first mounted, if it has quotas there.
        {"/dev/null /012 ext4 usrquota\n/dev/null /34 ext4 grpquota", "3", users + users},
        {"/dev/null /012 ext4 rw\n/dev/null /34 ext4 usrquota", "0", ""},
    };
    for (const auto& [table, ids, commands] : cases) {
        put("mtab", table);
        EXPECT_EQ(count() + asked, ids + commands) << table;
    }
    std::string limits = "of another";
    std::string graces = limits;
    EXPECT_EQ(QuotaMgmt(host).quota_get_phys("/dev/null", limits, graces), 0);
    EXPECT_EQ(limits + graces, "") << "the last table has no quotas";
}

TEST_F(QuotaCount, WhatFailsCostsItsOwnDevice) {
    failing = {"repquota -unv /x\\040y", "VISUAL=cat EDITOR=cat edquota -utf /opt"};
    put("mtab",
        "/dev/gone /gone ext4 usrquota\n/dev/zero /x\\040y ext4 usrquota\n"
        "/dev/tty /opt ext4 usrquota,grpquota\n/dev/null /0 ext4 grpquota\n"
        "/dev/full /m;id>f ext4 usrquota\n/dev/random /n;id ext4 rw\n"
        "/dev/random /n2 ext4 usrquota\n");
    EXPECT_EQ(
        count(),
        "1Error: Partition or mount point '/dev/gone' does not exist\n"
        "Error: Error running 'repquota -unv /x\\040y':\nmoans\n"
        "Error: Error running 'VISUAL=cat EDITOR=cat edquota -utf /opt':\nmoans\n"
        "Error: The shell would act on the mount point '/m;id>f' of '/dev/full': not asked\n");
    EXPECT_EQ(asked.find(';'), std::string::npos);
}

TEST_F(QuotaCount, AMountIsFoundByTheIdentityOfTheFile) {
    bool usr = true;
    bool grp = true;
    std::string where = "as it was";
    const auto find = [&](const char* name) {
        testing::internal::CaptureStderr();
        const int result = QuotaMgmt(host).quota_is_enabled_phys(name, usr, grp, &where);
        return std::to_string(result) + testing::internal::GetCapturedStderr();
    };
    // No word, a lone one, an empty field, lines that end early, and two that match. The roots of
    // two file systems of the kernel have the same inode number.
    put("mtab",
        "\nnone\n/dev/gone  /dev/zero ext4 usrquota\n/dev/full /m\\040x\n/sys /s ext4 usrquota\n"
        "none /proc ext4 quota,grpquota 0 0\n/dev/full /late ext4 usrquota\n");
    EXPECT_EQ(find("/dev/null"), "-1Error: Partition or mount point '/dev/null' is missing from " +
                                     path("mtab") + "\n");
    EXPECT_TRUE(!usr && !grp && where == "as it was");
    EXPECT_EQ(find("/dev/../proc/."), "0");
    EXPECT_TRUE(usr && grp && where == "/proc");
    EXPECT_EQ(find("/dev/full"), "0");
    EXPECT_TRUE(!usr && !grp && where == "/m\\040x");
    struct stat proc {};
    struct stat sys {};
    if (stat("/proc", &proc) != 0 || stat("/sys", &sys) != 0 || proc.st_ino != sys.st_ino) {
        GTEST_SKIP() << "no two files of the same inode number here";
    }
}

}  // namespace
