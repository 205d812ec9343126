#include "plan/report/report_server.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <map>
#include <set>
#include <utility>

#include "kiln/strings.h"
#include "plan/explain/explanation.h"
#include "plan/report/thinning.h"
#include "plan/text/utc.h"

namespace {

constexpr std::size_t points_per_series = 200;

// A barrier that wrapped around, with its twenty digits, is no height in a chart.
constexpr std::uint64_t most_drawn = std::numeric_limits<std::int64_t>::max();

std::string unit_text(std::int64_t bytes) {
    if (bytes < 1024) {
        return "";
    }
    return bytes == 1024 ? "KiB" : "pages of " + std::to_string(bytes / 1024) + " KiB";
}

std::vector<ReportPoint> points_of(const Recording& recording, std::size_t place) {
    std::vector<ReportPoint> points;
    for (const RecordedPass& pass : recording.passes) {
        if (pass.taken.test(place)) {
            points.push_back({pass.at_ms / 1000, pass.counts[place]});
        }
    }
    return thinned(points, points_per_series);
}

const ConfigLine* line_of(const std::vector<ConfigLine>& lines, const std::string& name) {
    const auto found = std::find_if(lines.begin(), lines.end(),
                                    [&name](const ConfigLine& line) { return line.name == name; });
    return found == lines.end() ? nullptr : &*found;
}

std::optional<std::uint64_t> limit_of(const std::vector<ConfigLine>& lines, const char* name) {
    const ConfigLine* line = line_of(lines, name);
    return line != nullptr ? std::optional<std::uint64_t>(line->limit) : std::nullopt;
}

ReportSeries make_series(const Recording& recording, const std::vector<ConfigLine>& lines,
                         const CountSummary& story, std::size_t place) {
    ReportSeries series;
    series.name = story.count->name;
    series.label = story.count->label;
    series.unit = unit_text(story.unit_bytes);
    series.unit_bytes = story.unit_bytes;
    series.points = points_of(recording, place);
    if (story.peak) {
        series.peak = {story.peak->at_ms / 1000, story.peak->value};
        series.peak_pass = story.peak->pass;
    }
    series.floor = floor_of(*story.count);
    const ConfigLine* line = line_of(lines, story.count->line);
    if (line != nullptr && line->barrier <= most_drawn) {
        series.barrier = static_cast<std::int64_t>(line->barrier);
    }
    series.remarks = story.remarks;
    return series;
}

std::string number_text(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", number);
    return text;
}

std::string basis_text(const LineExplanation& story) {
    std::string text = name_of(story.basis);
    if (story.basis == Basis::floor) {
        text += " of " + std::to_string(*story.floor);
    }
    if (!story.made_from.empty()) {
        text += " from " + Kiln::join(", ", story.made_from);
    }
    return text;
}

ReportLine make_line(const LineExplanation& story, const ConfigLine* config) {
    ReportLine line;
    line.name = story.name;
    line.barrier = story.value;
    if (config != nullptr && config->kind == LineFacts::Kind::pair) {
        line.barrier = std::to_string(config->barrier);
        line.limit = std::to_string(config->limit);
    }
    line.meaning = story.meaning;
    line.seen = story.seen;
    if (story.peak) {
        line.seen_at = story.peak->at_ms / 1000;
        line.seen_in_pass = story.peak->pass;
    }
    line.basis = basis_text(story);
    line.factor = story.factor ? number_text(static_cast<double>(*story.factor)) : "";
    // What is added to a value that is multiplied with so much.
    line.margin = story.margin ? number_text((*story.margin - 1) * 100) + " %" : "";
    line.remarks = story.remarks;
    return line;
}

// Why the recording has not come to its planned end; empty when it has.
std::string why_unfinished(const Recording& recording) {
    if (!recording.summary || !recording.summary_is_last) {
        return "the recording goes on, or was ended by force: it has no last line";
    }
    return recording.summary->interrupted ? "the recording was ended before its time" : "";
}

void take_header(const Recording& recording, ReportServer& server) {
    const RecordingHeader& header = recording.header;
    server.name = header.host;
    server.machine = header.machine;
    server.kernel = header.kernel;
    server.page_size = header.page_size;
    server.start_utc = utc_text(header.start);
    server.period = recording.spans().period;
}

void take_coverage(const Coverage& coverage, ReportServer& server) {
    server.planned_passes = coverage.planned;
    server.passes = coverage.taken;
    server.failed_passes = coverage.failed;
    server.longest_gap = coverage.longest_gap_ms / 1000;
    for (const Gap& gap : coverage.gaps) {
        server.gaps.push_back({gap.from_ms / 1000, gap.to_ms / 1000});
    }
    server.coverage = coverage.grade;
    server.coverage_grade = grade_name(coverage.grade);
}

void take_config(const Recording& recording, const Explanation& explanation,
                 const std::vector<ConfigLine>& lines, ReportServer& server) {
    server.memory_limit = limit_of(lines, "SLMMEMORYLIMIT");
    server.disk = limit_of(lines, "DISKSPACE");
    server.processes = limit_of(lines, "NUMPROC");
    server.descriptors = limit_of(lines, "NUMFILE");
    for (const LineExplanation& story : explanation.lines) {
        server.lines.push_back(make_line(story, line_of(lines, story.name)));
    }
    for (std::size_t place = 0; place < sampled_count_number; ++place) {
        server.series.push_back(make_series(recording, lines, explanation.counts[place], place));
    }
}

// What is wrong on the whole, what did not fit, and what may still grow. That a count jumps or does
// not is no warning.
void take_warnings(const Explanation& explanation, ReportServer& server) {
    server.warnings = explanation.remarks;
    std::set<std::string> of_counts;
    for (const CountSummary& story : explanation.counts) {
        of_counts.insert(story.remarks.begin(), story.remarks.end());
        if (story.may_grow) {
            server.warnings.push_back(std::string(story.count->label) + ": " +
                                      story.remarks.front());
        }
    }
    for (const LineExplanation& story : explanation.lines) {
        for (const std::string& remark : story.remarks) {
            if (story.basis != Basis::missing && of_counts.count(remark) == 0) {
                server.warnings.push_back(story.name + ": " + remark);
            }
        }
    }
}

void take_notes(const TarnACalculateHWNodeNotes& notes, ReportServer& server) {
    for (const TarnACalculateHWNodeWarning& warning : notes.warnings) {
        server.warnings.push_back(warning.message);
    }
    for (const TarnAExcludePath& exclude : notes.excludes) {
        server.notes.push_back(exclude.path);
    }
}

}  // namespace

