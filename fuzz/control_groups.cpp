// The files of a control group, and what is said of them.
#include <nlohmann/json.hpp>

#include "fuzz/support.h"
#include "plan/verify/verdict.h"

// Sections in the order of these names.
constexpr const char* names[] = {
    "memory.max",      "memory.high",        "memory.current", "memory.events", "memory.swap.max",
    "memory.pressure", "memory.swap.events", "pids.max",       "pids.current",  "pids.events",
    "cpu.max",         "cpu.stat",           "memory.peak",    "cpu.weight"};

void try_input(fuzz::Input input) {
    GroupFiles files;
    files.path = "/sys/fs/cgroup/a.slice";
    const std::vector<std::string> texts = input.sections(std::size(names));
    for (std::size_t i = 0; i < texts.size(); ++i) {
        if (!texts[i].empty()) {
            files.texts[names[i]] = texts[i];
        }
    }
    const GroupVerdict verdict = judge(parse_control_group(files));
    require(!verdict.all_fit || verdict.raise.empty(), "nothing to raise where all fit");
    require(nlohmann::json::accept(verdict_json(verdict)), "the verdict is JSON");
    const std::string text = verdict_text(verdict);
    require(!text.empty() && text.back() == '\n', "lines have their end");
}
