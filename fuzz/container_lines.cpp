// The lines that come over the pipe from a container.
#include <sys/mman.h>
#include <unistd.h>

#include "fuzz/library_support.h"
#include "netinfo/container_read.h"

using namespace tarnnet;

// Input: the lines.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::uint32_t container = 101;
    fuzz::start_library();
    const int fd = memfd_create("lines", MFD_CLOEXEC);
    fuzz::require(fd >= 0 && write(fd, data, size) == static_cast<ssize_t>(size) &&
                      lseek(fd, 0, SEEK_SET) == 0,
                  "a file for the lines");
    purge_all_generations();
    use_origin(container, origin_live);
    take_container_links(fd, container);
    fuzz::check_records();
    fuzz::require(lseek(fd, 0, SEEK_CUR) < 0, "the descriptor is closed");
    for (const tarnnetif_info* record = netinfo.active; record != nullptr; record = record->next) {
        const std::string name = record->name;
        fuzz::require(record->veid == container, "nothing is said about others");
        fuzz::require(name.size() < if_name_size && name.find('\n') == std::string::npos,
                      "a name is one short line");
        fuzz::require(record->state == TARNNET_STATE_UP || record->state == TARNNET_STATE_DOWN,
                      "every link has a state");
        fuzz::require((record->state == TARNNET_STATE_UP) == ((record->link_flags & 1u) != 0),
                      "which is that of its flags");
    }
    return 0;
}
