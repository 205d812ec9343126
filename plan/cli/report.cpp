// tarnhwplan report: all servers on one page, or as a table.
#include <ctime>
#include <memory>
#include <utility>

#include "kiln/plain_file.h"
#include "kiln/strings.h"
#include "plan/cli/commands.h"
#include "plan/cli/recording_command.h"
#include "plan/report/report_page.h"
#include "plan/report/report_server.h"
#include "plan/report/report_sources.h"
#include "plan/report/report_table.h"
#include "plan/text/utc.h"

namespace {

struct ReportOptions : RecordingOptions {
    bool csv = false;
    bool text = false;
    std::string title;
};

std::string read_reason(const std::string& path) {
    constexpr std::size_t most_bytes = 65536;
    Kiln::Result<Kiln::PlainText> read = Kiln::read_plain_file(path, most_bytes);
    if (!read) {
        return path + " cannot be read: " + read.reason();
    }
    std::string& reason = read->text;
    reason.erase(reason.find_last_not_of(" \t\r\n") + 1);
    return reason.empty() ? "no reason was given" : reason + (read->cut ? " ..." : "");
}

// One server at a time: its recording is given up before the next is read.
ReportServer read_server(const ReportSource& source, const ReportOptions& options) {
    const std::string reason = source.reason.empty() ? "" : read_reason(source.reason);
    if (source.recording.empty()) {
        return failed_server(source.server, reason);
    }
    Kiln::Result<NamedRecording> recording = read_recording(source.recording, options.most_bytes);
    if (!recording) {
        return failed_server(source.server, reason.empty() ? recording.reason() : reason);
    }
    ReportServer server = report_server(source.server, std::move(*recording), options.scales);
    if (!reason.empty()) {
        add_reason(server, reason);
    }
    return server;
}

// What is wrong with whom.
std::vector<std::string> flaws_of(const ReportFleet& fleet) {
    std::vector<std::string> flaws;
    for (const ReportServer& server : fleet.servers) {
        if (server.state != State::done) {
            flaws.push_back(server.name + ": " + name_of(server.state) + ": " +
                            Kiln::join("; ", Kiln::split("\n", server.reason, 0)));
        }
    }
    return flaws;
}

std::string written(const ReportFleet& fleet, const ReportOptions& options) {
    if (options.csv) {
        return csv_table(fleet);
    }
    return options.text ? text_table(fleet) : report_page(fleet);
}

// What must not be written over.
std::vector<std::string> files_of(const std::vector<ReportSource>& sources) {
    std::vector<std::string> files;
    for (const ReportSource& source : sources) {
        files.insert(files.end(), {source.recording, source.reason});
    }
    return files;
}

ReportFleet read_fleet(const std::vector<ReportSource>& sources, const ReportOptions& options) {
    ReportFleet fleet{options.title, utc_text(std::time(nullptr)), TARN_VERSION, {}};
    for (const ReportSource& source : sources) {
        fleet.servers.push_back(read_server(source, options));
    }
    warn_of_same_hosts(fleet.servers);
    if (fleet.title.empty()) {
        fleet.title = fleet.servers.size() == 1 ? fleet.servers[0].name : "Servers";
    }
    return fleet;
}

int run_report(const ReportOptions& options) {
    if (!options.csv && !options.text && !has_page()) {
        say("this program was built without the page; there are --csv and --text");
        return status_usage;
    }
    const Kiln::Result<std::vector<ReportSource>> sources = find_report_sources(options.paths);
    if (!sources) {
        return say_trouble(sources);
    }
    const ReportFleet fleet = read_fleet(*sources, options);
    return finish({options.out_path, files_of(*sources)}, written(fleet, options), flaws_of(fleet));
}

}  // namespace

Command add_report(CLI::App& program) {
    CLI::App* app = program.add_subcommand("report", "Show all servers on one page, or as a table");
    const auto options = std::make_shared<ReportOptions>();
    CLI::Option* csv = app->add_flag("--csv", options->csv, "Write a table for a spreadsheet");
    app->add_flag("--text", options->text, "Write a table for a terminal")->excludes(csv);
    app->add_option("--title", options->title, "What stands above the page")->type_name("TITLE");
    app->add_option("-o,--out", options->out_path, "Write to this file");
    add_reading_options(*app, *options);
    app->add_option("recording", options->paths,
                    "Recordings, folders of NAME.jsonl and NAME.failed")
        ->required();
    return {app, [options] { return run_report(*options); }};
}
