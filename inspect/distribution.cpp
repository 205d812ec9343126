#include "inspect/distribution.h"

#include <unistd.h>

#include <cstdint>
#include <optional>

#include "kiln/caller_exec.h"
#include "kiln/connector.h"
#include "kiln/environment.h"
#include "kiln/error.h"
#include "kiln/strings.h"

namespace {

constexpr std::int32_t distribution_warning_code = 0;

// What the script prints, without any blanks; nothing when it cannot be run or does not exit with
// 0. It prints a name, such as: debian-12
std::optional<std::string> ask_script(const std::string& script) {
    Kiln::CtoDynaBuf output;
    std::vector<Kiln::Connector*> connectors = {nullptr, &output, nullptr};
    try {
        Kiln::CallerExec caller("sh", {script}, Kiln::current_environment(), {"", false});
        caller.call(connectors);
        if (caller.getStatus() != 0) {
            return std::nullopt;
        }
    } catch (const Kiln::Error&) {
        return std::nullopt;  // the next script may do better; a missing answer is reported once
    }
    Kiln::collapse(output.buffer);
    return output.buffer;
}

std::string missing_answer_text(bool found_any, const std::vector<std::string>& scripts) {
    if (found_any) {
        return "OS distribution was not detected. It must be manually set.";
    }
    return "OS distribution detection script (" + Kiln::join(", ", scripts) +
           ") was not found. The DISTRIBUTION parameter of the CT config must be set manually.";
}

}  // namespace

DistributionFinding detect_distribution(const Host& host, const std::vector<std::string>& scripts) {
    std::vector<std::string> candidates = scripts;
    candidates.push_back(host.paths.detect_script);  // the last resort, always tried
    DistributionFinding finding;
    bool found_any = false;
    for (const std::string& script : candidates) {
        if (access(script.c_str(), F_OK) != 0) {
            continue;
        }
        found_any = true;
        if (const std::optional<std::string> answer = ask_script(script)) {
            finding.name = *answer;
            break;  // an empty answer ends the search as well
        }
    }
    if (finding.name.empty()) {
        finding.warnings.push_back(
            {distribution_warning_code, missing_answer_text(found_any, candidates)});
    }
    return finding;
}
