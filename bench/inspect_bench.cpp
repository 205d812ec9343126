// How the inspection grows with its input: the reduction of mount entries, in a flat and in a deep
// tree, and the parsing of quota reports.
//
//     inspect_bench [--quick]
#include <algorithm>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "bench/bench_support.h"
#include "inspect/exclude_rules.h"
#include "inspect/quota_mgmt.h"

namespace {

// A single entry may cost this much more in the larger input: what a logarithm and the cache take.
constexpr double entry_growth_limit = 6.0;
constexpr double reduction_limit_seconds = 1.0;
constexpr double report_limit_seconds = 1.0;

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

// Runs the work that `prepare` makes for each size in turn; the time limit is for the largest. The
// best round counts: what is looked for is growth, not the load of the machine.
void measure(Bench::Table& table, const std::string& name, int rounds, double limit_seconds,
             const std::vector<std::size_t>& sizes,
             const std::function<std::function<void()>(std::size_t)>& prepare) {
    double before = 0;
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        const std::function<void()> work = prepare(sizes[i]);
        double now = Bench::seconds(work);
        for (int round = 1; round < rounds; ++round) {
            now = std::min(now, Bench::seconds(work));
        }
        const std::string figure = name + ", " + std::to_string(sizes[i]);
        const bool last = i + 1 == sizes.size();
        if (i > 0) {
            const double more = static_cast<double>(sizes[i]) / static_cast<double>(sizes[i - 1]);
            table.growth(figure, before, now, last ? more * entry_growth_limit : Bench::no_limit);
        }
        if (last) {
            table.bound(figure, now, limit_seconds, " s");
        }
        before = now;
    }
}

}  // namespace

int main(int argc, char** argv) {
    const Bench::Options options(argc, argv);
    const int rounds = options.rounds(9, 3);
    Bench::Table table;
    for (const int depth : {3, 50}) {
        measure(table, "mounts at depth " + std::to_string(depth), rounds, reduction_limit_seconds,
                {1000, 8000, 65000}, [depth](std::size_t size) {
                    return [mounts = make_mounts(size, depth)] { reduce(mounts); };
                });
    }
    measure(table, "quota report, ids", rounds, report_limit_seconds, {1000, 100000},
            [](std::size_t size) {
                return [text = make_report(size)] {
                    Quotas users;
                    Quotas groups;
                    QuotaMgmt::limits_parse_phys(text, &users, &groups);
                };
            });
    return table.exit_status();
}
