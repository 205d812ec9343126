// What others wrote, and the values that are made of it.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "inspect/mount_table.h"
#include "inspect/net_ifaces.h"
#include "inspect/quota_mgmt.h"
#include "inspect/shell_word.h"
#include "kiln/strings.h"
#include "tarnnet.h"
#include "tests/support/made_up_host.h"

namespace {

TEST(MountTable, IsReadAsTheSystemReadsIt) {
    EXPECT_TRUE(parse_mount_table("").empty());
    std::string text;
    for (const MountEntry& entry : parse_mount_table(
             "# a remark\n\n/dev/sda1 / ext4 rw,noatime 0 1\n/dev/sdb1\t/a\\040b  vfat\nnone\n"
             "auto /x autofs ignore\na /l b " +
             std::string(5000, 'o') + "\nz /z")) {
        text += entry.device + "|" + entry.mount_point + "|" + entry.type + "|" +
                std::to_string(entry.options.size()) + "\n";
    }
    EXPECT_EQ(text, "/dev/sda1|/|ext4|10\n/dev/sdb1|/a b|vfat|0\nnone|||0\na|/l|b|4088\nz|/z||0\n");
}

TEST(ShellWord, IsWhatTheShellHandsOn) {
    const std::string acted_on = " \t\n|&;<>()$`\\\"'*?[{";
    for (int byte = 1; byte < 256; ++byte) {
        const auto c = static_cast<char>(byte);
        const bool harmless = acted_on.find(c) == std::string::npos;
        EXPECT_EQ(is_plain_shell_word(std::string("/m") + c), harmless) << byte;
        EXPECT_EQ(is_plain_shell_word(c + std::string("/m")), harmless && c != '#' && c != '~');
    }
    EXPECT_TRUE(is_plain_shell_word("") && is_plain_shell_word("/a\\040b\\134c\\377"));
    for (const char* word : {"/\\400", "/\\04", "/\\048", "/\\\\040", "/\\040$(x)", "/\\040\\"}) {
        EXPECT_FALSE(is_plain_shell_word(word)) << word;
    }
}

TEST(NetIface, IsOfDhcpWhenThatIsTheFirstWord) {
    std::string name = "eth0";
    tarnnetif_info record = {};
    record.name = name.data();
    EXPECT_FALSE(make_net_iface(record).dhcp);
    for (std::string first : {"dhcp", "DHCP", "dhcp6"}) {
        std::string second = "dhcp";
        char* configured[] = {first.data(), second.data(), nullptr};
        record.conf_addresses = configured;
        EXPECT_EQ(make_net_iface(record).dhcp, first == second);
    }
}

// Each record as ID:BLOCKS,INODES with soft/hard/grace for both; the users, "|", the groups.
std::string parse(const std::string& report) {
    Quotas users, groups;
    users.quotas[99] = groups.quotas[99] = {};
    EXPECT_EQ(QuotaMgmt::limits_parse_phys(report, &users, &groups), 0);
    std::ostringstream text;
    for (const Quotas* records : {&users, &groups}) {
        text << (records == &groups ? "| " : "");
        for (const auto& [id, q] : records->quotas) {
            text << id << ":" << q.blocks.soft << "/" << q.blocks.hard << "/" << q.blocks.grace
                 << "," << q.inodes.soft << "/" << q.inodes.hard << "/" << q.inodes.grace << " ";
        }
    }
    return text.str();
}

TEST(QuotaReport, ReadsRecordsAsFarAsTheyGo) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"#100      -+   20480       1       2              3     4     5  2months\n\n#101 --\n",
         "100:1/2/0,4/5/36288000 "},
        {"#", "0:0/0/0,0/0/0 "},
        {"#-1 -- 1 2 3 4 5 6", "4294967295:2/3/0,5/6/0 "},
        {"#4294967301 -- 1 2 3 4 5 6", "5:2/3/0,5/6/0 "},
        {"#7 +- 1 2 3 6days 4 5", "7:2/3/518400,5/0/0 "},
        {"#7 ++ 1 2 3 01:30 4 5 6 2weeks 8 9", "7:2/3/5400,5/6/1209600 "},
        {"#7 -- 1K 2x 3y 4 5 6", "7:2/3/0,5/6/0 "},
        {"#7 -- 1 99999999999999999999 3 4 -5 6", "7:9223372036854775807/3/0,5/6/0 "},
        {"#7\t--\t1\t2 3 4 5 6 7", "7:4/5/0,7/0/0 "},
        {"#7 -- 1 2 3 4 5 6\n#7 -- 1 8 9 4 5 6", "7:8/9/0,5/6/0 "},
    };
    for (const auto& [lines, expected] : cases) {
        EXPECT_EQ(parse("---\n" + lines), expected + "| ") << lines;
    }
    EXPECT_EQ(parse(""), "| ");
    EXPECT_EQ(parse("group quotas\n#1 -- 1 2 3 4 5 6\n- group quotas user quotas\n#2\n\n"
                    "group quotas\n---\n#3\n"),
              "2:0/0/0,0/0/0 | 3:0/0/0,0/0/0 ");
}

TEST(QuotaReport, ConvertsGraceTimes) {
    EXPECT_EQ(QuotaMgmt::grace_atoll("") + QuotaMgmt::grace_atoll(" \t "), 0U);
    const std::string cases =
        "5=5 45seconds=45 3minutes=180 2hours=7200 7days=604800 2weeks=1209600 2months=36288000 "
        "1day=1 7Days=7 none=0 01:30=5400 1:=3600 :30=1800 :=0 1x:30=3600 x:30=0 "
        "-2days=18446744073709378816 99999999999999999999weeks=18446744073708946816";
    for (const std::string& one : Kiln::split(" ", cases, 0)) {
        const std::string text = one.substr(0, one.find('='));
        EXPECT_EQ(text + "=" + std::to_string(QuotaMgmt::grace_atoll(text.c_str())), one);
    }
}

}  // namespace
