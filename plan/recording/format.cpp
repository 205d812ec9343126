#include "plan/recording/format.h"

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>
#include <type_traits>

#include "plan/recording/json_text.h"
#include "plan/recording/members.h"
#include "plan/text/utc.h"

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

constexpr const char* format_name = "recording_format";
constexpr const char* continued_name = "continued";
constexpr const char* pass_name = "pass";
constexpr const char* findings_name = "findings";
constexpr const char* check_name = "check";

// ---- Writing ----

template <class Part>
ordered_json object_of(const Part& part);

template <class Value>
ordered_json json_of(const Value& value) {
    if constexpr (std::is_arithmetic_v<Value>) {
        return value;
    } else {
        return object_of(value);
    }
}

ordered_json json_of(const std::string& text) {
    return text_to_json(text);
}

ordered_json json_of(OneShotStep step) {
    return name_of(step);
}

template <class Item>
ordered_json json_of(const std::vector<Item>& items) {
    return list_to_json(items, [](const Item& item) { return json_of(item); });
}

class Writer {
public:
    static constexpr bool is_writer = true;

    explicit Writer(ordered_json& object) : object_(object) {}

    // What a number may be is the reader's affair.
    template <class Value, class... Ranges>
    void operator()(const char* name, const Value& value, const Ranges&... /*ranges*/) {
        object_[name] = json_of(value);
    }

    template <class Value, class... Ranges>
    void operator()(const char* name, const std::optional<Value>& value,
                    const Ranges&... /*ranges*/) {
        if (value) {
            object_[name] = json_of(*value);
        }
    }

    void time(const char* name, std::int64_t seconds) { object_[name] = utc_text(seconds); }

    void counts(const char* name, const SampleCounts& counts, const TakenCounts& taken) {
        ordered_json object = ordered_json::object();
        for (std::size_t place = 0; place < sampled_count_number; ++place) {
            if (taken.test(place)) {
                object[sampled_counts[place].name] = counts[place];
            }
        }
        object_[name] = std::move(object);
    }

private:
    ordered_json& object_;
};

template <class Part>
void add_members(const Part& part, ordered_json& object) {
    Writer writer(object);
    visit(writer, part);
}

template <class Part>
ordered_json object_of(const Part& part) {
    ordered_json object = ordered_json::object();
    add_members(part, object);
    return object;
}

// ---- Reading ----

template <class Part>
void read_object(const json& value, Part& part);

// A whole number; nlohmann would turn a fraction or a truth into one without a word.
template <class Value>
void read_value(const json& value, Value& into, const Range& range) {
    const bool is_integer = value.is_number_integer();
    const bool is_too_large =
        value.is_number_unsigned() &&
        value.get<std::uint64_t>() >
            static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    const std::int64_t number = is_integer && !is_too_large ? value.get<std::int64_t>() : 0;
    if (!is_integer || is_too_large || number < range.least || number > range.most) {
        throw JsonDamage("not a whole number that it can be");
    }
    into = static_cast<Value>(number);
}

template <class Value>
void read_value(const json& value, Value& into) {
    if constexpr (std::is_same_v<Value, bool>) {
        into = value.get<bool>();
    } else if constexpr (std::is_integral_v<Value>) {
        using Limits = std::numeric_limits<Value>;
        read_value(value, into, {std::int64_t{Limits::min()}, std::int64_t{Limits::max()}});
    } else {
        read_object(value, into);
    }
}

void read_value(const json& value, std::string& into) {
    into = text_from_json(value);
}

void read_value(const json& value, OneShotStep& into) {
    const auto name = value.get<std::string>();
    for (const OneShotStepRow& row : one_shot_steps) {
        if (name == row.name) {
            into = row.step;
            return;
        }
    }
    throw JsonDamage("a step that is not known");
}

template <class Item>
void read_value(const json& value, std::vector<Item>& into) {
    if (!value.is_array()) {
        throw JsonDamage("not a list");
    }
    into.clear();
    for (const json& entry : value) {
        read_value(entry, into.emplace_back());
    }
}

// nlohmann's words behind its "[json.exception.type_error.302] ".
std::string words_of(const std::exception& error) {
    const std::string text = error.what();
    const std::size_t end = text.find("] ");
    return text.front() == '[' && end != std::string::npos ? text.substr(end + 2) : text;
}

