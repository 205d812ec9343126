// The distribution step: asks a detection script which distribution the host runs.
#include <unistd.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "calc/tarn_hwcalc.h"
#include "kiln/caller_exec.h"
#include "kiln/connector.h"
#include "kiln/environment.h"
#include "kiln/error.h"
#include "kiln/strings.h"

namespace {

// The doubled slash is meant: the warning shows the path as it stands.
constexpr const char* default_script = "/tmp//usr/local/share/tarnp2v/distdetect-common.sh";

constexpr std::int32_t distribution_warning_code = 0;

// Runs the script and stores its answer, without any blanks. Returns false, with `answer`
// unchanged, when it cannot be run or does not exit with 0.
bool ask_script(const std::string& script, std::string& answer) {
    Kiln::CtoDynaBuf output(std::numeric_limits<unsigned long>::max(), true, nullptr, -1);
    std::vector<Kiln::Connector*> connectors = {nullptr, &output, nullptr};
    Kiln::CallerExec caller("sh", {script}, Kiln::current_environment(), {"", false});
    try {
        caller.call(connectors);
    } catch (const Kiln::Error&) {
        return false;  // the next script may do better; a missing answer is reported once
    }
    if (caller.getStatus() != 0) {
        return false;
    }
    Kiln::collapse(output.buffer);
    answer = output.buffer;
    return true;
}

std::string missing_answer_text(bool found_any, const std::vector<std::string>& scripts) {
    if (found_any) {
        return "OS distribution was not detected. It must be manually set.";
    }
    return "OS distribution detection script (" + Kiln::join(", ", scripts.begin(), scripts.end()) +
           ") was not found. The DISTRIBUTION parameter of the CT config must be set manually.";
}

}  // namespace

std::string TarnHWCalc::getDistribution(Warnings& warnings) const {
    std::vector<std::string> scripts = dist_detect_scripts;
    scripts.emplace_back(default_script);
    bool found_any = false;
    std::string distribution;
    for (const std::string& script : scripts) {
        if (access(script.c_str(), F_OK) != 0) {
            continue;
        }
        found_any = true;
        if (ask_script(script, distribution)) {
            break;  // an empty answer ends the search as well
        }
    }
    if (distribution.empty()) {
        warnings.push_back({distribution_warning_code, missing_answer_text(found_any, scripts)});
    }
    return distribution;
}
