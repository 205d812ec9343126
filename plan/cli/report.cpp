// tarnhwplan report: all servers on one page, or as a table.
#include <ctime>
#include <memory>
#include <utility>

#include "kiln/plain_file.h"
#include "plan/cli/commands.h"
#include "plan/cli/recording_command.h"
#include "plan/report/report_page.h"
#include "plan/report/report_server.h"
#include "plan/report/report_sources.h"
#include "plan/report/report_table.h"
#include "plan/text/utc.h"

namespace {

struct Options {
    bool csv = false;
    bool text = false;
    std::string title;
    std::string out_path;
    ScaleOptions scales;
    std::uint64_t most_bytes = usual_most_bytes;  // of one recording
    std::vector<std::string> paths;
};

std::string read_reason(const std::string& path) {
    constexpr std::size_t most_bytes = 65536;
    Kiln::PlainText read = Kiln::read_plain_file(path, most_bytes);
    if (!read.trouble.empty()) {
        return path + " cannot be read: " + read.trouble;
    }
    std::string& reason = read.text;
    reason.erase(reason.find_last_not_of(" \t\r\n") + 1);
    return reason.empty() ? "no reason was given" : reason + (read.cut ? " ..." : "");
}

// One server at a time: its recording is given up before the next is read.
ReportServer read_server(const ReportSource& source, ConfigScales scales,
                         std::uint64_t most_bytes) {
    const std::string reason = source.reason.empty() ? "" : read_reason(source.reason);
    if (source.recording.empty()) {
        return failed_server(source.server, reason);
    }
    Kiln::Result<NamedRecording> recording = read_recording(source.recording, most_bytes);
    if (!recording) {
        return failed_server(source.server, reason.empty() ? recording.reason() : reason);
    }
    ReportServer server = report_server(source.server, std::move(*recording), scales);
    if (!reason.empty()) {
        add_reason(server, reason);
    }
    return server;
}

// Says what is wrong with whom.
bool all_done(const ReportFleet& fleet) {
    bool done = true;
    for (const ReportServer& server : fleet.servers) {
        if (server.state != ServerState::done) {
            say(server.name + ": " + name_of(server.state) + ": " + server.reason);
            done = false;
        }
    }
    return done;
}

std::string written(const ReportFleet& fleet, const Options& options) {
    if (options.csv) {
        return csv_table(fleet);
    }
    return options.text ? text_table(fleet) : report_page(fleet);
}

int run(const Options& options) {
    ReportFleet fleet{options.title, utc_text(std::time(nullptr)), TARN_VERSION, {}};
    ConfigScales scales;
    if (!read_scales(options.scales, scales)) {
        return status_usage;
    }
    if (!options.csv && !options.text && !has_page()) {
        say("this program was built without the page; there are --csv and --text");
        return status_usage;
    }
    std::vector<ReportSource> sources;
    const std::string error = find_report_sources(options.paths, sources);
    if (!error.empty()) {
        say(error);
        return status_io;
    }
    if (sources.empty()) {
        say("there is neither a NAME.jsonl nor a NAME.failed");
        return status_io;
    }
    for (const ReportSource& source : sources) {
        fleet.servers.push_back(read_server(source, scales, options.most_bytes));
    }
    warn_of_same_hosts(fleet.servers);
    if (fleet.title.empty()) {
        fleet.title = fleet.servers.size() == 1 ? fleet.servers[0].name : "Servers";
    }
    if (!write_result(options.out_path, written(fleet, options))) {
        return status_io;
    }
    return all_done(fleet) ? status_done : status_flawed;
}

}  // namespace

Command add_report(CLI::App& program) {
    CLI::App* app = program.add_subcommand("report", "Show all servers on one page, or as a table");
    const auto options = std::make_shared<Options>();
    CLI::Option* csv = app->add_flag("--csv", options->csv, "Write a table for a spreadsheet");
    app->add_flag("--text", options->text, "Write a table for a terminal")->excludes(csv);
    app->add_option("--title", options->title, "What stands above the page")->type_name("TITLE");
    app->add_option("-o,--out", options->out_path, "Write to this file");
    add_scale_options(*app, options->scales);
    add_size_option(*app, options->most_bytes);
    app->add_option("recording", options->paths,
                    "Recordings, folders of NAME.jsonl and NAME.failed")
        ->required();
    return {app, [options] { return run(*options); }};
}
