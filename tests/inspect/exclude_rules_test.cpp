#include "inspect/exclude_rules.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "kiln/strings.h"

namespace {

const MntFlags kernel(false, true);
const MntFlags network(true, true);
const MntFlags automount(true, false);
const MntFlags kernel_whole(false, false);  // no rule makes it, the covering rules know it

// "K /*" for kernel mounts, "+" for the others; the paths as they would be listed.
std::string show(const ExcludeTable& table) {
    std::string text;
    for (const auto& [path, flags] : table) {
        text += (flags.flag ? "+" : "K") + path + (flags.contents_only ? "/* " : " ");
    }
    return text;
}

TEST(Classification, TakesTheFirstRuleThatApplies) {
    const FsTypeTable types = {{"proc", true}, {"rootfs", true}, {"nfs4", true},
                               {"fuse", true}, {"tarnfs", true}, {"ext4", false}};
    // Device, type and options of the entries that give the same result.
    const std::map<std::string, std::vector<std::string>> cases = {
        {"",
         {"/dev/fd0 rootfs bind", "/dev/loop0 devfs -", "d tarnfs -", "/dev/sda1 ext4 rw",
          "d unknown rw"}},
        {"+/m/* ",
         {"d smbfs -", "d usbfs -", "d iso9660 -", "srv:/x nfs rw", "/dev/fd0 ext4 rw",
          "/dev/loop3 ext4 -", "proc proc rw,noloop", "/srv ext4 rw,rbind",
          "d ext4 removable_t=1"}},
        {"+/m ", {"d auto -", "d autofs loop", "d subfs -", "d xfuseblk -", "d fuse bind"}},
        {"K/m/* ", {"proc proc rw", "srv:/x nfs4 rw"}},
    };
    for (const auto& [expected, entries] : cases) {
        for (const std::string& entry : entries) {
            const std::vector<std::string> fields = Kiln::split(" ", entry, 0);
            MountFindings findings;
            note_mount({fields[0], "/m", fields[1], fields[2]}, types, findings);
            EXPECT_EQ(show(findings.candidates), expected) << entry;
            EXPECT_EQ(findings.nfs_found, fields[1] == "nfs") << entry;
        }
    }
}

TEST(Reduction, FollowsTheCoveringRules) {
    const std::vector<std::pair<ExcludeTable, std::string>> cases = {
        {{{"/dev", kernel}, {"/dev/pts", kernel}, {"/proc", kernel}}, "K/dev/* K/proc/* "},
        {{{"/home", network}, {"/home/shared", network}}, "+/home/* +/home/shared/* "},
        {{{"/n", network}, {"/n/p", kernel}, {"/n/p/x", network}}, "+/n/* K/n/p/* "},
        {{{"/p", kernel}, {"/p/a", automount}, {"/p/a/b", automount}, {"/p/a/b/c", automount}},
         "K/p/* +/p/a/b "},
        {{{"/p", kernel_whole}, {"/p/a/b", automount}}, "K/p "},
        // Neighbours that sort between a mount and what lies below it.
        {{{"/p", kernel}, {"/p/a/b", automount}, {"/p-a", kernel}, {"/pa", kernel}},
         "K/p/* K/p-a/* +/p/a/b K/pa/* "},
        {{{"/", network}, {"//", kernel}, {"", kernel}, {"none", network}, {"///x", network}},
         "+///x/* "},
        {{{"a/b", network}, {"a", kernel}}, "+a/b/* "},
        {{{"/m/", network}, {"/m", automount}, {"/m//", kernel}}, "K/m/* "},
        {{{"/m", kernel}, {"/m//x", automount}, {"/m/x/", network}}, "K/m/* +/m//x "},
        // What sorts before the mount that would cover it is in the table already, and stays.
        {{{"/m/#", network}, {"/m//", kernel}}, "K/m/* +/m/#/* "},
    };
    for (const auto& [candidates, expected] : cases) {
        EXPECT_EQ(show(refactor_excludes(candidates)), expected) << show(candidates);
    }
}

// Whether a path is not to be added, by the rules word by word, with each prefix made by joining
// components.
bool refused_by_the_book(const ExcludeTable& table, const std::string& path,
                         const MntFlags& flags) {
    const std::vector<std::string> parts = Kiln::split("/", path, 0);
    const auto root = table.find("/");
    if (parts.size() < 2 || (root != table.end() && !root->second.flag)) {
        return true;
    }
    for (auto end = parts.begin() + 1; end < parts.end(); ++end) {
        const auto found = table.find(Kiln::join("/", parts.begin(), end));
        if (found == table.end() || found->second.flag) {
            continue;
        }
        const bool two_below = parts.end() - end == 2;
        if (!found->second.contents_only || flags.contents_only || !two_below) {
            return true;
        }
    }
    return false;
}

TEST(Reduction, AgreesWithTheRulesOnRandomTables) {
    std::mt19937 random(7);
    const auto below = [&random](unsigned limit) {
        return static_cast<unsigned>(random() % limit);
    };
    for (int round = 0; round < 5000; ++round) {
        ExcludeTable table;
        for (const char* root : {"", "/"}) {  // only the rules themselves know such entries
            if (below(20) == 0) {
                table[root] = MntFlags(below(2) == 0, below(2) == 0);
            }
        }
        for (int entry = 0; entry < 8; ++entry) {
            std::string path = below(8) != 0 ? "/" : "";
            for (unsigned length = 1 + below(7); length > 0; --length) {
                path += "//a-\xff"[below(5)];
            }
            path += 'z';
            const MntFlags flags(below(3) == 0, below(2) == 0);
            ExcludeTable expected = table;
            if (!refused_by_the_book(table, path, flags)) {
                expected[path] = flags;
            }
            add_exclude_dir(table, path + "//", flags);
            ASSERT_EQ(show(table), show(expected)) << path;
        }
    }
}

}  // namespace
