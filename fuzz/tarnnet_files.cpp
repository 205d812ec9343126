// The files that libtarnnet reads, together as in an inventory: its configuration, the pair-device
// files, the VLAN file and an interface file. The linker puts the functions at the end of this file
// in the place of those that would read the machine's own files.
#include <dirent.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <set>

#include "conf_lists.h"
#include "fuzz/support.h"
#include "netinfo/index.h"
#include "netinfo/kind_sources.h"
#include "netinfo/records.h"
#include "netinfo/single_conf.h"
#include "state.h"
#include "sysconfig.h"
#include "tarnnet.h"

namespace {

enum Section { configuration, veth_file, vmth_file, vlan_file, interface_file, section_count };

std::vector<std::string> texts;

Section section_of(const std::string& path) {
    if (path == "/etc/tarn/tarnnet.conf") {
        return configuration;
    }
    if (path == "/proc/tarn/veth") {
        return veth_file;
    }
    if (path == "/proc/tarn/vmth") {
        return vmth_file;
    }
    return path == "/proc/net/vlan/config" ? vlan_file : interface_file;
}

bool is_library_path(const std::string& path) {
    return path.rfind("/etc/", 0) == 0;
}

void check_records() {
    for (tarnnetif_info* record = netinfo.active; record != nullptr; record = record->next) {
        const std::uint32_t kind = record->type;
        fuzz::require(kind != 0 && (kind & (kind - 1)) == 0 && kind <= IFT_VNIC, "one kind");
        fuzz::require(index_find(record->name, record->veid, kind) == record,
                      "a record is found under its name, container and kind");
        fuzz::require(
            record->network_id == nullptr ||
                network_index_find(record->network_id, record->name, record->veid, kind) == record,
            "and under its network");
        fuzz::require(record->generation >= 0, "no junk among the active records");
    }
}

void check_vlans() {
    for (const list_node* set = vlan_list()->next; set != vlan_list(); set = set->next) {
        auto* entries = &list_entry<iface_set>(const_cast<list_node*>(set))->entries;
        std::set<std::uint32_t> ids;
        for (list_node* node = entries->next; node != entries; node = node->next) {
            fuzz::require(ids.insert(list_entry<vlan_entry>(node)->vlan_id).second,
                          "a device has a VLAN once");
        }
    }
}

void take_inventory() {
    purge_all_generations();
    read_single_conf(TARNNET_EVERYTHING, 0);
    use_origin(0, ORIGIN_LIVE);
    purge_old_generations();
    read_iface_types();
    check_sysconf();
}

}  // namespace

// Input: the five files in the order of the sections.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static tarnnet_info* held = nullptr;  // outlives the next inventory, as a caller's result may
    fuzz::require(init_libtarnnet_state() == 0, "the library starts");
    texts = fuzz::sections(data, size, section_count);
    take_inventory();
    check_records();
    check_vlans();
    tarnnet_release_info_SL(held);
    held = get_cached_info(nullptr);
    fuzz::require(held != nullptr, "memory");
    return 0;
}

// In the place of open_text_file: the section of that path.
extern "C" FILE* __wrap__Z14open_text_filePKc(const char* path) {
    std::string& text = texts[section_of(path)];
    return text.empty() ? nullptr : fmemopen(text.data(), text.size(), "r");
}

// The fuzzer's own files are left alone by these.
extern "C" int __real_stat(const char* path, struct stat* status);
extern "C" int __wrap_stat(const char* path, struct stat* status) {
    if (!is_library_path(path)) {
        return __real_stat(path, status);
    }
    *status = {};
    status->st_mtime = 1;
    return 0;
}

// Every interface has an interface file, and no directory can be listed.
extern "C" int __real_access(const char* path, int mode);
extern "C" int __wrap_access(const char* path, int mode) {
    return is_library_path(path) ? 0 : __real_access(path, mode);
}

extern "C" int __wrap_scandir(const char* /*path*/, dirent*** /*entries*/,
                              int (* /*filter*/)(const dirent*),
                              int (* /*compare*/)(const dirent**, const dirent**)) {
    errno = EACCES;
    return -1;
}
