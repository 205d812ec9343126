#include "calc/process_memory.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "kiln/numbers.h"
#include "kiln/strings.h"

namespace {

// The part of the line from its value on: behind the first run of blanks. Empty without a value.
std::string_view value_of(std::string_view line) {
    std::size_t pos = line.find_first_of(Kiln::blanks_in_line);
    pos = line.find_first_not_of(Kiln::blanks_in_line, pos);  // a search from npos finds nothing
    line.remove_prefix(std::min(pos, line.size()));
    return line;
}

// A copy ends the number at the end of the line: the conversion itself would read on over a
// newline.
std::int32_t number_of(std::string_view line) {
    return Kiln::leading_int(std::string(value_of(line)).c_str());
}

bool has_key(std::string_view line, std::string_view key) {
    return line.size() >= key.size() && std::memcmp(line.data(), key.data(), key.size()) == 0;
}

struct TextSizes {
    std::int32_t exe = 0;
    std::int32_t lib = 0;
};

// A key counts at the very start of a line only; the last line of a key decides.
void parse_status_line(std::string_view line, proc_info_t& info, TextSizes& text_sizes) {
    if (has_key(line, "PPid:")) {
        info.ppid = number_of(line);
    } else if (has_key(line, "VmRSS:")) {
        info.vm_rss = number_of(line);
    } else if (has_key(line, "VmLck:")) {
        info.vm_lck = number_of(line);
    } else if (has_key(line, "VmSize:")) {
        info.vm_size = number_of(line);
    } else if (has_key(line, "VmExe:")) {
        text_sizes.exe = number_of(line);
    } else if (has_key(line, "VmLib:")) {
        text_sizes.lib = number_of(line);
    } else if (has_key(line, "Name:")) {
        info.name = value_of(line);
    }
}

// Whether the processes look like the threads of one program.
bool share_one_size(const ProcessTables& tables, const std::vector<std::int32_t>& pids) {
    const std::int32_t rss = tables.processes.at(pids.front()).vm_rss;
    return std::all_of(pids.begin(), pids.end(),
                       [&](std::int32_t pid) { return tables.processes.at(pid).vm_rss == rss; });
}

void add_memory(MemoryTotals& totals, const proc_info_t& info) {
    totals.vm_kib = Kiln::wrap_add(totals.vm_kib, info.vm_size);
    totals.lck_kib = Kiln::wrap_add(totals.lck_kib, info.vm_lck);
}

}  // namespace

bool operator<(const map_idx_t& left, const map_idx_t& right) {
    return left.inode < right.inode || (left.inode == right.inode && left.offset < right.offset);
}

// Name:	sshd
// PPid:	1
// VmSize:	   15436 kB
// VmLck:	       0 kB
// VmRSS:	    9216 kB
// VmExe:	     600 kB
// VmLib:	   10136 kB
void parse_process_status(const std::string& text, proc_info_t& info) {
    TextSizes text_sizes;
    std::string_view rest(text);
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        parse_status_line(rest.substr(0, end), info, text_sizes);
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
    info.vm_size = Kiln::wrap_sub(Kiln::wrap_sub(info.vm_size, text_sizes.exe), text_sizes.lib);
}

void add_process(ProcessTables& tables, std::int32_t pid, const std::string& status_text) {
    proc_info_t& info = tables.processes[pid];
    parse_process_status(status_text, info);
    tables.children[info.ppid].push_back(pid);
}

MemoryTotals sum_memory(const ProcessTables& tables) {
    MemoryTotals totals;
    for (const auto& [parent, pids] : tables.children) {
        if (share_one_size(tables, pids)) {
            // Unrelated siblings of equal size are counted once as well; that is the rule.
            add_memory(totals, tables.processes.at(pids.front()));
            continue;
        }
        for (const std::int32_t pid : pids) {
            add_memory(totals, tables.processes.at(pid));
        }
    }
    return totals;
}
