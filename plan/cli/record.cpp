// tarnhwplan record: takes the calculator's passes and keeps every one of them.
#include <cerrno>
#include <memory>
#include <utility>

#include "calc/arguments.h"
#include "plan/cli/commands.h"
#include "plan/record/recorder.h"

namespace {

struct Options {
    std::string scan_time;
    std::string scan_period;
    bool append = false;
    bool force = false;
    std::string path;
};

bool read_span(const char* option, const std::string& text, std::int32_t& seconds) {
    errno = 0;
    if (parse_time(text.c_str(), &seconds) == 0) {
        return true;
    }
    say("Bad time spec specified for " + std::string(option) + ": " + text);
    return false;
}

bool read_spans(const Options& options, ScanSpans& spans) {
    if (!read_span("--scan-time", options.scan_time, spans.time) ||
        !read_span("--scan-period", options.scan_period, spans.period)) {
        return false;
    }
    if (spans.period == 0 && spans.time > 0) {
        say("--scan-period is 0 while --scan-time is not");
        return false;
    }
    return true;
}

int run(const Options& options) {
    ScanSpans spans;
    if (!read_spans(options, spans)) {
        return status_usage;
    }
    auto existing = RecordFile::Existing::refuse;
    if (options.append || options.force) {
        existing = options.append ? RecordFile::Existing::append : RecordFile::Existing::replace;
    }
    Kiln::Result<RecordFile> opened = RecordFile::open(options.path, existing);
    if (!opened) {
        say(opened.reason());
        return status_io;
    }
    const StopSignals stop;
    const Host host;
    Recorder recorder(*opened, host, stop);
    try {
        recorder.record(spans);
    } catch (const RecordTrouble& trouble) {
        say(options.path + ": " + trouble.what());
        return status_io;
    }
    return recorder.flawed() ? status_flawed : status_done;
}

}  // namespace

Command add_record(CLI::App& program) {
    CLI::App* app = program.add_subcommand("record", "Watch this host and keep every sample");
    const auto options = std::make_shared<Options>();
    app->add_option("-t,--scan-time", options->scan_time, "How long to watch, such as 7d or 1h30m");
    app->add_option("-p,--scan-period", options->scan_period, "Time between two passes");
    CLI::Option* append =
        app->add_flag("--append", options->append, "Go on with a recording that stopped");
    app->add_flag("--force", options->force, "Replace an existing file")->excludes(append);
    app->add_option("file", options->path, "The recording")->required();
    return {app, [options] { return run(*options); }};
}
