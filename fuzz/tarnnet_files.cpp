// The files and directories that libtarnnet reads, together as in an inventory: its configuration,
// the pair-device files, the VLAN file, interface files and the bridges. They lie in a directory of
// their own, in memory.
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
enum Section { configuration, veths, vmths, vlans, tree, interface_file, section_count };

// Where the library looks: the files, and the directories of the tree.
const struct Place {
    const char** path;
    const char* name;
} places[] = {{&state.host.configuration, "conf"},      {&state.host.pair_devices, "veth"},
              {&state.host.more_pair_devices, "vmth"},  {&state.host.vlans, "vlan"},
              {&state.host.interfaces, "tree/net"},     {&state.host.scripts_dir, "tree/scripts"},
              {&state.host.network_dir, "tree/network"}};

fs::path make_root() {
    char root[] = "/dev/shm/tarnnet_files.XXXXXX";
    require(mkdtemp(root) != nullptr, "a directory");
    for (const Place& place : places) {
        *place.path = strdup((std::string(root) + "/" + place.name).c_str());
    }
    std::atexit([] { fs::remove_all(fs::path(state.host.configuration).parent_path()); });
    return root;
}

void write(const fs::path& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

bool is_plain_name(const std::string& name) {
    return !name.empty() && name.size() < 64 && name != "." && name != ".." &&
           name.find_first_of(std::string("/\0", 2)) == std::string::npos;
}

// The lines of the tree: "b BRIDGE PORT...", an interface file in one or the other directory,
// "s NAME" or "n NAME", and a link, "l NAME".
template <class Use>
void for_entries(const std::string& tree_text, const Use& use) {
    std::istringstream lines(tree_text);
    std::string line;
    for (std::size_t i = 0; i < most_tree_lines && std::getline(lines, line); ++i) {
        std::istringstream words(line);
        std::string kind, name;
        words >> kind >> name;
        use(kind, name, words);
    }
}

void make_tree(const fs::path& root, const std::vector<std::string>& texts) {
    fs::remove_all(root / "tree");
    for (const char* dir :
         {state.host.interfaces, state.host.scripts_dir, state.host.network_dir}) {
        fs::create_directories(dir);
    }
    for_entries(texts[tree], [&](const std::string& kind, const std::string& name, auto& words) {
        if (!is_plain_name(name)) {
            return;
        }
        if (kind == "s" || kind == "n") {
            const char* dir = kind == "s" ? state.host.scripts_dir : state.host.network_dir;
            write(std::string(dir) + "/ifcfg-" + name, texts[interface_file]);
        }
        if (kind == "b") {
            const fs::path bridge = fs::path(state.host.interfaces) / name;
            fs::create_directories(bridge / "bridge");
            fs::create_directories(bridge / "brif");
            for (std::string port; words >> port && is_plain_name(port);) {
                write(bridge / "brif" / port, "");
            }
        }
    });
}

// Only what the input before this one did not leave there already.
void make_files(const fs::path& root, const std::vector<std::string>& texts) {
    static std::vector<std::string> before(section_count);
    const bool same_tree =
        texts[tree] == before[tree] && texts[interface_file] == before[interface_file];
    for (std::size_t i = 0; i < tree; ++i) {
        if (texts[i] != before[i] || !fs::exists(*places[i].path)) {
            write(*places[i].path, texts[i]);
        }
    }
    if (!same_tree || !fs::exists(state.host.scripts_dir)) {
        make_tree(root, texts);
    }
    before = texts;
}

void take_inventory(const std::string& tree_text) {
    purge_all_generations();
    read_single_conf(TARNNET_EVERYTHING, 0);
    use_origin(0, origin_live);
    for_entries(tree_text, [](const std::string& kind, const std::string& name, auto& /*words*/) {
        if (kind == "l" && name.size() < if_name_size) {
            link_facts facts = {{}, "10.0.0.1/24", "00:11:22:33:44:55", 1};
            std::strcpy(facts.name, name.c_str());
            apply_link_facts(0, &facts);
        }
    });
    purge_old_generations();
    read_iface_types();
    // Device lines are read from files in the working directory; the fuzzer's own is another one.
    const fs::path fuzzers_dir = fs::current_path();
    fs::current_path(state.host.scripts_dir);
    for (const bool suse : {false, true}) {
        state.suse = suse;
        check_sysconf();
    }
    fs::current_path(fuzzers_dir);
}

}  // namespace

// Input: the four files, the tree, the text of the interface files.
void try_input(fuzz::Input input) {
    static const fs::path root = make_root();
    static tarnnet_info* held = nullptr;  // outlives the next inventory, as a caller's result may
    fuzz::start_library();
    const std::vector<std::string> texts = input.sections(section_count);
    make_files(root, texts);
    take_inventory(texts[tree]);
    fuzz::check_records();
    for (vlan_set& set : configured.vlans) {
        std::set<std::uint32_t> ids;
        for (const vlan_entry& vlan : set.vlans) {
            require(ids.insert(vlan.vlan_id).second, "a device has a VLAN once");
        }
    }
    tarnnet_release_info_SL(held);
    held = get_cached_info(nullptr);
    require(held != nullptr, "memory");
}
