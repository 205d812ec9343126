#include "bench/bench_support.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace Bench {

namespace {

constexpr std::size_t cache_line_bytes = 64;
constexpr std::size_t chilling_bytes = std::size_t{64}
                                       << 20;  // more than one processor's own caches

std::string with_decimals(double value, int decimals, const char* unit = "") {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f%s", decimals, value, unit);
    return text;
}

std::string as_time(double seconds) {
    if (seconds < 1e-3)
        return with_decimals(seconds * 1e6, 1, " us");
    if (seconds < 1.0)
        return with_decimals(seconds * 1e3, 2, " ms");
    return with_decimals(seconds, 2, " s");
}

std::string as_limit(double limit) {
    return limit > no_limit ? with_decimals(limit, 2) : "-";
}

void print_row(const std::string& figure, const std::string& measured, const std::string& base,
               const std::string& ratio, const std::string& limit, const std::string& verdict) {
    std::printf("%-46s %11s %13s %7s %8s  %s\n", figure.c_str(), measured.c_str(), base.c_str(),
                ratio.c_str(), limit.c_str(), verdict.c_str());
    std::fflush(stdout);
}

}  // namespace

void give_up(const char* what) {
    std::perror(what);
    std::exit(2);
}

Options::Options(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--quick") == 0)
            quick = true;
        else
            arguments.emplace_back(argv[i]);
    }
}

double now(Timing timing) {
    timespec moment = {};
    clock_gettime(timing == Timing::wall ? CLOCK_MONOTONIC : CLOCK_PROCESS_CPUTIME_ID, &moment);
    return static_cast<double>(moment.tv_sec) + static_cast<double>(moment.tv_nsec) * 1e-9;
}

void chill_caches() {
    static std::vector<unsigned char> other_data(chilling_bytes);
    for (std::size_t i = 0; i < other_data.size(); i += cache_line_bytes)
        ++other_data[i];
}

double median(std::vector<double> samples) {
    const auto middle = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() / 2);
    std::nth_element(samples.begin(), middle, samples.end());
    return *middle;
}

const char* Table::judge(double value, double limit) {
    if (limit <= no_limit)
        return "-";
    if (value <= limit)
        return "ok";
    missed_ = true;
    return "MISSED";
}

void Table::compare(const std::string& figure, const Medians& medians, double ratio_limit) {
    print_row(figure, as_time(medians.ours), as_time(medians.floor),
              with_decimals(medians.ratio, 2), as_limit(ratio_limit),
              judge(medians.ratio, ratio_limit));
}

void Table::growth(const std::string& figure, const Medians& small, const Medians& large,
                   double growth_limit) {
    const double ratio = large.ours / small.ours;
    const std::string floor = with_decimals(large.floor / small.floor, 2);
    print_row(figure, as_time(large.ours), as_time(small.ours), with_decimals(ratio, 2),
              as_limit(growth_limit), judge(ratio, growth_limit) + (" (floor " + floor + ")"));
}

void Table::bound(const std::string& figure, double value, double limit, const char* unit) {
    print_row(figure, with_decimals(value, 2, unit), "-", "-",
              limit > no_limit ? with_decimals(limit, 0, unit) : "-", judge(value, limit));
}

void Table::skip(const std::string& figure, const char* reason) {
    print_row(figure, "-", "-", "-", "-", reason);
}

}  // namespace Bench
