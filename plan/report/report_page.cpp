#include "plan/report/report_page.h"

#include <cstdint>
#include <new>
#include <nlohmann/json.hpp>

#ifdef TARN_ZLIB
#include <zlib.h>
#endif

#include "kiln/strings.h"
#include "plan/explain/explanation_json.h"
#include "plan/explain/usage_summary.h"
#include "plan/recording/json_text.h"
#include "plan/report/fleet_usage.h"
#include "plan/report/page/page_text.h"
#include "plan/text/utc.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr std::string_view data_place = "@data@";

// Of a quantity of the server, in the unit of base_unit_of(); nothing where it is not known.
template <class Statistic>
Json in_use(const ReportServer& s, UsageQuantity quantity, Statistic statistic) {
    const auto place = static_cast<std::size_t>(quantity);
    if (!s.explanation || !s.explanation->usage[place].peak) {
        return {};
    }
    return base_value(quantity, statistic(s.explanation->usage[place]));
}

// What the table of all servers shows. The rest of a server is a text of its own, which the page
// reads only when the server is opened.
Json row_json(const ReportServer& s) {
    return {{"name", s.name},
            {"host", s.host},
            {"state", name_of(s.state)},
            {"reason", s.reason},
            {"cores",
             in_use(s, UsageQuantity::cores, [](const UsageSummary& u) { return u.percentile; })},
            {"memory_used",
             in_use(s, UsageQuantity::memory, [](const UsageSummary& u) { return u.peak->value; })},
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

// A finer drawing than that of one server: what a new machine must have is read from it.
constexpr std::size_t points_together = 2 * points_per_series;

// All servers together over the wall clock; nothing where none is known.
Json together_json(const ReportFleet& fleet, UsageQuantity quantity,
                   UsageTrack ServerUsage::*track) {
    std::vector<const UsageTrack*> tracks;
    for (const ReportServer& server : fleet.servers) {
        tracks.push_back(&(server.usage.*track));
    }
    const std::optional<FleetUsage> usage = sum_usage(tracks);
    if (!usage) {
        return {};
    }
    const double scale = points_per_unit(quantity);
    const std::int64_t start_ms = usage->sums.front().time_ms;
    std::vector<ReportPoint> points;
    for (const TrackValue& sum : usage->sums) {
        points.push_back({(sum.time_ms - start_ms) / 1000, sum.value});
    }
    return {{"label", label_of(quantity)},
            {"unit", base_unit_of(quantity)},
            {"scale", scale},
            {"servers", usage->servers},
            {"start", utc_text(start_ms / 1000)},
            {"peak",
             {{"value", static_cast<double>(usage->peak.value) / scale},
              {"at_ms", usage->peak.time_ms - start_ms}}},
            {"sum_of_peaks", static_cast<double>(usage->sum_of_peaks) / scale},
            {"points", points_json(thinned(points, points_together))}};
}

Json fleet_json(const ReportFleet& fleet) {
    return {{"title", fleet.title},
            {"generated", fleet.generated_utc},
            {"version", fleet.version},
            {"usage",
             {{"cores", together_json(fleet, UsageQuantity::cores, &ServerUsage::cores_track)},
              {"memory", together_json(fleet, UsageQuantity::memory, &ServerUsage::memory_track)}}},
            {"servers", list_to_json(fleet.servers, row_json)}};
}

Json file_system_json(const FileSystemSize& system) {
    return {{"mount_point", text_to_json(system.mount_point)}, {"size_kib", system.size_kib}};
}

Json hardware_json(const Hardware& hardware) {
    return {{"cpus", optional_json(hardware.cpus)},
            {"memory_kib", optional_json(hardware.memory_kib)},
            {"swap_kib", optional_json(hardware.swap_kib)},
            {"file_systems", list_to_json(hardware.file_systems, file_system_json)}};
}

void add_usage_points(const std::vector<UsagePoints>& charts, Json& usage) {
    for (const UsagePoints& chart : charts) {
        for (Json& quantity : usage) {
            if (quantity["name"] == name_of(chart.quantity)) {
                quantity["scale"] = points_per_unit(chart.quantity);
                quantity["points"] = points_json(chart.points);
            }
        }
    }
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
    if (s.usage.hardware) {
        details["hardware"] = hardware_json(*s.usage.hardware);
    }
    if (s.explanation) {
        details["explanation"] = explanation_json(*s.explanation);
        for (std::size_t i = 0; i < s.points.size(); ++i) {
            details["explanation"]["counts"][i]["points"] = points_json(s.points[i]);
        }
        add_usage_points(s.usage.charts, details["explanation"]["usage"]);
    }
    return details;
}

// Everything beyond ASCII is written as an escape, and bytes that are no UTF-8 are replaced.
std::string text_of(const Json& data) {
    return data.dump(-1, ' ', true, Json::error_handler_t::replace);
}

void append_element(const std::string& id, const char* type, const std::string& content,
                    std::string& page) {
    page +=
        std::string("<script type=\"") + type + "\" id=\"" + id + "\">" + content + "</script>\n";
}

#ifdef TARN_ZLIB

std::string deflated(const std::string& text) {
    uLongf size = compressBound(static_cast<uLong>(text.size()));
    std::string packed(size, '\0');
    // Only a lack of memory can fail, and of that the string above has made sure.
    if (compress2(reinterpret_cast<Bytef*>(&packed[0]), &size,
                  reinterpret_cast<const Bytef*>(text.data()), static_cast<uLong>(text.size()),
                  Z_BEST_COMPRESSION) != Z_OK) {
        throw std::bad_alloc();
    }
    packed.resize(size);
    return packed;
}

std::string base64(const std::string& bytes) {
    constexpr const char* alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::size_t missing = (3 - bytes.size() % 3) % 3;
    const std::string whole = bytes + std::string(missing, '\0');
    std::string text;
    for (std::size_t i = 0; i < whole.size(); i += 3) {
        std::uint32_t three = 0;
        for (const char byte : whole.substr(i, 3)) {
            three = three << 8 | static_cast<unsigned char>(byte);
        }
        for (const unsigned shift : {18U, 12U, 6U, 0U}) {
            text += alphabet[three >> shift & 63U];
        }
    }
    return text.replace(text.size() - missing, missing, missing, '=');
}

#endif

// The data as script elements that no text in it can leave. This one is readable at once.
void append_data(const std::string& id, const Json& data, std::string& page) {
    // Only strings can hold a "<", and there it may be written as an escape.
    append_element(id, "application/json",
                   Kiln::join("\\u003c", Kiln::split("<", text_of(data), -1)), page);
}

// Compressed and in base64; as it is where this program was built without zlib.
void append_packed_data(const std::string& id, const Json& data, std::string& page) {
#ifdef TARN_ZLIB
    append_element(id, "application/zlib", base64(deflated(text_of(data))), page);
#else
    append_data(id, data, page);
#endif
}

}  // namespace

bool has_page() {
    return page_text() != data_place;
}

std::string report_page(const ReportFleet& fleet) {
    const std::size_t at = page_text().find(data_place);
    std::string page(page_text().substr(0, at));
    append_data("fleet", fleet_json(fleet), page);
    for (std::size_t i = 0; i < fleet.servers.size(); ++i) {
        append_packed_data("data-" + std::to_string(i), details_json(fleet.servers[i]), page);
    }
    page += page_text().substr(at + data_place.size());
    return page;
}
