#include "plan/recording/recording_files.h"

#include <utility>

#include "plan/recording/file_lines.h"
#include "plan/recording/format.h"

Kiln::Result<NamedRecording> read_recording(const std::string& path, std::uint64_t most_bytes) {
    FileLines lines(Kiln::open_plain_file(path), most_bytes);
    RecordingParser parser;
    for (std::string_view line = lines.next(); !line.empty(); line = lines.next()) {
        if (const Kiln::Done taken = parser.take(line); !taken) {
            return Kiln::Reason{path + ": " + taken.reason()};
        }
    }
    // Before what was read is judged: a file that broke off is not a short one.
    if (!lines.trouble().empty()) {
        return Kiln::Reason{path + " cannot be read: " + lines.trouble()};
    }
    Kiln::Result<Recording> parsed = parser.finish();
    if (!parsed) {
        return Kiln::Reason{path + ": " + parsed.reason()};
    }
    return NamedRecording{path, std::move(*parsed)};
}
