#include "plan/report_sources.h"

#include <algorithm>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

constexpr const char* recording_ending = ".jsonl";
constexpr const char* failure_ending = ".failed";

ReportSource source_of(const fs::path& path) {
    return {path.string(), path.stem().string(), path.extension() == failure_ending};
}

std::string add_folder(const std::string& folder, std::vector<ReportSource>& sources) {
    std::error_code error;
    std::vector<ReportSource> found;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        const fs::path ending = at->path().extension();
        if (ending == recording_ending || ending == failure_ending) {
            found.push_back(source_of(at->path()));
        }
    }
    std::sort(found.begin(), found.end(),
              [](const ReportSource& a, const ReportSource& b) { return a.path < b.path; });
    sources.insert(sources.end(), found.begin(), found.end());
    return error ? folder + " cannot be read: " + error.message() : "";
}

}  // namespace

std::string find_report_sources(const std::vector<std::string>& paths,
                                std::vector<ReportSource>& sources) {
    for (const std::string& path : paths) {
        std::error_code ignored;
        if (!fs::is_directory(path, ignored)) {
            sources.push_back(source_of(path));
            continue;
        }
        const std::string error = add_folder(path, sources);
        if (!error.empty()) {
            return error;
        }
    }
    return "";
}
