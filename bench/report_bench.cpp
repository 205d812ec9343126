// What the page of a large fleet costs: 1000 servers, each watched for a week every five minutes.
//
//     report_bench [--quick] PROGRAM
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "bench/bench_support.h"
#include "plan/recording/format.h"
#include "plan/recording/recording.h"

namespace {

namespace fs = std::filesystem;

constexpr double seconds_limit = 90.0;
constexpr double memory_limit_mb = 900.0;
constexpr double page_limit_mb = 30.0;

constexpr int servers = 1000;
constexpr int different = 50;  // the others are these again: the disk needs no gigabyte
constexpr int passes = 2016;
constexpr std::int32_t period_seconds = 300;

// The totals grow by something else in each pass.
Usage busy_usage(int number, int server) {
    const std::int64_t odd = (number * 7919 + server) % 90000;
    const std::int64_t total = number * std::int64_t{period_seconds} * 1000;
    Usage usage;
    usage.uptime_ms = total;
    usage.tasks = 1000 + odd % 900;
    usage.memory_kib = 16000000 + odd * 97;
    usage.swap_kib = 100000 + odd;
    usage.cpu_ms = total * 4 + odd;
    usage.disk_read_bytes = usage.disk_written_bytes = total * 5000 + odd * 1000;
    usage.net_received_bytes = usage.net_sent_bytes = total * 700 + odd * 1000;
    return usage;
}

// Numbers as long as those of a busy server, and no two passes alike.
std::string recording_text(int server) {
    RecordingHeader header;
    header.version = "1.0";
    header.host = "node" + std::to_string(server) + ".example.org";
    header.machine = "x86_64";
    header.kernel = "5.10.0";
    header.page_size = 4096;
    header.spans = {passes * period_seconds, period_seconds};
    std::string text = header_line(header);
    for (int number = 1; number <= passes; ++number) {
        RecordedPass pass;
        pass.number = number;
        pass.at_ms = std::int64_t{number} * period_seconds * 1000;
        pass.taken.set();
        for (std::size_t place = 0; place < sampled_count_number; ++place) {
            pass.counts[place] =
                100000 + (number * (7919 + 104 * static_cast<int>(place)) + server) % 90000;
        }
        pass.usage = busy_usage(number, server);
        text += pass_line(pass);
    }
    return text + summary_line(Summary());
}

void write_fleet(const fs::path& folder) {
    fs::create_directories(folder);
    const auto path = [&](int server) { return folder / (std::to_string(server) + ".jsonl"); };
    for (int server = 0; server < servers; ++server) {
        if (server < different) {
            std::ofstream(path(server)) << recording_text(server);
        } else {
            fs::create_hard_link(path(server % different), path(server));
        }
    }
}

rusage run(const std::string& program, const fs::path& fleet, const fs::path& page) {
    const pid_t pid = fork();
    if (pid == 0) {
        execl(program.c_str(), program.c_str(), "report", fleet.c_str(), "-o", page.c_str(),
              static_cast<char*>(nullptr));
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    if (pid == -1 || wait4(pid, &status, 0, &usage) != pid || status != 0)
        Bench::give_up(program.c_str());
    return usage;
}

}  // namespace

int main(int argc, char** argv) {
    const Bench::Options options(argc, argv);
    char folder[] = "/tmp/report_bench.XXXXXX";
    if (options.arguments.size() != 1 || mkdtemp(folder) == nullptr) {
        std::fputs("usage: report_bench [--quick] PROGRAM\n", stderr);
        return 2;
    }
    const fs::path page = fs::path(folder) / "report.html";
    write_fleet(fs::path(folder) / "fleet");
    rusage usage{};
    const double seconds =
        Bench::seconds([&] { usage = run(options.arguments[0], fs::path(folder) / "fleet", page); },
                       Bench::Timing::wall);

    Bench::Table table;
    table.bound("page of 1000 servers with 2016 passes each", seconds, seconds_limit, " s");
    table.bound("  peak memory", static_cast<double>(usage.ru_maxrss) / 1024.0, memory_limit_mb,
                " MB");
    table.bound("  its size", static_cast<double>(fs::file_size(page)) / 1e6, page_limit_mb, " MB");
    fs::remove_all(folder);
    return table.exit_status();
}
