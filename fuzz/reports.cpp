// What people and their programs get from a recording: the report in its three forms, the
// configuration, the explanation as text and as JSON, and the limits for every engine. The passes
// are repeated until there are enough of them to be thinned.
#include <nlohmann/json.hpp>

#include "calc/env_config.h"
#include "fuzz/support.h"
#include "plan/explain/explanation_json.h"
#include "plan/explain/explanation_text.h"
#include "plan/limits/engines.h"
#include "plan/recording/format.h"
#include "plan/report/report_page.h"
#include "plan/report/report_server.h"
#include "plan/report/report_table.h"
#include "plan/text/printable.h"

namespace {

// Nothing but these control characters is in it, which a terminal or a reader of rows acts on.
void require_plain(const std::string& text, const std::string& besides, const char* claim) {
    for (const char c : text) {
        require(static_cast<unsigned char>(c) >= 0x20 || besides.find(c) != besides.npos, claim);
    }
}

long count(const std::string& text, char c) {
    return std::count(text.begin(), text.end(), c);
}

void repeat_passes(Recording& recording) {
    const std::size_t given = recording.passes.size();
    for (std::size_t i = 0; given > 0 && recording.passes.size() < 250; ++i) {
        RecordedPass pass = recording.passes[i];
        pass.counts[i % sampled_count_number] /= 2;
        recording.passes.push_back(pass);
    }
}

// The cells of a row, told apart as a spreadsheet does.
std::size_t cells_of(const std::string& row) {
    bool quoted = false;
    std::size_t cells = 1;
    for (const char c : row) {
        quoted = quoted != (c == '"');
        cells += c == ',' && !quoted ? 1 : 0;
    }
    require(!quoted, "a quote is closed");
    return cells;
}

void check_rows(std::string csv, std::size_t wanted) {
    require_plain(csv, "\r\n", "nothing but rows");
    std::size_t rows = 0;
    for (; !csv.empty(); ++rows) {
        const std::size_t end = csv.find("\r\n");
        require(end != std::string::npos, "a row has its end");
        require(cells_of(csv.substr(0, end)) == 14, "a row has as many cells as the first");
        csv.erase(0, end + 2);
    }
    require(rows == wanted, "a row for each server");
}

void check_report(const std::string& name, const NamedRecording& named) {
    ReportFleet fleet = {name, "", "1", {report_server(name, named, {}), failed_server("b", name)}};
    for (const std::vector<ReportPoint>& points : fleet.servers[0].points) {
        require(points.size() <= 200, "points are thinned");
    }
    warn_of_same_hosts(fleet.servers);
    require_plain(text_table(fleet), "\n", "nothing moves the terminal");
    check_rows(csv_table(fleet), fleet.servers.size() + 1);
    static const long tags_of_none = count(report_page({}), '<');
    require(count(report_page(fleet), '<') ==
                tags_of_none + 2 * static_cast<long>(fleet.servers.size()),
            "nothing leaves the data");
}

void check_results(const std::vector<NamedRecording>& recordings, const CombinedScan& scan) {
    EnvConfig config;
    const std::vector<ConfigLine> lines = compute_known_lines(scan, {}).lines;
    write_config(lines, config);
    const std::string configuration = config.text();
    const long given = count(configuration, '\n');
    require(given > 0 && given <= static_cast<long>(lines.size()),
            "some line is known, and no text makes another");
    require(configuration.find('\0') == std::string::npos, "nor cuts one off");
    require_plain(harmless_lines(scan.messages + notes_text(scan.profile.notes)), "\r\n\t",
                  "no note moves the terminal");
    const Explanation explanation = explain(recordings, scan, {});
    require(nlohmann::json::accept(explanation_json(explanation).dump()), "it is JSON");
    require_plain(explanation_text(explanation, recordings), "\n",
                  "nothing of the explanation moves the terminal");
    const LimitSheet sheet = work_out_limits(recordings, scan, LimitOptions());
    for (std::size_t i = 0; i < engine_count; ++i) {
        static_cast<void>(limits_text(static_cast<Engine>(i), sheet));
    }
}

}  // namespace

// The first line is what the server's file is called.
void try_input(fuzz::Input input) {
    const std::string text = input.text();
    const std::size_t end = std::min(text.find('\n'), text.size());
    Kiln::Result<Recording> recording =
        parse_recording(text.substr(std::min(end + 1, text.size())));
    if (recording) {
        repeat_passes(*recording);
        const NamedRecording named = {"a", *recording};
        check_report(text.substr(0, end), named);
        if (const Kiln::Result<CombinedScan> scan = combine({named})) {
            check_results({named}, *scan);
        }
    }
}
