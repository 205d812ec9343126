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

bool is_plain(const std::string& text, const std::string& besides) {
    return std::all_of(text.begin(), text.end(), [&](char c) {
        return static_cast<unsigned char>(c) >= 0x20 || besides.find(c) != std::string::npos;
    });
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
    fuzz::require(!quoted, "a quote is closed");
    return cells;
}

void check_tables(const ReportFleet& fleet) {
    const std::string text = text_table(fleet);
    fuzz::require(is_plain(text, "\n"), "nothing moves the terminal");
    std::string csv = csv_table(fleet);
    fuzz::require(is_plain(csv, "\r\n"), "nothing but rows");
    std::size_t rows = 0;
    for (; !csv.empty(); ++rows) {
        const std::size_t end = csv.find("\r\n");
        fuzz::require(end != std::string::npos, "a row has its end");
        fuzz::require(cells_of(csv.substr(0, end)) == 14, "a row has as many cells as the first");
        csv.erase(0, end + 2);
    }
    fuzz::require(rows == fleet.servers.size() + 1, "a row for each server");
}

void check_page(const ReportFleet& fleet) {
    static const std::string empty = report_page({});
    static const auto tags_of_none = std::count(empty.begin(), empty.end(), '<');
    const std::string page = report_page(fleet);
    const auto tags = std::count(page.begin(), page.end(), '<');
    fuzz::require(tags == tags_of_none + 2 * static_cast<long>(fleet.servers.size()),
                  "nothing leaves the data");
}

void check_report(const std::string& name, const NamedRecording& named) {
    ReportFleet fleet = {name, "", "1", {report_server(name, named, {}), failed_server("b", name)}};
    for (const std::vector<ReportPoint>& points : fleet.servers[0].points) {
        fuzz::require(points.size() <= 200, "points are thinned");
    }
    warn_of_same_hosts(fleet.servers);
    check_tables(fleet);
    check_page(fleet);
}

void check_results(const NamedRecording& named) {
    const std::vector<NamedRecording> recordings = {named};
    const Kiln::Result<CombinedScan> scan = combine(recordings);
    if (!scan) {
        return;
    }
    EnvConfig config;
    const std::vector<ConfigLine> lines = compute_known_lines(*scan, {}).lines;
    write_config(lines, config);
    const std::string configuration = config.text();
    const auto given = std::count(configuration.begin(), configuration.end(), '\n');
    fuzz::require(given > 0 && given <= static_cast<long>(lines.size()),
                  "some line is known, and no text makes another");
    fuzz::require(configuration.find('\0') == std::string::npos, "nor cuts one off");
    const std::string notes = harmless_lines(scan->messages + notes_text(scan->profile.notes));
    fuzz::require(is_plain(notes, "\r\n\t"), "no note moves the terminal");
    const Explanation explanation = explain(recordings, *scan, {});
    const std::string json = explanation_json(explanation).dump();
    fuzz::require(nlohmann::json::accept(json), "the explanation is JSON");
    const std::string text = explanation_text(explanation, recordings);
    fuzz::require(is_plain(text, "\n"), "nothing of the explanation moves the terminal");
    const LimitSheet sheet = work_out_limits(recordings, *scan, LimitOptions());
    for (std::size_t i = 0; i < engine_count; ++i) {
        static_cast<void>(limits_text(static_cast<Engine>(i), sheet));
    }
}

}  // namespace

// The first line is what the server's file is called.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = fuzz::text_of(data, size);
    const std::size_t end = std::min(text.find('\n'), text.size());
    Kiln::Result<Recording> recording =
        parse_recording(text.substr(std::min(end + 1, text.size())));
    if (recording) {
        repeat_passes(*recording);
        const NamedRecording named = {"a", *recording};
        check_report(text.substr(0, end), named);
        check_results(named);
    }
    return 0;
}
