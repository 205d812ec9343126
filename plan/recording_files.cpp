#include "plan/recording_files.h"

#include <cstring>
#include <utility>
#include <variant>

#include "kiln/files.h"
#include "plan/messages.h"

Kiln::Result<NamedRecording> read_recording(const std::string& path) {
    std::string text;
    if (const int error = Kiln::get_file(path, text)) {
        return Kiln::Reason{path + " cannot be read: " + std::strerror(error)};
    }
    Kiln::Result<Recording> parsed = parse_recording(text);
    if (const auto* reason = std::get_if<Kiln::Reason>(&parsed)) {
        return Kiln::Reason{path + ": " + reason->text};
    }
    return NamedRecording{path, std::get<Recording>(std::move(parsed))};
}

std::optional<CombinedRecordings> read_and_combine(const std::vector<std::string>& paths) {
    CombinedRecordings read;
    for (const std::string& path : paths) {
        Kiln::Result<NamedRecording> result = read_recording(path);
        if (const auto* reason = std::get_if<Kiln::Reason>(&result)) {
            say(reason->text);
            return {};
        }
        read.recordings.push_back(std::get<NamedRecording>(std::move(result)));
    }
    Kiln::Result<CombinedScan> combined = combine(read.recordings);
    if (const auto* reason = std::get_if<Kiln::Reason>(&combined)) {
        say(reason->text);
        return {};
    }
    read.scan = std::get<CombinedScan>(std::move(combined));
    return read;
}
