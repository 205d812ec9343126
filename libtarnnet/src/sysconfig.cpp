#include "sysconfig.h"

#include <dirent.h>
#include <errno.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "netinfo/records.h"
#include "state.h"
#include "tarnnet.h"
#include "text.h"

namespace {

constexpr const char* scripts_dir = "/etc/sysconfig/network-scripts";
constexpr const char* network_dir = "/etc/sysconfig/network";
constexpr const char* file_prefix = "ifcfg-";
constexpr const char* boot_key = "BOOTPROTO=";
constexpr const char* device_key = "DEVICE=";
constexpr size_t path_size = 512;
constexpr size_t line_size = 65536;  // a longer line continues as the next one

// The interface files of a directory, in alphabetical order. A directory that is missing is known
// to be empty; one that cannot be listed is not known.
struct ifcfg_listing {
    bool listed;  // whether it was tried
    bool known;
    int count;
    struct dirent** entries;
};

// A line that names a device, and the file that it was found in.
struct device_line {
    const char* entry;  // lies in the listing
    char* line;         // owned
};

// What the lookups of one pass over the interfaces share, so that a thousand of them list the
// directories and read the files once. Each part is filled when it is first asked for.
struct ifcfg_pass {
    struct ifcfg_listing scripts;
    struct ifcfg_listing network;
    bool devices_read;
    size_t device_count;
    struct device_line* devices;
};

int is_ifcfg(const struct dirent* entry) {
    return has_prefix(entry->d_name, file_prefix);
}

struct ifcfg_listing* listing_of(struct ifcfg_listing* listing, const char* dir) {
    if (!listing->listed) {
        listing->listed = true;
        listing->count = scandir(dir, &listing->entries, is_ifcfg, alphasort);
        listing->known = listing->count >= 0 || errno == ENOENT || errno == ENOTDIR;
        if (listing->count < 0) {
            listing->count = 0;
            listing->entries = nullptr;
        }
    }
    return listing;
}

void free_listing(struct ifcfg_listing* listing) {
    for (int i = 0; i < listing->count; ++i) {
        free(listing->entries[i]);
    }
    free(listing->entries);
}

void free_pass(struct ifcfg_pass* pass) {
    for (size_t i = 0; i < pass->device_count; ++i) {
        free(pass->devices[i].line);
    }
    free(pass->devices);
    free_listing(&pass->scripts);
    free_listing(&pass->network);
}

int compare_entries(const void* left, const void* right) {
    auto** a = static_cast<const struct dirent**>(const_cast<void*>(left));
    auto** b = static_cast<const struct dirent**>(const_cast<void*>(right));
    return alphasort(a, b);
}

// Whether a listing rules the file out, which saves asking for it. Only a plain name that fits an
// entry can be looked up; a listed one is still asked for, as it may be a dangling link.
bool rules_out(const struct ifcfg_listing* listing, const char* name) {
    struct dirent wanted = {};
    const size_t length = strlen(file_prefix) + strlen(name);
    if (!listing->known || length >= sizeof(wanted.d_name) || strchr(name, '/') != nullptr) {
        return false;
    }
    if (listing->count == 0) {
        return true;
    }
    snprintf(wanted.d_name, sizeof(wanted.d_name), "%s%s", file_prefix, name);
    const struct dirent* key = &wanted;
    return bsearch(&key, listing->entries, static_cast<size_t>(listing->count), sizeof(void*),
                   compare_entries) == nullptr;
}

bool has_file(struct ifcfg_listing* listing, const char* dir, const char* name) {
    if (rules_out(listing_of(listing, dir), name)) {
        return false;
    }
    char path[path_size];
    snprintf(path, sizeof(path), "%s/%s%s", dir, file_prefix, name);
    return access(path, F_OK) == 0;
}

char* make_path(const char* dir, const char* prefix, const char* name) {
    char path[path_size];
    snprintf(path, sizeof(path), "%s/%s%s", dir, prefix, name);
    return strdup(path);
}

size_t leading_letters(const char* name) {
    size_t count = 0;
    while ((name[count] >= 'a' && name[count] <= 'z') ||
           (name[count] >= 'A' && name[count] <= 'Z')) {
        ++count;
    }
    return count;
}

// The entry whose name contains the hardware address, when there is one only; among several the
// first that also contains the letters which begin the interface name ("eth" of "eth0").
const char* entry_by_hwaddr(const struct ifcfg_listing* listing, const char* name,
                            const char* hwaddr) {
    const size_t letters = leading_letters(name);
    const char* any = nullptr;
    const char* alike = nullptr;
    int count = 0;
    for (int i = 0; i < listing->count; ++i) {
        const char* entry = listing->entries[i]->d_name;
        if (strstr(entry, hwaddr) == nullptr) {
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

// Without memory the line is left out.
void keep_device_line(struct ifcfg_pass* pass, const char* entry, const char* line) {
    auto* grown = static_cast<struct device_line*>(
        realloc(pass->devices, (pass->device_count + 1) * sizeof(*pass->devices)));
    if (grown == nullptr) {
        return;
    }
    pass->devices = grown;
    char* copy = strdup(line);
    if (copy != nullptr) {
        grown[pass->device_count++] = {entry, copy};
    }
}

void read_device_lines(struct ifcfg_pass* pass, const char* entry) {
    // By its bare name, so it is sought in the working directory and not in the one listed.
    // Deliberate: not to be mended.
    FILE* file = open_text_file(entry);
    if (file == nullptr) {
        return;
    }
    char line[line_size];
    while (fgets(line, sizeof(line), file) != nullptr) {
        if (has_prefix(line, device_key)) {
            keep_device_line(pass, entry, line);
        }
    }
    fclose(file);
}

const char* entry_by_device(struct ifcfg_pass* pass, const char* name) {
    if (!pass->devices_read) {
        pass->devices_read = true;
        const struct ifcfg_listing* scripts = listing_of(&pass->scripts, scripts_dir);
        for (int i = 0; i < scripts->count; ++i) {
            read_device_lines(pass, scripts->entries[i]->d_name);
        }
    }
    for (size_t i = 0; i < pass->device_count; ++i) {
        if (ifcfg_line_names_device(pass->devices[i].line, name)) {
            return pass->devices[i].entry;
        }
    }
    return nullptr;
}

char* find_on_suse(struct ifcfg_pass* pass, const char* name, uint32_t kind, const char* hwaddr) {
    if (hwaddr == nullptr || *hwaddr == '\0' || kind == IFT_VLAN) {
        return nullptr;
    }
    const char* entry = entry_by_hwaddr(listing_of(&pass->network, network_dir), name, hwaddr);
    return entry != nullptr ? make_path(network_dir, "", entry) : nullptr;
}

char* find_in_pass(struct ifcfg_pass* pass, const char* name, uint32_t kind, const char* hwaddr) {
    if (name == nullptr) {
        return nullptr;
    }
    if (has_file(&pass->scripts, scripts_dir, name)) {
        return make_path(scripts_dir, file_prefix, name);
    }
    if (has_file(&pass->network, network_dir, name)) {
        return make_path(network_dir, file_prefix, name);
    }
    if (libtarnnet_state.suse) {
        return find_on_suse(pass, name, kind, hwaddr);
    }
    const char* entry = entry_by_device(pass, name);
    return entry != nullptr ? make_path(scripts_dir, "", entry) : nullptr;
}

// Every line that asks for DHCP counts. The record is named, not pointed at: the first mark
// replaces it by another one.
void mark_dhcp(const char* name, const char* path) {
    FILE* file = open_text_file(path);
    if (file == nullptr) {
        return;
    }
    char line[line_size];
    while (fgets(line, sizeof(line), file) != nullptr) {
        if (ifcfg_line_asks_dhcp(line)) {
            update_tarnnetif_info(name, 0, IFU_CONF_ADDRESSES, text_value("dhcp"));
        }
    }
    fclose(file);
}

}  // namespace

//   BOOTPROTO='dhcp4'
bool ifcfg_line_asks_dhcp(const char* line) {
    while (is_space(*line)) {
        ++line;
    }
    return has_prefix(line, boot_key) && strstr(line + strlen(boot_key), "dhcp") != nullptr;
}

// DEVICE=eth0
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

char* find_sysconfig(const char* name, uint32_t kind, const char* hwaddr) {
    struct ifcfg_pass pass = {};
    char* path = find_in_pass(&pass, name, kind, hwaddr);
    free_pass(&pass);
    return path;
}

int check_sysconf() {
    const struct tarnnet_filter host = {IFT_ALL, nullptr, nullptr, nullptr, 0, 0};
    struct tarnnet_info* snapshot = get_cached_info(&host);
    if (snapshot == nullptr) {
        return -1;
    }
    struct ifcfg_pass pass = {};
    for (struct tarnnetif_info** record = snapshot->records; *record != nullptr; ++record) {
        const struct tarnnetif_info* found = *record;
        char* path = find_in_pass(&pass, found->name, found->type, found->hwaddr);
        if (path != nullptr) {
            mark_dhcp(found->name, path);
            free(path);
        }
    }
    free_pass(&pass);
    tarnnet_release_info_SL(snapshot);
    return 0;
}
