#include "plan/report/report_page.h"

#include <nlohmann/json.hpp>

#include "plan/recording/json_text.h"
#include "plan/report/page/page_text.h"

namespace {

using Json = nlohmann::json;

template <class T>
Json optional_json(const std::optional<T>& value) {
    return value ? Json(*value) : Json();
}

// What the table of all servers shows. The rest of a server is a text of its own, which the page
// reads only when the server is opened.
Json row_json(const ReportServer& s) {
    return {{"name", s.name},
            {"state", name_of(s.state)},
            {"reason", s.reason},
            {"memory", optional_json(s.memory_limit)},
            {"disk", optional_json(s.disk)},
            {"processes", optional_json(s.processes)},
            {"descriptors", optional_json(s.descriptors)},
            {"coverage", s.coverage},
            {"grade", s.coverage_grade},
            {"passes", s.passes},
            {"planned", s.planned_passes},
            {"warnings", s.warnings.size()}};
}

Json fleet_json(const ReportFleet& fleet) {
    return {{"title", fleet.title},
            {"generated", fleet.generated_utc},
            {"version", fleet.version},
            {"servers", list_to_json(fleet.servers, row_json)}};
}

Json line_json(const ReportLine& line) {
    return {
        {"name", line.name},         {"barrier", line.barrier}, {"limit", line.limit},
        {"meaning", line.meaning},   {"seen", line.seen},       {"at", optional_json(line.seen_at)},
        {"pass", line.seen_in_pass}, {"basis", line.basis},     {"factor", line.factor},
        {"margin", line.margin},     {"remarks", line.remarks}};
}

// Seconds and values by turns, which is shorter than pairs.
Json points_json(const std::vector<ReportPoint>& points) {
    Json flat = Json::array();
    for (const ReportPoint& point : points) {
        flat.push_back(point.seconds);
        flat.push_back(point.value);
    }
    return flat;
}

Json series_json(const ReportSeries& series) {
    return {{"name", series.name},
            {"label", series.label},
            {"unit", series.unit},
            {"bytes", series.unit_bytes},
            {"points", points_json(series.points)},
            {"peak", {{"at", series.peak.seconds}, {"value", series.peak.value}}},
            {"pass", series.peak_pass},
            {"floor", optional_json(series.floor)},
            {"barrier", optional_json(series.barrier)},
            {"remarks", series.remarks}};
}

Json gap_json(const ReportGap& gap) {
    return {gap.from, gap.to};
}

Json details_json(const ReportServer& s) {
    return {{"machine", s.machine},
            {"kernel", s.kernel},
            {"pageSize", s.page_size},
            {"start", s.start_utc},
            {"period", s.period},
            {"failedPasses", s.failed_passes},
            {"gap", s.longest_gap},
            {"gaps", list_to_json(s.gaps, gap_json)},
            {"warnings", s.warnings},
            {"lines", list_to_json(s.lines, line_json)},
            {"series", list_to_json(s.series, series_json)},
            {"notes", s.notes}};
}

// JSON that may stand inside a script element. Only strings can hold a "<", and there it may be
// written as an escape; everything beyond ASCII is, and bytes that are no UTF-8 are replaced.
void append_data(const std::string& id, const Json& json, std::string& page) {
    page += "<script type=\"application/json\" id=\"" + id + "\">";
    for (const char c : json.dump(-1, ' ', true, Json::error_handler_t::replace)) {
        if (c == '<') {
            page += "\\u003c";
        } else {
            page += c;
        }
    }
    page += "</script>\n";
}

}  // namespace

const char* name_of(ServerState state) {
    switch (state) {
        case ServerState::done:
            return "done";
        case ServerState::partly:
            return "partly";
        case ServerState::failed:
            break;
    }
    return "failed";
}

bool has_page() {
    return !page_head().empty();
}

std::string report_page(const ReportFleet& fleet) {
    std::string page(page_head());
    append_data("fleet", fleet_json(fleet), page);
    for (std::size_t i = 0; i < fleet.servers.size(); ++i) {
        append_data("data-" + std::to_string(i), details_json(fleet.servers[i]), page);
    }
    page += page_tail();
    return page;
}
