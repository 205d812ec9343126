#include "plan/explain/explanation_text.h"

#include "plan/explain/derivation.h"
#include "plan/explain/usage_section.h"
#include "plan/text/printable.h"
#include "plan/text/utc.h"
#include "plan/text/wrapped.h"

namespace {

constexpr std::size_t name_width = 16;
constexpr std::size_t value_width = 30;

// The text in lines, all but the first that far in.
std::string filled(const std::string& first, const std::string& text, std::size_t indent) {
    return wrapped(text, first, std::string(indent, ' '));
}

// "126 processes seen at most, 2026-03-12T14:05:00Z, pass 2"
std::string seen_text(const LineExplanation& line, bool many_recordings) {
    std::string text = "; " + line.seen + " seen";
    if (line.peak) {
        text += " at most, " + utc_text(line.peak->time_ms / 1000) + ", pass " +
                std::to_string(line.peak->pass);
        if (many_recordings) {
            text += " of recording " + std::to_string(line.peak->recording + 1);
        }
    }
    return text;
}

std::string origin_text(const LineExplanation& line) {
    std::string text = name_of(line.basis);
    if (line.basis == Basis::floor) {
        text += " of " + grouped(*line.floor);
    }
    if (line.basis == Basis::derived) {
        text += ": " + line.derivation;
    } else if (line.factor) {
        text += ", times " + factor_text(static_cast<double>(*line.factor));
    }
    if (line.margin) {
        text += ", margin " + factor_text(*line.margin);
    }
    return text;
}

std::string heading_text(const LineExplanation& line) {
    if (line.basis == Basis::missing) {
        return std::string(line.name) + "\n";
    }
    const std::string first =
        padded(line.name, name_width) + padded(printable(line.value), value_width);
    return line.meaning.empty() ? first.substr(0, first.find_last_not_of(' ') + 1) + "\n"
                                : filled(first, line.meaning, name_width);
}

std::string line_text(const LineExplanation& line, bool many_recordings) {
    const std::string indent(name_width, ' ');
    const std::string seen = line.seen.empty() ? "" : seen_text(line, many_recordings);
    std::string text =
        heading_text(line) + filled(indent, printable(origin_text(line) + seen), name_width);
    for (const std::string& remark : line.remarks) {
        text += filled(indent + "! ", printable(remark), name_width + 2);
    }
    for (const std::string& note : line.notes) {
        text += filled(indent, printable(note), name_width);
    }
    return text;
}

}  // namespace

std::string explanation_text(const Explanation& explanation,
                             const std::vector<NamedRecording>& recordings) {
    std::string text = filled("host: ", printable(explanation.host), 2) +
                       "state: " + name_of(explanation.verdict.state) + "\n" +
                       filled("", coverage_in_words(explanation.coverage), 2);
    for (const auto* list : {&explanation.verdict.reasons, &explanation.remarks}) {
        for (const std::string& remark : *list) {
            text += filled("! ", printable(remark), 2);
        }
    }
    text += "\n" + usage_section(explanation.usage, newest_hardware(recordings)) + "\n";
    for (const LineExplanation& line : explanation.lines) {
        text += line_text(line, recordings.size() > 1);
    }
    return text;
}
