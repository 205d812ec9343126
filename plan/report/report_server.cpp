#include "plan/report/report_server.h"

#include <map>
#include <utility>

#include "kiln/strings.h"
#include "plan/explain/explanation.h"
#include "plan/report/usage_points.h"

namespace {

std::vector<ReportPoint> points_of(const Recording& recording, std::size_t place) {
    std::vector<ReportPoint> points;
    for (const RecordedPass& pass : recording.passes) {
        if (pass.taken.test(place)) {
            points.push_back({pass.at_ms / 1000, pass.counts[place]});
        }
    }
    return thinned(points, points_per_series);
}

std::optional<std::uint64_t> limit_of(const Explanation& explanation, const std::string& name) {
    for (const LineExplanation& line : explanation.lines) {
        if (line.name == name) {
            return line.limit;
        }
    }
    return {};
}

// What the table needs. Of what is wrong: that on the whole beside the reasons of the verdict, and
// what deserves a look at a line. What is wrong with a text, or with a line that is missing, has
// been said on the whole.
void take_explanation(const Explanation& explanation, ReportServer& server) {
    server.host = explanation.host;
    server.state = explanation.verdict.state;
    server.reason = Kiln::join("\n", explanation.verdict.reasons);
    server.memory_limit = limit_of(explanation, "SLMMEMORYLIMIT");
    server.disk = limit_of(explanation, "DISKSPACE");
    server.processes = limit_of(explanation, "NUMPROC");
    server.descriptors = limit_of(explanation, "NUMFILE");
    server.warnings = explanation.remarks;
    for (const LineExplanation& line : explanation.lines) {
        for (const std::string& remark : line.remarks) {
            if (line.limit) {
                server.warnings.push_back(line.name + ": " + remark);
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
    server.state = State::failed;
    server.reason = reason;
    return server;
}

void add_reason(ReportServer& server, const std::string& reason) {
    if (server.state == State::done) {
        server.state = State::partly;
    }
    server.reason = server.reason.empty() ? reason : reason + "\n" + server.reason;
}

ReportServer report_server(const std::string& name, NamedRecording named, ConfigScales scales) {
    const std::vector<NamedRecording> only{std::move(named)};
    const Recording& recording = only.front().recording;
    ReportServer server;
    server.name = name;
    server.host = recording.header.host;
    server.header = recording.header;
    server.period = recording.spans().period;
    const Kiln::Result<CombinedScan> combined = combine(only);
    if (!combined) {
        server.reason = combined.reason();
        return server;
    }
    take_explanation(server.explanation.emplace(explain(only, *combined, scales)), server);
    take_notes(combined->profile.notes, server);
    for (std::size_t place = 0; place < sampled_count_number; ++place) {
        server.points.push_back(points_of(recording, place));
    }
    server.usage = server_usage(only.front());
    return server;
}

void warn_of_same_hosts(std::vector<ReportServer>& servers) {
    std::map<std::string, int> times;
    for (const ReportServer& server : servers) {
        ++times[server.host];
    }
    for (ReportServer& server : servers) {
        if (!server.host.empty() && times[server.host] > 1) {
            server.warnings.push_back("several servers here call themselves " + server.host +
                                      "; each is counted");
        }
    }
}
