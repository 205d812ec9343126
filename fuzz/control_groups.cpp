// The files of a control group, and what is said of them.
#include <nlohmann/json.hpp>

#include "fuzz/support.h"
#include "plan/verify/verdict.h"

// Sections in the order of the names below.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string> names = {
        "memory.max",         "memory.high",     "memory.current",
        "memory.events",      "memory.swap.max", "memory.pressure",
        "memory.swap.events", "pids.max",        "pids.current",
        "pids.events",        "cpu.max",         "cpu.stat",
        "memory.peak",        "cpu.weight"};
    const std::vector<std::string> texts = fuzz::sections(data, size, names.size());
    GroupFiles files;
    files.path = "/sys/fs/cgroup/a.slice";
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (!texts[i].empty()) {
            files.texts[names[i]] = texts[i];
        }
    }
    const GroupVerdict verdict = judge(parse_control_group(files));
    fuzz::require(!verdict.all_fit || verdict.raise.empty(), "nothing to raise where all fit");
    fuzz::require(nlohmann::json::accept(verdict_json(verdict)), "the verdict is JSON");
    const std::string text = verdict_text(verdict);
    fuzz::require(!text.empty() && text.back() == '\n', "lines have their end");
    return 0;
}
