#include "plan/report/report_table.h"

#include <algorithm>
#include <array>
#include <vector>

#include "kiln/strings.h"
#include "plan/text/printable.h"
#include "plan/text/wrapped.h"

namespace {

// ---- For a spreadsheet ----

std::string csv_cell(const std::string& text) {
    std::string cell = printable(text);
    if (!cell.empty() && std::string("=+-@").find(cell[0]) != std::string::npos) {
        cell.insert(0, "'");
    }
    if (cell.find_first_of("\",;") == std::string::npos) {
        return cell;
    }
    std::string quoted = "\"";
    for (const char c : cell) {
        quoted.append(c == '"' ? 2 : 1, c);
    }
    return quoted + "\"";
}

std::string csv_cell(std::optional<std::uint64_t> number) {
    return number ? std::to_string(*number) : "";
}

std::string csv_row(const ReportServer& s) {
    const Coverage none;
    const Coverage& shown = s.explanation ? s.explanation->coverage : none;
    const auto known = [&](std::int64_t number) {
        return s.explanation ? std::to_string(number) : std::string();
    };
    const std::string cells[] = {
        csv_cell(s.name),
        name_of(s.state),
        csv_cell(Kiln::join("; ", Kiln::split("\n", s.reason, 0))),
        csv_cell(s.memory_limit),
        csv_cell(s.disk),
        csv_cell(s.processes),
        csv_cell(s.descriptors),
        s.explanation ? grade_name(shown.grade) : "",
        known(shown.taken),
        known(shown.planned),
        known(shown.longest_gap_ms / 1000),
        std::to_string(s.warnings.size()),
        csv_cell(Kiln::join("; ", s.warnings)),
        csv_cell(s.host),
    };
    return Kiln::join(",", cells) + "\r\n";
}

// ---- For a terminal ----

constexpr std::size_t column_count = 8;
using Row = std::array<std::string, column_count>;

// A longer name stands in a line of its own, so that the table fits 80 columns.
constexpr std::size_t longest_name = 17;

constexpr std::array<bool, column_count> to_the_right = {false, false, true,  true,
                                                         true,  true,  false, true};

template <class Number, class Text>
std::string known_or_dash(const std::optional<Number>& number, Text text) {
    return number ? text(*number) : "-";
}

std::string plain(std::uint64_t number) {
    return std::to_string(number);
}
std::string of_bytes(std::uint64_t bytes) {
    return size_text(static_cast<double>(bytes));
}
std::string of_kib(std::uint64_t kib) {
    return size_text(static_cast<double>(kib) * 1024);
}

Row text_row(const ReportServer& s) {
    return {printable(s.name),
            name_of(s.state),
            known_or_dash(s.memory_limit, of_bytes),
            known_or_dash(s.disk, of_kib),
            known_or_dash(s.processes, plain),
            known_or_dash(s.descriptors, plain),
            s.explanation ? grade_name(s.explanation->coverage.grade) : "-",
            plain(s.warnings.size())};
}

// What is known of one column, added up.
double total(const ReportFleet& fleet, std::optional<std::uint64_t> ReportServer::*column) {
    double sum = 0;
    for (const ReportServer& server : fleet.servers) {
        sum += static_cast<double>((server.*column).value_or(0));
    }
    return sum;
}

std::string whole(double number) {
    std::string text = std::to_string(number);
    return text.substr(0, text.find('.'));
}

Row total_row(const ReportFleet& fleet) {
    std::size_t done = 0;
    std::size_t warnings = 0;
    for (const ReportServer& server : fleet.servers) {
        done += server.state == State::done ? 1 : 0;
        warnings += server.warnings.size();
    }
    return {"total of " + plain(fleet.servers.size()),
            plain(done) + " done",
            size_text(total(fleet, &ReportServer::memory_limit)),
            size_text(total(fleet, &ReportServer::disk) * 1024),
            whole(total(fleet, &ReportServer::processes)),
            whole(total(fleet, &ReportServer::descriptors)),
            "",
            plain(warnings)};
}

std::string aligned(const Row& row, const std::array<std::size_t, column_count>& widths) {
    std::string line;
    for (std::size_t i = 0; i < column_count; ++i) {
        const std::string padding(widths[i] - columns_of(row[i]), ' ');
        line += i == 0 ? "" : "  ";
        line += to_the_right[i] ? padding + row[i] : row[i] + padding;
    }
    return line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
}

// What it calls itself where that is another name, the reasons and the warnings.
std::string remarks(const ReportServer& server) {
    const std::string indent(4, ' ');
    std::string text;
    if (!server.host.empty() && server.host != server.name) {
        text += wrapped("it calls itself " + printable(server.host), indent, indent);
    }
    for (const std::string& reason : Kiln::split("\n", server.reason, 0)) {
        text += wrapped(printable(reason), indent, indent + "  ");
    }
    for (const std::string& warning : server.warnings) {
        text += wrapped(printable(warning), indent, indent + "  ");
    }
    return text;
}

// A row whose name is cut off if that stands above.
std::string server_text(Row row, const std::array<std::size_t, column_count>& widths) {
    if (columns_of(row[0]) <= longest_name) {
        return aligned(row, widths);
    }
    const std::string name = row[0] + "\n";
    row[0].clear();
    return name + aligned(row, widths);
}

}  // namespace

std::string csv_table(const ReportFleet& fleet) {
    std::string table =
        "server,state,reason,memory_limit_bytes,disk_kib,processes,descriptors,coverage,passes,"
        "planned_passes,longest_gap_seconds,warnings,warning_texts,host\r\n";
    for (const ReportServer& server : fleet.servers) {
        table += csv_row(server);
    }
    return table;
}

std::string text_table(const ReportFleet& fleet) {
    std::vector<Row> rows = {
        {"SERVER", "STATE", "MEMORY", "DISK", "PROCS", "FILES", "COVERAGE", "WARN"}};
    for (const ReportServer& server : fleet.servers) {
        rows.push_back(text_row(server));
    }
    rows.push_back(total_row(fleet));
    std::array<std::size_t, column_count> widths{};
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < column_count; ++i) {
            const std::size_t width = columns_of(row[i]);
            widths[i] = i == 0 && width > longest_name ? widths[i] : std::max(widths[i], width);
        }
    }
    std::string text = aligned(rows.front(), widths);
    for (std::size_t i = 0; i < fleet.servers.size(); ++i) {
        text += server_text(rows[i + 1], widths) + remarks(fleet.servers[i]);
    }
    return text + aligned(rows.back(), widths);
}
