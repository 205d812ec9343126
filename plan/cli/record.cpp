// tarnhwplan record: takes the calculator's passes and keeps every one of them.
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <memory>

#include "calc/arguments.h"
#include "plan/check/host_check.h"
#include "plan/cli/commands.h"
#include "plan/record/recorder.h"
#include "plan/text/printable.h"

namespace {

struct RecordOptions {
    ScanSpans spans;
    bool append = false;
    bool force = false;
    std::string path;
};

// A span as the calculator reads it becomes its seconds.
const CLI::Validator span_in_seconds(
    [](std::string& text) -> std::string {
        int seconds = 0;
        errno = 0;
        if (parse_time(text.c_str(), &seconds) != 0) {
            return "\"" + text + "\" is no span: numbers with units, such as 30s, 5m, 1h30m or 7d";
        }
        text = std::to_string(seconds);
        return {};
    },
    "");

RecordFile::Existing existing_file(const RecordOptions& options) {
    if (options.append) {
        return RecordFile::Existing::append;
    }
    return options.force ? RecordFile::Existing::replace : RecordFile::Existing::refuse;
}

// How it ended, and how to go on.
void say_end(const Recorder& recorder, const std::string& path) {
    const std::string passes = grouped(recorder.passes_done()) +
                               (recorder.passes_done() == 1 ? " pass in " : " passes in ");
    say(passes + path +
        (recorder.interrupted() ? "; ended early, go on with: --append"
                                : "; next: tarnhwplan explain"));
}

int record(RecordFile& file, const RecordOptions& options) {
    RecorderSources sources;
    sources.is_root = geteuid() == 0;
    const StopSignals stop;
    sources.check = [&] {
        return check_host(sources.host, check_limit_seconds, stop.wake_fd()).findings;
    };
    Recorder recorder(file, sources, stop);
    try {
        recorder.record(options.spans);
    } catch (const RecordTrouble& trouble) {
        say(options.path + ": " + trouble.what());
        return status_io;
    }
    say_end(recorder, options.path);
    return recorder.flawed() ? status_flawed : status_done;
}

int run_record(const RecordOptions& options) {
    if (options.spans.period == 0 && options.spans.time > 0) {
        say("--scan-period is 0 while --scan-time is not");
        return status_usage;
    }
    // Whoever reads our messages may go away; that ends no recording.
    std::signal(SIGPIPE, SIG_IGN);
    Kiln::Result<RecordFile> file = RecordFile::open(options.path, existing_file(options));
    if (!file) {
        return say_trouble(file);
    }
    return record(*file, options);
}

}  // namespace

Command add_record(CLI::App& program) {
    CLI::App* app = program.add_subcommand("record", "Watch this host and keep every sample");
    const auto options = std::make_shared<RecordOptions>();
    CLI::Option* time = app->add_option("-t,--scan-time", options->spans.time,
                                        "How long to watch, such as 7d; one pass without");
    CLI::Option* period = app->add_option("-p,--scan-period", options->spans.period,
                                          "Time between two passes, such as 5m");
    time->transform(span_in_seconds)->type_name("SPAN");
    period->transform(span_in_seconds)->needs(time)->type_name("SPAN");
    CLI::Option* append =
        app->add_flag("--append", options->append, "Go on with a recording that stopped");
    app->add_flag("--force", options->force, "Replace an existing file")->excludes(append);
    app->footer("A SPAN is numbers with units: 30s, 5m, 1h30m, 7d.");
    app->add_option("file", options->path, "The recording")->required();
    return {app, [options] { return run_record(*options); }};
}
