// The memory of the host's processes: the records that the memory scan keeps, the parser of one
// status file and the rule that adds them up. Pure: no path, no clock, no log.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

// Key of one mapping; ordered by both numbers, signed. No scan fills it yet.
struct map_idx_t {
    std::int64_t inode = 0;
    std::int64_t offset = 0;
};

bool operator<(const map_idx_t& left, const map_idx_t& right);

// What one process's status file says; sizes in KiB.
struct proc_info_t {
    std::vector<map_idx_t> mappings;  // left empty
    std::string name;
    std::int32_t vm_rss = 0;
    std::int32_t vm_lck = 0;
    std::int32_t vm_size = 0;  // without the text of the executable and of the libraries
    std::int32_t ppid = 0;
};

// The processes of one snapshot.
struct ProcessTables {
    std::map<std::int32_t, proc_info_t> processes;
    std::map<std::int32_t, std::vector<std::int32_t>> children;  // by parent, in the order read
};

struct MemoryTotals {
    std::int32_t vm_kib = 0;
    std::int32_t lck_kib = 0;
};

// Stores what the text of a status file says in the record. A field whose line is missing keeps its
// value, one whose line has no value becomes 0.
void parse_process_status(const std::string& text, proc_info_t& info);

// Parses the status and files the process under its id and its parent.
void add_process(ProcessTables& tables, std::int32_t pid, const std::string& status_text);

// The totals over all processes. Children of one parent that all have the same resident size are
// taken to be threads that share one address space, and are counted once. The sums wrap at 32 bits.
MemoryTotals sum_memory(const ProcessTables& tables);