ReportServer failed_server(const std::string& name, const std::string& reason) {
    ReportServer server;
    server.name = name;
    server.state = ServerState::failed;
    server.reason = reason;
    return server;
}

void add_reason(ReportServer& server, const std::string& reason) {
    if (server.state == ServerState::done) {
        server.state = ServerState::partly;
    }
    server.reason = server.reason.empty() ? reason : reason + "\n" + server.reason;
}

ReportServer report_server(NamedRecording named, ConfigScales scales) {
    const std::vector<NamedRecording> only{std::move(named)};
    const Recording& recording = only.front().recording;
    ReportServer server;
    take_header(recording, server);
    const Kiln::Result<CombinedScan> combined = combine(only);
    if (!combined) {
        server.reason = combined.reason();
        return server;
    }
    const auto& scan = *combined;
    const Explanation explanation = explain(only, scan, scales);
    take_coverage(explanation.coverage, server);
    take_config(recording, explanation, compute_known_lines(scan, scales).lines, server);
    take_warnings(explanation, server);
    take_notes(scan.profile.notes, server);
    server.reason = why_unfinished(recording);
    server.state = server.reason.empty() ? ServerState::done : ServerState::partly;
    return server;
}

void warn_of_same_names(std::vector<ReportServer>& servers) {
    std::map<std::string, int> times;
    for (const ReportServer& server : servers) {
        ++times[server.name];
    }
    for (ReportServer& server : servers) {
        if (times[server.name] > 1) {
            server.warnings.push_back("several servers here have this name; each is counted");
        }
    }
}
