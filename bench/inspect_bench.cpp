// How the inspection grows with its input: the reduction of mount entries, in a flat and in a deep
// tree, and the parsing of quota reports. Each line gives the seconds and, against the line before
// it, how much more a single entry costs.
//
//     inspect_bench
#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "inspect/exclude_rules.h"
#include "inspect/quota_mgmt.h"

namespace {

constexpr int rounds = 5;
// An entry may cost this much more in the larger input: what a logarithm and the cache take.
constexpr double growth_limit = 6.0;
constexpr double reduction_limit_seconds = 0.5;

double seconds_of(const std::function<void()>& work) {
    double best = 1e9;
    for (int round = 0; round < rounds; ++round) {
        const auto start = std::chrono::steady_clock::now();
        work();
        best = std::min(
            best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    return best;
}

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

// Measures the sizes in turn; returns whether growth and time stay within the limits.
bool measure(const char* name, const std::vector<std::size_t>& sizes, double limit_seconds,
             const std::function<std::function<void()>(std::size_t)>& prepare) {
    bool good = true;
    double entry_before = 0;
    for (const std::size_t size : sizes) {
        const double seconds = seconds_of(prepare(size));
        const double entry_now = seconds / static_cast<double>(size);
        const double growth = entry_before > 0 ? entry_now / entry_before : 1.0;
        const bool ok = growth <= growth_limit && seconds <= limit_seconds;
        std::printf("%-22s %7zu  %9.6f s  growth %5.2f  %s\n", name, size, seconds, growth,
                    ok ? "ok" : "MISSED");
        good = good && ok;
        entry_before = entry_now;
    }
    return good;
}

}  // namespace

int main() {
    const auto reduction = [](int depth) {
        return [depth](std::size_t size) {
            return [mounts = make_mounts(size, depth)] { reduce(mounts); };
        };
    };
    const std::vector<std::size_t> mount_counts = {1000, 8000, 65000};
    bool good = measure("reduction, depth 3", mount_counts, reduction_limit_seconds, reduction(3));
    good = measure("reduction, depth 50", mount_counts, reduction_limit_seconds, reduction(50)) &&
           good;
    good = measure("quota report", {1000, 100000}, 2.0,
                   [](std::size_t size) {
                       return [text = make_report(size)] {
                           Quotas users;
                           Quotas groups;
                           QuotaMgmt::limits_parse_phys(text, &users, &groups);
                       };
                   }) &&
           good;
    return good ? 0 : 1;
}
