#include "inspect/exclude_rules.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

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
    const FsTypeTable types = {{"proc", true},   {"nfs4", true}, {"autofs", true}, {"smbfs", true},
                               {"tarnfs", true}, {"nfs", true},  {"ext4", false}};
    const char* const table =
        "none /01 rootfs bind\nnone /02 devfs loop\nnone /03 tarnfs rw\nnone /04 smbfs rw\n"
        "none /05 usbfs rw\nnone /06 iso9660 ro\nbox:/x /07 nfs4 rw\nbox:/x /08 cifs rw\n"
        "/dev/fd0 /09 auto bind\nnone /10 autofs rw\nnone /11 subfs rw\nnone /12 fuseblk loop\n"
        "none /13 x.fuse.y rw\n/dev/fd0 /14 ext4 rw\n/dev/loop0 /15 ext4 rw\nd /16 ext4 noloop\n"
        "d /17 ext4 rbind\nd /18 ext4 removable_t\nd /19 proc bind\nd /20 proc rw\nd /21 ext4 rw\n"
        "none /22 tmpfs rw\n";
    MountFindings findings;
    for (const MountEntry& entry : parse_mount_table(table)) {
        note_mount(entry, types, findings);
    }
    EXPECT_EQ(show(findings.candidates),
              "+/04/* +/05/* +/06/* K/07/* +/09 +/10 +/11 +/12 +/13 +/14/* +/15/* +/16/* +/17/* "
              "+/18/* +/19/* K/20/* ");
    EXPECT_FALSE(findings.nfs_found || findings.reiserfs_found);
}

TEST(Reduction, FollowsTheCoveringRules) {
    const std::vector<std::pair<ExcludeTable, std::string>> cases = {
        {{{"/n", network}, {"/n/p", kernel}, {"/n/p/x", network}}, "+/n/* K/n/p/* "},
        {{{"/p", kernel}, {"/p/a", automount}, {"/p/a/b", automount}, {"/p/a/b/c", automount}},
         "K/p/* +/p/a/b "},
        {{{"/p", kernel_whole}, {"/p/a/b", automount}}, "K/p "},
        {{{"/p", kernel}, {"/p-a", kernel}, {"/pa", kernel}}, "K/p/* K/p-a/* K/pa/* "},
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

TEST(Reduction, NothingIsAddedBelowAKernelRoot) {
    for (const char* root : {"/", ""}) {  // only the rules themselves know such entries
        for (const MntFlags& flags : {kernel, network}) {
            ExcludeTable table = {{root, flags}};
            add_exclude_dir(table, "/a", network);
            EXPECT_EQ(table.size(), flags.flag ? 2U : 1U);
        }
    }
}

}  // namespace
