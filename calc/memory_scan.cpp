// The memory scan: one snapshot of the virtual and locked memory of every process.
#include <dirent.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "calc/process_memory.h"
#include "calc/tarn_hwcalc.h"
#include "kiln/files.h"

namespace {

constexpr std::int32_t kib_per_page = 4;  // the profile counts pages of 4 KiB

struct DirCloser {
    void operator()(DIR* dir) const { closedir(dir); }
};
using DirPtr = std::unique_ptr<DIR, DirCloser>;

// Whether the whole name is a decimal number, as strtol reads one; stores it.
bool parse_process_id(const char* name, std::int32_t& pid) {
    char* end = nullptr;
    pid = static_cast<std::int32_t>(std::strtoll(name, &end, 10));
    return *end == '\0';
}

std::vector<std::int32_t> list_process_ids(DIR* dir) {
    std::vector<std::int32_t> pids;
    while (const dirent* entry = readdir(dir)) {
        std::int32_t pid = 0;
        if (parse_process_id(entry->d_name, pid)) {
            pids.push_back(pid);
        }
    }
    return pids;
}

// A process whose status cannot be read has ended meanwhile and is left out.
ProcessTables read_processes(const std::vector<std::int32_t>& pids) {
    ProcessTables tables;
    std::string path;  // both keep their room from one process to the next
    std::string text;
    for (const std::int32_t pid : pids) {
        path.assign("/proc/");
        path.append(std::to_string(static_cast<std::uint32_t>(pid))).append("/status");
        if (Kiln::get_file(path, text) == 0) {
            add_process(tables, pid, text);
        }
    }
    return tables;
}

// The private total cannot be more than the machine has.
std::int32_t cap_at_physical_pages(std::int32_t pages) {
    const long physical_pages = sysconf(_SC_PHYS_PAGES);
    if (physical_pages != -1 && pages > std::int64_t{physical_pages}) {
        return static_cast<std::int32_t>(physical_pages);
    }
    return pages;
}

}  // namespace

int TarnHWCalc::calcMemInfoByVmSize(PhysParams* params) {
    DirPtr dir(opendir("/proc"));
    if (!dir) {
        return setError(ERR_PROC, "Error opening /proc: %s", std::strerror(errno));
    }
    const std::vector<std::int32_t> pids = list_process_ids(dir.get());
    dir.reset();

    const MemoryTotals totals = sum_memory(read_processes(pids));
    set_max(params->privvmpages, cap_at_physical_pages(totals.vm_kib / kib_per_page));
    set_max(params->lockedpages, totals.lck_kib / kib_per_page);
    return 0;
}
