// What runscript("true") costs beside a bare fork, exec, two pipes and wait of the same shell
// command, and how far the slowest of many calls lies above the median.
//
//     runscript_bench [pairs [calls]]
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <list>
#include <string>
#include <vector>

#include "kiln/numbers.h"
#include "kiln/runscript.h"
#include "kiln/search_path.h"

namespace {

constexpr double ratio_limit = 1.15;
constexpr double outlier_limit_ms = 200.0;

using Clock = std::chrono::steady_clock;

[[noreturn]] void give_up(const char* what) {
    std::perror(what);
    std::exit(2);
}

std::string find_shell() {
    std::list<std::string> env;
    for (char** entry = environ; *entry != nullptr; ++entry)
        env.emplace_back(*entry);
    return Kiln::get_full_name("sh", env);
}

[[noreturn]] void run_shell(const char* shell, const int (&out)[2], const int (&err)[2]) {
    char name[] = "sh";
    char option[] = "-c";
    char command[] = "true";
    char* const argv[] = {name, option, command, nullptr};
    dup2(out[1], 1);
    dup2(err[1], 2);
    close(0);
    close(out[0]);
    close(out[1]);
    close(err[0]);
    close(err[1]);
    execv(shell, argv);
    _exit(127);
}

void read_to_end(int fd) {
    char chunk[4096];
    while (read(fd, chunk, sizeof chunk) > 0) {
    }
    close(fd);
}

// The floor: the shell is found already, nothing is kept, nothing is checked that need not be.
void bare_run(const char* shell) {
    int out[2];
    int err[2];
    if (pipe(out) != 0 || pipe(err) != 0)
        give_up("pipe");
    const pid_t pid = fork();
    if (pid < 0)
        give_up("fork");
    if (pid == 0)
        run_shell(shell, out, err);
    close(out[1]);
    close(err[1]);
    read_to_end(out[0]);
    read_to_end(err[0]);
    int status = 0;
    if (waitpid(pid, &status, 0) != pid || status != 0)
        give_up("bare run");
}

void our_run() {
    std::string out;
    std::string err;
    if (runscript("true", out, err) != 0)
        give_up(err.c_str());
}

template <class Run>
double microseconds(const Run& run) {
    const Clock::time_point start = Clock::now();
    run();
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

double median(std::vector<double> samples) {
    const auto middle = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() / 2);
    std::nth_element(samples.begin(), middle, samples.end());
    return *middle;
}

// Alternates the two sides, so that both see the same load of the machine; the order changes with
// every pair.
bool compare(const char* shell, int pairs) {
    const auto floor_run = [shell] { bare_run(shell); };
    std::vector<double> ours;
    std::vector<double> floor;
    for (int i = 0; i < pairs; ++i) {
        if (i % 2 == 0)
            ours.push_back(microseconds(our_run));
        floor.push_back(microseconds(floor_run));
        if (i % 2 != 0)
            ours.push_back(microseconds(our_run));
    }
    const double ratio = median(ours) / median(floor);
    const bool ok = ratio <= ratio_limit;
    std::printf("runscript  ours %.1f us  floor %.1f us  ratio %.3f  limit %.2f  %s\n",
                median(ours), median(floor), ratio, ratio_limit, ok ? "ok" : "MISSED");
    return ok;
}

bool find_outliers(int calls) {
    std::vector<double> samples;
    for (int i = 0; i < calls; ++i)
        samples.push_back(microseconds(our_run));
    const double middle_ms = median(samples) / 1000.0;
    const double excess_ms = *std::max_element(samples.begin(), samples.end()) / 1000.0 - middle_ms;
    const bool ok = excess_ms < outlier_limit_ms;
    std::printf("runscript_slowest_of_%d  median %.3f ms  excess %.3f ms  limit %.0f  %s\n", calls,
                middle_ms, excess_ms, outlier_limit_ms, ok ? "ok" : "MISSED");
    return ok;
}

}  // namespace

int main(int argc, char** argv) {
    const int pairs = argc > 1 ? std::max(1, Kiln::leading_int(argv[1])) : 2000;
    const int calls = argc > 2 ? std::max(1, Kiln::leading_int(argv[2])) : 20000;
    const std::string shell = find_shell();
    const bool fast = compare(shell.c_str(), pairs);
    const bool steady = find_outliers(calls);
    return fast && steady ? 0 : 1;
}
