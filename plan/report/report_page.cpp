#include "plan/report/report_page.h"

#include <nlohmann/json.hpp>

#include "plan/explain/explanation_json.h"
#include "plan/recording/json_text.h"
#include "plan/report/page/page_text.h"
#include "plan/text/utc.h"

namespace {

using Json = nlohmann::ordered_json;

template <class T>
Json optional_json(const std::optional<T>& value) {
    return value ? Json(*value) : Json();
}

// What the table of all servers shows. The rest of a server is a text of its own, which the page
// reads only when the server is opened.
Json row_json(const ReportServer& s) {
    return {{"name", s.name},
            {"host", s.host},
            {"state", name_of(s.state)},
            {"reason", s.reason},
            {"cores", nullptr},
            {"memory_used", nullptr},
            {"memory", optional_json(s.memory_limit)},
            {"disk", optional_json(s.disk)},
            {"processes", optional_json(s.processes)},
            {"descriptors", optional_json(s.descriptors)},
            {"grade", s.explanation ? s.explanation->coverage.grade : 0},
            {"coverage", s.explanation ? grade_name(s.explanation->coverage.grade) : ""},
            {"taken", s.explanation ? s.explanation->coverage.taken : 0},
            {"planned", s.explanation ? s.explanation->coverage.planned : 0},
            {"warnings", s.warnings.size()}};
}

Json fleet_json(const ReportFleet& fleet) {
    return {{"title", fleet.title},
            {"generated", fleet.generated_utc},
            {"version", fleet.version},
            {"usage", Json::object()},
            {"servers", list_to_json(fleet.servers, row_json)}};
}

// Seconds since the point before, and values, by turns: shorter than pairs, and small numbers.
Json points_json(const std::vector<ReportPoint>& points) {
    Json flat = Json::array();
    std::int64_t before = 0;
    for (const ReportPoint& point : points) {
        flat.push_back(point.seconds - before);
        flat.push_back(point.value);
        before = point.seconds;
    }
    return flat;
}

// What `explain --json` says of the server, with the points of every count, and what the table of
// all servers leaves out.
Json details_json(const ReportServer& s) {
    Json details = {{"warnings", s.warnings}, {"notes", s.notes}, {"period", s.period}};
    if (s.header) {
        details["machine"] = s.header->machine;
        details["kernel"] = s.header->kernel;
        details["page_size"] = s.header->page_size;
        details["start"] = utc_text(s.header->start);
    }
    if (s.explanation) {
        details["explanation"] = explanation_json(*s.explanation);
        for (std::size_t i = 0; i < s.points.size(); ++i) {
            details["explanation"]["counts"][i]["points"] = points_json(s.points[i]);
        }
    }
    return details;
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
