#include "calc/memory_scan.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "calc/host_profile.h"
#include "calc/process_memory.h"
#include "kiln/files.h"
#include "kiln/owners.h"

namespace {

constexpr std::int32_t kib_per_page = 4;  // the profile counts pages of 4 KiB

using ProcessIds = std::vector<std::int32_t>;

// Whether the whole name is a decimal number, as strtol reads one; stores it. Beside the processes
// ("1", "4711") the directory holds "self", "net", "meminfo" and many more.
bool parse_process_id(const char* name, std::int32_t& pid) {
    char* end = nullptr;
    pid = static_cast<std::int32_t>(std::strtoll(name, &end, 10));
    return *end == '\0';
}

Kiln::Reason cannot_list(const std::string& proc) {
    return {"Error opening " + proc + ": " + std::strerror(errno)};
}

// A directory that cannot be read to its end is one that cannot be read.
Kiln::Result<ProcessIds> list_process_ids(const std::string& proc, DIR* directory) {
    ProcessIds pids;
    for (;;) {
        errno = 0;
        const dirent* entry = readdir(directory);
        if (entry == nullptr) {
            break;
        }
        std::int32_t pid = 0;
        if (parse_process_id(entry->d_name, pid)) {
            pids.push_back(pid);
        }
    }
    if (errno != 0) {
        return cannot_list(proc);
    }
    return pids;
}

// A process whose status cannot be read has ended meanwhile and is left out.
ProcessTables read_processes(int proc_fd, const ProcessIds& pids, ProcessObserver* observer) {
    ProcessTables tables;
    std::string text;  // keeps its room from one process to the next
    for (const std::int32_t pid : pids) {
        const std::string path = std::to_string(static_cast<std::uint32_t>(pid)) + "/status";
        const Kiln::Descriptor file = Kiln::open_at_once(proc_fd, path, O_RDONLY);
        text.clear();
        if (file && Kiln::append_rest(file.get(), text) == 0) {
            add_process(tables, pid, text);
            if (observer != nullptr) {
                observer->saw_process(proc_fd, pid, text);
            }
        }
    }
    return tables;
}

// The private total cannot be more than the machine has. The locked one is never capped.
std::int32_t cap_at_physical_pages(std::int32_t pages, std::int64_t physical_pages) {
    const bool too_many = physical_pages != -1 && pages > physical_pages;
    return too_many ? static_cast<std::int32_t>(physical_pages) : pages;
}

}  // namespace

Kiln::Result<MemoryPages> scan_memory(const Host& host, ProcessObserver* observer) {
    const std::string& proc = host.paths.proc;
    const Kiln::Directory directory(opendir(proc.c_str()));
    if (!directory) {
        return cannot_list(proc);
    }
    const Kiln::Result<ProcessIds> pids = list_process_ids(proc, directory.get());
    if (!pids) {
        return Kiln::Reason{pids.reason()};
    }
    const ProcessTables tables = read_processes(dirfd(directory.get()), *pids, observer);
    const MemoryTotals totals = sum_memory(tables);
    return MemoryPages{
        cap_at_physical_pages(totals.vm_kib / kib_per_page, host.physical_pages()),
        totals.lck_kib / kib_per_page,
    };
}

Kiln::Done raise_memory(const Host& host, std::int32_t& privvmpages, std::int32_t& lockedpages,
                        ProcessObserver* observer) {
    const Kiln::Result<MemoryPages> found = scan_memory(host, observer);
    if (!found) {
        return Kiln::Reason{found.reason()};
    }
    raise_to(privvmpages, found->privvmpages);
    raise_to(lockedpages, found->lockedpages);
    return {};
}
