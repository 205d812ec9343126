// What runscript("true") costs beside a bare fork, exec, two pipes and wait of the same shell
// command, and how far the slowest of many calls lies above the median.
//
//     runscript_bench [--quick]
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <list>
#include <string>
#include <vector>

#include "bench/bench_support.h"
#include "kiln/runscript.h"
#include "kiln/search_path.h"

namespace {

constexpr double ratio_limit = 1.15;
constexpr double outlier_limit_ms = 200.0;

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
        Bench::give_up("pipe");
    const pid_t pid = fork();
    if (pid < 0)
        Bench::give_up("fork");
    if (pid == 0)
        run_shell(shell, out, err);
    close(out[1]);
    close(err[1]);
    read_to_end(out[0]);
    read_to_end(err[0]);
    int status = 0;
    if (waitpid(pid, &status, 0) != pid || status != 0)
        Bench::give_up("bare run");
}

void our_run() {
    std::string out;
    std::string err;
    if (runscript("true", out, err) != 0)
        Bench::give_up(err.c_str());
}

// How far the slowest call lies above the median. An exit that the runner failed to notice would
// stand out by a whole time-out.
double worst_excess_ms(int calls) {
    std::vector<double> samples;
    for (int i = 0; i < calls; ++i)
        samples.push_back(Bench::seconds(our_run, Bench::Timing::wall));
    return (*std::max_element(samples.begin(), samples.end()) - Bench::median(samples)) * 1e3;
}

}  // namespace

int main(int argc, char** argv) {
    const Bench::Options options(argc, argv);
    const std::string shell = find_shell();
    Bench::Table table;
    table.compare("runscript(\"true\")",
                  Bench::by_turns(options.rounds(3000, 500), Bench::Timing::wall, our_run,
                                  [&shell] { bare_run(shell.c_str()); }),
                  ratio_limit);
    const int calls = options.rounds(20000, 2000);
    table.bound("  slowest of " + std::to_string(calls) + " calls, above the median",
                worst_excess_ms(calls), outlier_limit_ms, " ms");
    return table.exit_status();
}
