#include "plan/report_server.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <map>
#include <utility>
#include <variant>

#include "plan/thinning.h"

namespace {

constexpr std::size_t points_per_series = 200;
constexpr std::int64_t scanned_page_bytes = 4096;  // the memory scan counts in these
constexpr std::int64_t own_page_size = -1;         // those of the host

// How a count is called, and what one of it is.
struct CountLabel {
    const char* name;
    const char* label;
    const char* unit;
    std::int64_t bytes;
};

constexpr CountLabel count_labels[] = {
    {"numproc", "Processes", "", 0},
    {"numtcpsock", "TCP sockets", "", 0},
    {"numothersock", "Other sockets", "", 0},
    {"numfile", "Open files", "", 0},
    {"privvmpages", "Private memory", "pages of 4 KiB", scanned_page_bytes},
    {"lockedpages", "Locked memory", "pages of 4 KiB", scanned_page_bytes},
    {"shmpages", "Shared memory", "pages", own_page_size},
    {"numflock", "File locks", "", 0},
    {"numiptent", "Packet filter rules and routes", "", 0},
    {"diskspace", "Disk space", "KiB", 1024},
    {"diskinodes", "Inodes", "", 0},
};

// The line of the configuration that says how much of a count the container gets; its name is the
// count's in capitals.
const ConfigLine* line_of(const std::vector<ConfigLine>& lines, const std::string& count) {
    const auto is_its_line = [&count](const ConfigLine& line) {
        const std::string name = line.name;
        return std::equal(name.begin(), name.end(), count.begin(), count.end(),
                          [](char a, char b) { return std::tolower(a) == b; });
    };
    const auto found = std::find_if(lines.begin(), lines.end(), is_its_line);
    return found == lines.end() ? nullptr : &*found;
}

void take_points(const Recording& recording, std::size_t field, ReportSeries& series) {
    std::vector<ReportPoint> points;
    for (const RecordedPass& pass : recording.passes) {
        if (!pass.taken.test(field)) {
            continue;
        }
        points.push_back({pass.at_ms / 1000, pass.counts.*sample_fields[field].count});
        if (series.peak_pass == 0 || points.back().value > series.peak.value) {
            series.peak = points.back();
            series.peak_pass = pass.number;
        }
    }
    series.points = thinned(points, points_per_series);
}

void take_limits(const ConfigLine& line, ReportSeries& series) {
    if (line.barrier <= std::numeric_limits<std::int64_t>::max()) {
        series.barrier = static_cast<std::int64_t>(line.barrier);
    }
    for (const CountRule* rule : line.sources) {
        if (rule->count == series.name && rule->floor != no_floor) {
            series.floor = rule->floor;
        }
    }
}

ReportSeries make_series(const Recording& recording, const std::vector<ConfigLine>& lines,
                         const CountLabel& label, std::size_t field) {
    ReportSeries series;
    series.name = label.name;
    series.label = label.label;
    series.unit = label.unit;
    series.unit_bytes = label.bytes == own_page_size ? recording.header.page_size : label.bytes;
    take_points(recording, field, series);
    if (const ConfigLine* line = line_of(lines, series.name)) {
        take_limits(*line, series);
    }
    return series;
}

std::optional<std::uint64_t> limit_of(const std::vector<ConfigLine>& lines, const char* count) {
    const ConfigLine* line = line_of(lines, count);
    return line ? std::optional<std::uint64_t>(line->limit) : std::nullopt;
}

// Stretches of more than two periods in which nothing was counted.
std::vector<ReportGap> find_gaps(const Recording& recording) {
    std::vector<ReportGap> gaps;
    std::int64_t last_ms = 0;
    const std::int64_t longest_ms = std::int64_t{2000} * recording.spans().period;
    for (const RecordedPass& pass : recording.passes) {
        if (pass.taken.none()) {
            continue;
        }
        if (pass.at_ms - last_ms > longest_ms) {
            gaps.push_back({last_ms / 1000, pass.at_ms / 1000});
        }
        last_ms = pass.at_ms + pass.took_ms;
    }
    return gaps;
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

void take_passes(const Recording& recording, ReportServer& server) {
    for (const RecordedPass& pass : recording.passes) {
        ++(pass.failure ? server.failed_passes : server.passes);
    }
    server.gaps = find_gaps(recording);
}

void take_config(const Recording& recording, const std::vector<ConfigLine>& lines,
                 ReportServer& server) {
    server.memory_limit = limit_of(lines, "slmmemorylimit");
    server.disk = limit_of(lines, "diskspace");
    server.processes = limit_of(lines, "numproc");
    server.descriptors = limit_of(lines, "numfile");
    for (std::size_t field = 0; field < sample_field_count; ++field) {
        server.series.push_back(make_series(recording, lines, count_labels[field], field));
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
    take_passes(recording, server);
    const Kiln::Result<CombinedScan> combined = combine(only);
    if (const auto* reason = std::get_if<Kiln::Reason>(&combined)) {
        server.reason = reason->text;
        return server;
    }
    const auto& scan = std::get<CombinedScan>(combined);
    const ComputedConfig computed = compute_known_lines(scan, scales);
    take_config(recording, computed.lines, server);
    take_notes(scan.profile.notes, server);
    for (const std::string& flaw : find_flaws(only, scan, computed)) {
        server.warnings.push_back(flaw);
    }
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
