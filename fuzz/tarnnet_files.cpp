// The files and directories that libtarnnet reads, together as in an inventory: its configuration,
// the pair-device files, the VLAN file, interface files and the bridges. They lie in a directory of
// their own, in memory.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "conf_lists.h"
#include "fuzz/library_support.h"
#include "netinfo/kind_sources.h"
#include "netinfo/live_read.h"
#include "netinfo/single_conf.h"
#include "sysconfig.h"

using namespace tarnnet;

namespace {

namespace fs = std::filesystem;

constexpr std::size_t most_tree_lines = 12;

// The files of the input, in its order, then its tree and the text of every interface file.
enum Section {
    configuration,
    veth_file,
    vmth_file,
    vlan_file,
    file_count,
    tree = file_count,
    interface_file,
    section_count
};

struct Host {
    std::string root;
    std::array<std::string, file_count> files;
    std::string interfaces, scripts, network;
    std::vector<std::string> texts = std::vector<std::string>(section_count);  // as they lie there
};

Host* make_host() {
    auto* host = new Host;
    std::string name = "/dev/shm/tarnnet_files.XXXXXX";
    host->root = mkdtemp(name.data());
    host->files = {host->root + "/conf", host->root + "/veth", host->root + "/vmth",
                   host->root + "/vlan"};
    host->interfaces = host->root + "/tree/net";
    host->scripts = host->root + "/tree/scripts";
    host->network = host->root + "/tree/network";
    state.host.configuration = host->files[configuration].c_str();
    state.host.pair_devices = host->files[veth_file].c_str();
    state.host.more_pair_devices = host->files[vmth_file].c_str();
    state.host.vlans = host->files[vlan_file].c_str();
    state.host.interfaces = host->interfaces.c_str();
    state.host.scripts_dir = host->scripts.c_str();
    state.host.network_dir = host->network.c_str();
    std::atexit([] { fs::remove_all(fs::path(state.host.configuration).parent_path()); });
    return host;
}

void write(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

bool is_plain_name(const std::string& name) {
    return !name.empty() && name.size() < 64 && name != "." && name != ".." &&
           name.find_first_of(std::string("/\0", 2)) == std::string::npos;
}

// A line of the tree: "b BRIDGE PORT...", or an interface file: "s NAME" in the scripts' directory,
// "n NAME" in the other one. Links ("l NAME") are no files; they are read below.
void make_entry(const Host& host, std::istringstream line) {
    std::string kind, name, port;
    line >> kind >> name;
    if (!is_plain_name(name))
        return;
    if (kind == "s" || kind == "n")
        write((kind == "s" ? host.scripts : host.network) + "/ifcfg-" + name,
              host.texts[interface_file]);
    if (kind == "b") {
        const std::string bridge = host.interfaces + "/" + name;
        fs::create_directories(bridge + "/bridge");
        fs::create_directories(bridge + "/brif");
        while (line >> port && is_plain_name(port))
            write(bridge + "/brif/" + port, "");
    }
}

template <class Use>
void for_tree_lines(const Host& host, const Use& use) {
    std::istringstream lines(host.texts[tree]);
    std::string line;
    for (std::size_t i = 0; i < most_tree_lines && std::getline(lines, line); ++i)
        use(std::istringstream(line));
}

void make_tree(const Host& host) {
    fs::remove_all(host.root + "/tree");
    for (const std::string& dir : {host.interfaces, host.scripts, host.network})
        fs::create_directories(dir);
    for_tree_lines(host, [&](std::istringstream line) { make_entry(host, std::move(line)); });
}

// Only what the input before this one did not leave there already.
void make_files(Host* host, std::vector<std::string> texts) {
    const bool same_tree =
        texts[tree] == host->texts[tree] && texts[interface_file] == host->texts[interface_file];
    std::swap(texts, host->texts);
    for (std::size_t i = 0; i < file_count; ++i) {
        if (texts[i] != host->texts[i] || !fs::exists(host->files[i]))
            write(host->files[i], host->texts[i]);
    }
    if (!same_tree || !fs::exists(host->scripts))
        make_tree(*host);
}

void apply_links(const Host& host) {
    for_tree_lines(host, [](std::istringstream line) {
        std::string kind, name;
        line >> kind >> name;
        if (kind != "l" || name.size() >= if_name_size)
            return;
        link_facts facts = {{}, "10.0.0.1/24", "00:11:22:33:44:55", 1};
        std::strcpy(facts.name, name.c_str());
        apply_link_facts(0, &facts);
    });
}

void check_vlans() {
    for (vlan_set& set : configured.vlans) {
        std::set<std::uint32_t> ids;
        for (const vlan_entry& vlan : set.vlans) {
            fuzz::require(ids.insert(vlan.vlan_id).second, "a device has a VLAN once");
        }
    }
}

void take_inventory(const Host& host) {
    purge_all_generations();
    read_single_conf(TARNNET_EVERYTHING, 0);
    use_origin(0, origin_live);
    apply_links(host);
    purge_old_generations();
    read_iface_types();
    // Device lines are read from files in the working directory; the fuzzer's own is another one.
    const fs::path fuzzers_dir = fs::current_path();
    fs::current_path(host.scripts);
    for (const bool suse : {false, true}) {
        state.suse = suse;
        check_sysconf();
    }
    fs::current_path(fuzzers_dir);
}

}  // namespace

// Input: the four files, the tree, the text of the interface files.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Host* const host = make_host();
    static tarnnet_info* held = nullptr;  // outlives the next inventory, as a caller's result may
    fuzz::start_library();
    make_files(host, fuzz::sections(data, size, section_count));
    take_inventory(*host);
    fuzz::check_records();
    check_vlans();
    tarnnet_release_info_SL(held);
    held = get_cached_info(nullptr);
    fuzz::require(held != nullptr, "memory");
    return 0;
}
