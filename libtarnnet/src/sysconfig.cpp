#include "sysconfig.h"

#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include "state.h"
#include "tarnnet.h"
#include "text.h"

namespace tarnnet {

namespace {

constexpr char file_prefix[] = "ifcfg-";
constexpr char boot_key[] = "BOOTPROTO=";
constexpr char device_key[] = "DEVICE=";
constexpr size_t longest_line = 65535;  // characters, a longer line continues as the next one

// Where a path is put together.
struct path_buffer {
    char text[path_size];

    void set(const char* dir, const char* prefix, const char* name) {
        snprintf(text, sizeof(text), "%s/%s%s", dir, prefix, name);
    }
};

bool find_by_name(const char* dir, const char* name, path_buffer* path) {
    path->set(dir, file_prefix, name);
    return access(path->text, F_OK) == 0;
}

size_t leading_letters(const char* name) {
    size_t count = 0;
    while ((name[count] >= 'a' && name[count] <= 'z') ||
           (name[count] >= 'A' && name[count] <= 'Z')) {
        ++count;
    }
    return count;
}

// SUSE may name a file by the hardware address: ifcfg-eth-id-00:16:3e:5e:6c:00.
// The entry whose name contains the hardware address, when there is one only; among several the
// first that also contains the letters which begin the interface name ("eth" of "eth0").
const char* entry_by_hwaddr(const dir_listing& entries, const char* name, const char* hwaddr) {
    const size_t letters = leading_letters(name);
    const char* any = nullptr;
    const char* alike = nullptr;
    int count = 0;
    for (int i = 0; i < entries.count(); ++i) {
        const char* entry = entries.name(i);
        if (!has_prefix(entry, file_prefix) || strstr(entry, hwaddr) == nullptr) {
            continue;
        }
        ++count;
        any = entry;
        const char* rest = entry + strlen(file_prefix);
        if (alike == nullptr && memmem(rest, strlen(rest), name, letters) != nullptr) {
            alike = entry;
        }
    }
    return count == 1 ? any : alike;
}

bool find_by_hwaddr(const char* name, uint32_t kind, const char* hwaddr, path_buffer* path) {
    if (hwaddr == nullptr || *hwaddr == '\0' || kind == IFT_VLAN) {
        return false;
    }
    const dir_listing entries(state.host.network_dir);
    const char* entry = entry_by_hwaddr(entries, name, hwaddr);
    if (entry != nullptr) {
        path->set(state.host.network_dir, "", entry);
    }
    return entry != nullptr;
}

bool file_names_device(const char* path, const char* name) {
    text_file file(path);
    while (const char* line = file.next_line(longest_line)) {
        if (ifcfg_line_names_device(line, name)) {
            return true;
        }
    }
    return false;
}

bool find_by_device(const char* name, path_buffer* path) {
    const dir_listing entries(state.host.scripts_dir);
    for (int i = 0; i < entries.count(); ++i) {
        const char* entry = entries.name(i);
        // By its bare name, so it is sought in the working directory and not in the one listed: who
        // starts the program decides whether device lines count. Not to be mended.
        if (has_prefix(entry, file_prefix) && file_names_device(entry, name)) {
            path->set(state.host.scripts_dir, "", entry);
            return true;
        }
    }
    return false;
}

bool find_path(const char* name, uint32_t kind, const char* hwaddr, path_buffer* path) {
    if (find_by_name(state.host.scripts_dir, name, path) ||
        find_by_name(state.host.network_dir, name, path)) {
        return true;
    }
    return state.suse ? find_by_hwaddr(name, kind, hwaddr, path) : find_by_device(name, path);
}

}  // namespace

// BOOTPROTO='dhcp4'
// Blanks in front do not matter, and the word counts wherever it stands behind the "=".
bool ifcfg_line_asks_dhcp(const char* line) {
    while (is_space(*line)) {
        ++line;
    }
    return has_prefix(line, boot_key) && strstr(line + strlen(boot_key), "dhcp") != nullptr;
}

// DEVICE=eth0
// Another name may begin alike (eth01), and a name in quotes is not found.
bool ifcfg_line_names_device(const char* line, const char* name) {
    if (!has_prefix(line, device_key)) {
        return false;
    }
    const char* value = line + strlen(device_key);
    if (!has_prefix(value, name)) {
        return false;
    }
    const char end = value[strlen(name)];
    return end == '\0' || is_space(end);
}

owned_text find_sysconfig(const char* name, uint32_t kind, const char* hwaddr) {
    path_buffer path;
    const bool found = name != nullptr && find_path(name, kind, hwaddr, &path);
    return owned_text(found ? strdup(path.text) : nullptr);
}

size_t count_dhcp_lines(const char* path) {
    size_t count = 0;
    text_file file(path);
    while (const char* line = file.next_line(longest_line)) {
        count += ifcfg_line_asks_dhcp(line) ? 1U : 0U;
    }
    return count;
}

bool has_sysconfig() {
    return access(state.host.scripts_dir, F_OK) == 0 || access(state.host.network_dir, F_OK) == 0;
}

}  // namespace tarnnet
