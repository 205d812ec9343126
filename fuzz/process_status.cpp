// Status files of processes, and the rule that adds them up.
#include "calc/process_memory.h"
#include "fuzz/support.h"

// Input: status files, separated by lines that read "%%".
void try_input(fuzz::Input input) {
    constexpr std::size_t most_processes = 8;
    ProcessTables tables;
    std::int32_t pid = 0;
    for (const std::string& status : input.sections(most_processes)) {
        add_process(tables, ++pid, status);
        const proc_info_t& info = tables.processes.at(pid);
        require(info.name.find('\n') == std::string::npos, "a name ends with its line");
        require(info.mappings.empty(), "no mapping is listed");
        require(tables.children.at(info.ppid).back() == pid, "filed under its parent");
    }
    sum_memory(tables);
}
