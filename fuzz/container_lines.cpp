// The lines that come over the pipe from a container.
#include "fuzz/library_support.h"
#include "netinfo/container_read.h"

using namespace tarnnet;

// Input: the lines.
void try_input(fuzz::Input input) {
    constexpr std::uint32_t container = 101;
    fuzz::start_library();
    const int fd = fuzz::file_of(input.text());
    purge_all_generations();
    use_origin(container, origin_live);
    take_container_links(fd, container);
    fuzz::check_records();
    require(lseek(fd, 0, SEEK_CUR) < 0, "the descriptor is closed");
    for (const tarnnetif_info* record = netinfo.active; record != nullptr; record = record->next) {
        const std::string name = record->name;
        require(record->veid == container, "nothing is said about others");
        require(name.size() < if_name_size && name.find('\n') == std::string::npos,
                "a name is one short line");
        const bool is_up = (record->link_flags & 1u) != 0;
        require(record->state == (is_up ? TARNNET_STATE_UP : TARNNET_STATE_DOWN),
                "every link has the state of its flags");
    }
}