class Reader {
public:
    static constexpr bool is_writer = false;

    explicit Reader(const json& object) : object_(object) {}

    template <class Value, class... Ranges>
    void operator()(const char* name, Value& value, const Ranges&... ranges) const {
        read(name, [&](const json& found) { read_value(found, value, ranges...); });
    }

    template <class Value, class... Ranges>
    void operator()(const char* name, std::optional<Value>& value, const Ranges&... ranges) const {
        if (object_.contains(name)) {
            (*this)(name, value.emplace(), ranges...);
        }
    }

    void time(const char* name, std::int64_t& seconds) const {
        read(name, [&](const json& found) {
            const std::optional<std::int64_t> time = parse_utc(found.get<std::string>());
            if (!time) {
                throw JsonDamage("not a time");
            }
            seconds = *time;
        });
    }

    void counts(const char* name, SampleCounts& counts, TakenCounts& taken) const {
        read(name, [&](const json& found) {
            if (!found.is_object()) {
                throw JsonDamage("not an object");
            }
            const Reader reader(found);
            for (std::size_t place = 0; place < sampled_count_number; ++place) {
                const char* count = sampled_counts[place].name;
                if (found.contains(count)) {
                    reader(count, counts[place]);
                    taken.set(place);
                }
            }
        });
    }

private:
    // Whatever is wrong with a member is told with its name.
    template <class Read>
    void read(const char* name, Read read_found) const {
        const auto found = object_.find(name);
        if (found == object_.end()) {
            throw JsonDamage("\"" + std::string(name) + "\" is missing");
        }
        try {
            read_found(*found);
        } catch (const std::exception& damage) {
            throw JsonDamage("\"" + std::string(name) + "\": " + words_of(damage));
        }
    }

    const json& object_;
};

template <class Part>
void read_object(const json& value, Part& part) {
    if (!value.is_object()) {
        throw JsonDamage("this is no JSON object");
    }
    Reader reader(value);
    visit(reader, part);
}

template <class Part>
Part part_of(const json& object) {
    Part part;
    read_object(object, part);
    return part;
}

RecordingHeader header_of(const json& line) {
    if (!line.is_object() || !line.contains(format_name)) {
        throw JsonDamage("this is no recording");
    }
    if (line.at(format_name) != recording_format) {
        throw JsonDamage("the format is another one than " + std::to_string(recording_format));
    }
    return part_of<RecordingHeader>(line);
}

RecordedPass pass_of(const json& line) {
    auto pass = part_of<RecordedPass>(line);
    if (!pass.failure && !pass.taken.all()) {
        throw JsonDamage("a count is missing from a pass that did not fail");
    }
    return pass;
}

// A line that is none of these was added by a later program.
void take_line(const json& line, Recording& recording) {
    if (!line.is_object()) {
        throw JsonDamage("this is no JSON object");
    }
    if (line.contains(pass_name)) {
        recording.passes.push_back(pass_of(line));
        recording.summary_is_last = false;
        recording.last_clock_ms = recording.passes.back().clock_ms;
    } else if (line.contains(findings_name)) {
        recording.summary = part_of<Summary>(line);
        recording.summary_is_last = true;
        recording.last_clock_ms = recording.summary->clock_ms;
    } else if (line.contains(check_name)) {
        recording.checks.push_back(part_of<CheckResult>(line));
    } else if (line.contains(continued_name)) {
        recording.continuations.push_back(part_of<Continuation>(line));
        recording.last_clock_ms = recording.continuations.back().clock_ms;
    }
}

// Discarded where the text is no JSON.
json parse_line(std::string_view text) {
    constexpr int most_depth = 32;  // our lines have 5
    const auto limit_depth = [](int depth, json::parse_event_t event, const json& /*value*/) {
        using Event = json::parse_event_t;
        const bool begins = event == Event::array_start || event == Event::object_start;
        if (begins && depth >= most_depth) {
            throw JsonDamage("nested deeper than " + std::to_string(most_depth));
        }
        return true;
    };
    return json::parse(text.begin(), text.end(), limit_depth, false);
}

