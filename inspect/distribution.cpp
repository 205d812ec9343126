#include "inspect/distribution.h"

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>

#include "kiln/caller_exec.h"
#include "kiln/connector.h"
#include "kiln/environment.h"
#include "kiln/error.h"
#include "kiln/paths.h"
#include "kiln/strings.h"

namespace {

constexpr std::int32_t distribution_warning_code = 0;

// What the script prints, without any blanks; nothing when it cannot be run or does not exit with
// 0. It prints a name, such as: debian-12
std::optional<std::string> ask_shell(const std::list<std::string>& arguments) {
    Kiln::CtoDynaBuf output;
    std::vector<Kiln::Connector*> connectors = {nullptr, &output, nullptr};
    try {
        Kiln::CallerExec caller("sh", arguments, Kiln::current_environment(), {"", false});
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

// The script's own name stays what it would be without the way round through the descriptor.
std::optional<std::string> ask_opened_script(int script_fd, const std::string& name) {
    struct Free {
        void operator()(char* text) const { std::free(text); }
    };
    // Our number in it, /proc/123/fd: the shell has descriptors of its own.
    const std::unique_ptr<char, Free> folder(realpath(Kiln::Paths().own_descriptors, nullptr));
    if (!folder) {  // no /proc: its way is nobody else's either
        return ask_shell({name});
    }
    return ask_shell(
        {"-c", ". " + std::string(folder.get()) + "/" + std::to_string(script_fd), name});
}

std::string missing_answer_text(bool found_any, const std::vector<std::string>& scripts) {
    if (found_any) {
        return "OS distribution was not detected. It must be manually set.";
    }
    return "OS distribution detection script (" + Kiln::join(", ", scripts) +
           ") was not found. The DISTRIBUTION parameter of the CT config must be set manually.";
}

void warn_of_no_answer(bool found_any, const std::vector<std::string>& scripts,
                       DistributionFinding& finding) {
    if (finding.name.empty()) {
        finding.warnings.push_back(
            {distribution_warning_code, missing_answer_text(found_any, scripts)});
    }
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
        if (const std::optional<std::string> answer = ask_shell({script})) {
            finding.name = *answer;
            break;  // an empty answer ends the search as well
        }
    }
    warn_of_no_answer(found_any, candidates, finding);
    return finding;
}

DistributionFinding detect_distribution(const Host& host, int script_fd) {
    const bool found = script_fd >= 0;
    DistributionFinding finding;
    if (found) {
        finding.name = ask_opened_script(script_fd, host.paths.detect_script).value_or("");
    }
    warn_of_no_answer(found, {host.paths.detect_script}, finding);
    return finding;
}
