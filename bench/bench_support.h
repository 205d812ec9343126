// What the benchmarks share: their command line, the timing of two sides by turns, and the rows of
// the table. Every row stands in the columns "figure, measured, floor or base, ratio, limit,
// verdict"; script/bench puts the heading above them.
#pragma once

#include <string>
#include <vector>

namespace Bench {

constexpr double no_limit = 0.0;

// Writes `what` and the system error text, and ends the program with 2.
[[noreturn]] void give_up(const char* what);

// The command line: [--quick] [ARGUMENT]...
struct Options {
    Options(int argc, char** argv);

    int rounds(int full, int fewer) const { return quick ? fewer : full; }

    bool quick = false;
    std::vector<std::string> arguments;
};

double median(std::vector<double> samples);

// How one run is timed.
enum class Timing {
    wall,      // by the clock: work that waits for other processes
    cold_cpu,  // by this process's processor time, the kernel's work for it included, with cold
               // caches: work that a run does once, after commands that have filled the caches
};

// A moment, in seconds, of the clock that belongs to the timing.
double now(Timing timing);

// Fills the processor's caches with something else.
void chill_caches();

// What one run of `run` takes.
template <class Run>
double seconds(const Run& run, Timing timing) {
    if (timing == Timing::cold_cpu)
        chill_caches();
    const double start = now(timing);
    run();
    return now(timing) - start;
}

// In seconds, but for the ratio.
struct Medians {
    double ours = 0;
    double floor = 0;
    double ratio = 0;  // of the rounds' ratios, not of the two above
};

// Runs the two sides by turns, so that both see the same load of the machine; which one comes first
// changes with every round. The sides are compared within each round: a machine that runs faster
// for a while does so for both. One round before them warms both up and is not counted.
template <class Ours, class Floor>
Medians by_turns(int rounds, Timing timing, const Ours& ours, const Floor& floor) {
    std::vector<double> of_ours;
    std::vector<double> of_floor;
    std::vector<double> ratios;
    ours();
    floor();
    for (int i = 0; i < rounds; ++i) {
        if (i % 2 == 0)
            of_ours.push_back(seconds(ours, timing));
        of_floor.push_back(seconds(floor, timing));
        if (i % 2 != 0)
            of_ours.push_back(seconds(ours, timing));
        ratios.push_back(of_ours.back() / of_floor.back());
    }
    return {median(of_ours), median(of_floor), median(ratios)};
}

// Prints rows as they come and remembers whether a limit was missed.
class Table {
public:
    // Ours beside the floor.
    void compare(const std::string& figure, const Medians& medians, double ratio_limit);

    // How our cost grows from a small load, the base, to a large one. The floor's own growth stands
    // behind the verdict.
    void growth(const std::string& figure, const Medians& small, const Medians& large,
                double growth_limit);

    // A value that has a limit of its own. The unit is appended to both.
    void bound(const std::string& figure, double value, double limit, const char* unit);

    // Not measured; the reason stands in the place of the verdict.
    void skip(const std::string& figure, const char* reason);

    // 1 when a limit was missed, otherwise 0.
    int exit_status() const { return missed_ ? 1 : 0; }

private:
    const char* judge(double value, double limit);

    bool missed_ = false;
};

}  // namespace Bench
