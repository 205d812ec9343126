#include "plan/report/report_sources.h"

#include <filesystem>
#include <map>
#include <utility>

namespace {

namespace fs = std::filesystem;

// Of a file that was named by hand: whatever is no ending of ours belongs to the name.
std::string server_of(const fs::path& path) {
    const fs::path name = path.extension() == ".jsonl" ? path.stem() : path.filename();
    return name.empty() ? path.string() : name.string();
}

Kiln::Done add_folder(const std::string& folder, std::vector<ReportSource>& sources) {
    std::error_code error;
    std::map<std::string, ReportSource> found;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        const fs::path& path = at->path();
        const std::string name = path.stem().string();
        if (path.extension() == ".jsonl") {
            found[name].recording = path.string();
        } else if (path.extension() == ".failed") {
            found[name].reason = path.string();
        }
    }
    for (auto& [name, source] : found) {
        source.server = name;
        sources.push_back(source);
    }
    if (error) {
        return Kiln::Reason{folder + " cannot be read: " + error.message()};
    }
    return {};
}

}  // namespace

Kiln::Result<std::vector<ReportSource>> find_report_sources(const std::vector<std::string>& paths) {
    std::vector<ReportSource> sources;
    for (const std::string& path : paths) {
        std::error_code ignored;
        if (!fs::is_directory(path, ignored)) {
            sources.push_back({server_of(path), path, ""});
        } else if (const Kiln::Done done = add_folder(path, sources); !done) {
            return Kiln::Reason{done.reason()};
        }
    }
    if (sources.empty()) {
        return Kiln::Reason{"there is neither a NAME.jsonl nor a NAME.failed"};
    }
    return Kiln::Result<std::vector<ReportSource>>(std::move(sources));
}
