// Status files of processes, and the rule that adds them up.
#include "calc/process_memory.h"
#include "fuzz/support.h"
#include "kiln/strings.h"

// Input: status files, separated by lines that read "%%".
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t most_processes = 8;
    ProcessTables tables;
    std::int32_t pid = 0;
    for (const std::string& status : fuzz::sections(data, size, most_processes)) {
        add_process(tables, ++pid, status);
        const proc_info_t& info = tables.processes.at(pid);
        fuzz::require(info.name.find('\n') == std::string::npos, "a name ends with its line");
        fuzz::require(info.mappings.empty(), "no mapping is listed");
        fuzz::require(tables.children.at(info.ppid).back() == pid, "filed under its parent");
    }
    sum_memory(tables);
    return 0;
}
