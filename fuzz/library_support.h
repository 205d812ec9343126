// What the fuzz targets of libtarnnet share: a library that leaves the machine's files alone, a
// socket for a dump, and what holds for its records after every read.
#pragma once

#include "fuzz/support.h"
#include "netinfo/index.h"
#include "netinfo/records.h"
#include "rtnl.h"
#include "state.h"

namespace fuzz {

// Started, and with messages that are formatted and dropped.
inline void start_library() {
    tarnnet::state.host.log_file = "";
    require(tarnnet::init_libtarnnet_state() == 0, "the library starts");
}

// Of a dump whose answer has these numbers; the seeds carry the same.
inline tarnnet::rtnl_sock dump_socket(int fd) {
    tarnnet::rtnl_sock sock = {};
    sock.fd = fd;
    sock.local_addr.nl_pid = 0x31313131;
    sock.dump_seq = 0x32323232;
    return sock;
}

inline void check_records() {
    using namespace tarnnet;
    for (tarnnetif_info* record = netinfo.active; record != nullptr; record = record->next) {
        const std::uint32_t kind = record->type;
        const char* const network = record->network_id;
        require(kind != 0 && (kind & (kind - 1)) == 0 && kind <= IFT_VNIC, "one kind");
        require(index_find(record->name, record->veid, kind) == record,
                "a record is found under its name, container and kind");
        require(network == nullptr ||
                    network_index_find(network, record->name, record->veid, kind) == record,
                "and under its network");
        require(record->generation >= 0, "no junk among the active records");
    }
}

}  // namespace fuzz