// What a machine without power leaves.
bool is_blank(std::string_view text) {
    return text.find_first_not_of(std::string_view("\0\n", 2)) == std::string_view::npos;
}

}  // namespace

template <class Part>
std::string part_text(const Part& part) {
    return object_of(part).dump();
}

template <class Part>
Kiln::Result<Part> parse_part(std::string_view text) {
    try {
        return part_of<Part>(parse_line(text));
    } catch (const std::exception& damage) {
        return Kiln::Reason{words_of(damage)};
    }
}

template Kiln::Result<CheckResult> parse_part(std::string_view text);
template Kiln::Result<RecordedPass> parse_part(std::string_view text);
template std::string part_text(const Findings& findings);
template Kiln::Result<Findings> parse_part(std::string_view text);
template std::string part_text(const Hardware& hardware);
template Kiln::Result<Hardware> parse_part(std::string_view text);

// The format comes first: by that a file is known, and a first line that was torn as well.
std::string header_line(const RecordingHeader& header) {
    ordered_json line;
    line[format_name] = recording_format;
    add_members(header, line);
    return line.dump() + "\n";
}

std::string continuation_line(const Continuation& continuation) {
    ordered_json line;
    line[continued_name] = true;
    add_members(continuation, line);
    return line.dump() + "\n";
}

std::string check_line(const CheckResult& check) {
    return part_text(check) + "\n";
}

std::string pass_line(const RecordedPass& pass) {
    return part_text(pass) + "\n";
}

std::string summary_line(const Summary& summary) {
    return part_text(summary) + "\n";
}

// A torn line is damage as soon as another one follows.
void RecordingParser::take(std::string_view line) {
    is_blank_ = is_blank_ && is_blank(line);
    if (is_torn_ && !is_blank_) {
        throw JsonDamage("this is not JSON");
    }
    number_ += is_torn_ ? 0 : 1;
    is_torn_ = is_blank_ || line.back() != '\n';
    is_header_missing_ = number_ == 1 && is_torn_header(line);
    if (is_torn_) {
        return;
    }
    const json object = parse_line(line.substr(0, line.size() - 1));
    is_torn_ = object.is_discarded() && number_ > 1;
    if (object.is_discarded() && !is_torn_) {
        throw JsonDamage("this is not JSON");
    }
    if (number_ == 1) {
        recording_.header = header_of(object);
    } else if (!is_torn_) {
        take_line(object, recording_);
    }
    recording_.whole_size += is_torn_ ? 0 : line.size();
}

Kiln::Done RecordingParser::take_lines(std::string_view& text, bool is_end) {
    try {
        while (!text.empty()) {
            const std::size_t end = text.find('\n');
            if (end == std::string_view::npos && !is_end) {
                break;
            }
            const std::size_t size = std::min(end, text.size() - 1) + 1;
            take(text.substr(0, size));
            text.remove_prefix(size);
        }
        return {};
    } catch (const std::exception& damage) {
        return Kiln::Reason{"line " + std::to_string(number_) + ": " + words_of(damage)};
    }
}

Kiln::Result<Recording> RecordingParser::finish() {
    if (is_header_missing_) {
        return Kiln::Reason{"its first line was never written"};
    }
    if (recording_.whole_size == 0) {
        return Kiln::Reason{"line 1: this is no recording"};
    }
    recording_.torn = is_torn_;
    return std::move(recording_);
}

Kiln::Result<Recording> parse_recording(std::string_view text) {
    RecordingParser parser;
    const Kiln::Done taken = parser.take_lines(text, true);
    return taken ? parser.finish() : Kiln::Reason{taken.reason()};
}

bool begins_like_recording(std::string_view text) {
    const std::string_view line = text.substr(0, text.find('\n'));
    return !line.empty() && line[0] == '{' &&
           line.find("\"" + std::string(format_name) + "\"") != std::string_view::npos;
}

bool is_torn_header(std::string_view text) {
    if (is_blank(text)) {
        return true;
    }
    const std::string begin = "{\"" + std::string(format_name) + "\":";
    const std::size_t size = std::min(text.size(), begin.size());
    return text.find('\n') == std::string_view::npos &&
           text.substr(0, size) == begin.substr(0, size);
}
