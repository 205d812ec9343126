// What one whole default run of the program costs beside a bare shell script that runs the same ten
// commands and reads every status file once, and how much memory the program itself takes.
//
//     whole_run_bench [--quick] PROGRAM
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/bench_support.h"

namespace {

constexpr double ratio_limit = 1.1;
constexpr double memory_limit_mb = 8.0;

// The floor: each command through its own shell, as in the program, its output thrown away. One cat
// reads the status files, since a shell's own reading goes byte by byte.
constexpr const char* bare_script =
    "sh -c 'ps ax | wc -l'\n"
    "sh -c 'wc -l < /proc/net/tcp'\n"
    "sh -c 'cat /proc/net/unix /proc/net/udp /proc/net/raw | wc -l'\n"
    "sh -c 'ls /proc/*/fd/* | wc -l'\n"
    "cat /proc/[0-9]*/status\n"
    "sh -c '/usr/bin/ipcs -m -u'\n"
    "sh -c 'wc -l < /proc/locks'\n"
    "sh -c 'iptables -n -L -t filter | wc -l'\n"
    "sh -c 'ip route list | wc -l'\n"
    "sh -c 'df -k -l'\n"
    "sh -c 'df -i -l'\n";

// Starts programs with all outputs thrown away.
class Launcher {
public:
    Launcher() {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    }
    ~Launcher() { posix_spawn_file_actions_destroy(&actions_); }
    Launcher(const Launcher&) = delete;
    Launcher& operator=(const Launcher&) = delete;

    // Runs the program to its end. Anything but status 0 ends the benchmark: a run that stopped
    // half-way would look fast.
    rusage run(std::vector<std::string> words) const {
        std::vector<char*> argv;
        for (std::string& word : words)
            argv.push_back(word.data());
        argv.push_back(nullptr);
        pid_t pid = -1;
        errno = posix_spawnp(&pid, argv[0], &actions_, nullptr, argv.data(), environ);
        if (errno != 0)
            Bench::give_up(argv[0]);
        int status = 0;
        rusage usage{};
        if (wait4(pid, &status, 0, &usage) != pid)
            Bench::give_up("wait4");
        if (status != 0) {
            std::fprintf(stderr, "%s: ended with wait status %d\n", argv[0], status);
            std::exit(2);
        }
        return usage;
    }

private:
    posix_spawn_file_actions_t actions_{};
};

}  // namespace

int main(int argc, char** argv) {
    const Bench::Options options(argc, argv);
    if (options.arguments.size() != 1) {
        std::fputs("usage: whole_run_bench [--quick] PROGRAM\n", stderr);
        return 2;
    }
    // The program sets it for its commands, and some of them start faster with it.
    setenv("LC_ALL", "C", 1);
    const Launcher launcher;
    long peak_kib = 0;
    const auto ours = [&] {
        peak_kib = std::max(peak_kib, launcher.run({options.arguments[0]}).ru_maxrss);
    };
    const auto floor = [&] { launcher.run({"sh", "-c", bare_script}); };

    Bench::Table table;
    table.compare("whole default run",
                  Bench::by_turns(options.rounds(100, 20), Bench::Timing::wall, ours, floor),
                  ratio_limit);
    // The process's own peak, not that of its commands. Between fork and exec the kernel counts
    // this benchmark's memory too, which is less.
    table.bound("  its peak memory", static_cast<double>(peak_kib) / 1024.0, memory_limit_mb,
                " MB");
    return table.exit_status();
}
