#include "inspect/exclude_rules.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

// How mounts are classified is shown by the scenarios.
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

TEST(Reduction, NothingIsAddedBelowAKernelRoot) {
    for (const char* root : {"/", ""}) {  // only the rules themselves know such entries
        ExcludeTable hidden = {{root, kernel}};
        add_exclude_dir(hidden, "/a", network);
        EXPECT_EQ(hidden.size(), 1U);
        ExcludeTable seen = {{root, network}};
        add_exclude_dir(seen, "/a", network);
        EXPECT_EQ(seen.size(), 2U);
    }
}

}  // namespace
