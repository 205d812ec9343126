// How the inspection grows with its input: the reduction of mount entries, in a flat and in a deep
// tree, and the parsing of quota reports.
//
//     inspect_bench [--quick]
#include <algorithm>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "bench/bench_support.h"
#include "inspect/exclude_rules.h"
#include "inspect/quota_mgmt.h"

namespace {

// A single entry may cost this much more in the larger input: what a logarithm and the cache take.
constexpr double entry_growth_limit = 6.0;
constexpr double time_limit_seconds = 1.0;

// Kernel, network and automount entries, `depth` levels down, so that every rule is met.
std::vector<MountEntry> make_mounts(std::size_t count, int depth) {
    static const char* const types[] = {"nfs", "autofs", "proc"};
    std::vector<MountEntry> mounts;
    for (std::size_t i = 0; i < count; ++i) {
        std::string path;
        for (int level = 0; level < depth; ++level) {
            path += "/level" + std::to_string(level == 0 ? i % 7 : 0);
        }
        mounts.push_back({"device", path + "/mount" + std::to_string(i), types[i % 3], "rw"});
    }
    return mounts;
}

std::size_t reduce(const std::vector<MountEntry>& mounts) {
    const FsTypeTable types = {{"proc", true}};
    MountFindings findings;
    for (const MountEntry& mount : mounts) {
        note_mount(mount, types, findings);
    }
    return refactor_excludes(findings.candidates).size();
}

std::string make_report(std::size_t count) {
    std::string text = "*** Report for user quotas on device /dev/sda3\n------\n";
    for (std::size_t id = 0; id < count; ++id) {
        text += "#" + std::to_string(id) +
                "      ++   61000   50000   60000  6days     230   200   300  23:59\n";
    }
    return text;
}

// The floor of the mounts: an ordered table of their paths, which the rules ask for in any case.
void sort_paths(const std::vector<MountEntry>& mounts) {
    std::map<std::string, bool> paths;
    for (const MountEntry& mount : mounts)
        paths[mount.mount_point] = true;
}

// The floor of a report: its lines are found.
void count_lines(const std::string& text) {
    if (std::count(text.begin(), text.end(), '\n') == 0)
        Bench::give_up("empty report");
}

void parse_report(const std::string& text) {
    Quotas users;
    Quotas groups;
    QuotaMgmt::limits_parse_phys(text, &users, &groups);
}

// The two sides over a small and a large input; `make` makes the input of a size.
template <class Make, class Ours, class Floor>
void measure(Bench::Table& table, const std::string& name, const std::vector<std::size_t>& sizes,
             int rounds, const Make& make, const Ours& ours, const Floor& floor) {
    std::vector<Bench::Medians> costs;
    for (const std::size_t size : sizes) {
        const auto input = make(size);
        costs.push_back(Bench::by_turns(
            rounds, Bench::Timing::cold_cpu, [&] { ours(input); }, [&] { floor(input); }));
    }
    const std::string small = std::to_string(sizes.front());
    const std::string large = std::to_string(sizes.back());
    const double more = static_cast<double>(sizes.back()) / static_cast<double>(sizes.front());
    table.compare(large + " " + name, costs.back(), Bench::no_limit);
    table.bound("  in seconds", costs.back().ours, time_limit_seconds, " s");
    table.growth("  growth, " + small + " to " + large, costs.front(), costs.back(),
                 more * entry_growth_limit);
}

}  // namespace

int main(int argc, char** argv) {
    const Bench::Options options(argc, argv);
    const int rounds = options.rounds(15, 5);
    Bench::Table table;
    for (const int depth : {3, 50}) {
        measure(
            table, "mounts at depth " + std::to_string(depth), {1000, 65000}, rounds,
            [depth](std::size_t size) { return make_mounts(size, depth); }, reduce, sort_paths);
    }
    measure(table, "quota ids", {1000, 100000}, rounds, make_report, parse_report, count_lines);
    return table.exit_status();
}
