// The links and addresses that the kernel gives over routing netlink.
#include <linux/rtnetlink.h>
#include <stdio.h>
#include <sys/socket.h>

#include "host.h"
#include "netinfo/link_tables.h"
#include "rtnl.h"
#include "tarnnet.h"

namespace tarnnet {

namespace {

int take_link(const sockaddr_nl* /*sender*/, nlmsghdr* message, void* tables) {
    return collect_link(static_cast<link_tables*>(tables), message);
}

int take_address(const sockaddr_nl* /*sender*/, nlmsghdr* message, void* tables) {
    return collect_address(static_cast<link_tables*>(tables), message);
}

int dump_table(rtnl_sock* sock, int family, int type, link_tables* tables) {
    if (rtnl_wilddump_request(sock, family, type) < 0) {
        perror("Cannot send dump request");
        return -1;
    }
    const rtnl_filter_fn take = type == RTM_GETLINK ? take_link : take_address;
    if (rtnl_dump_filter(sock, take, tables, nullptr, nullptr) < 0) {
        fputs("Dump terminated\n", stderr);
        return -1;
    }
    return 0;
}

int dump_tables(rtnl_sock* sock, uint32_t flags, link_tables* tables) {
    // One request at a time: the answer to an older one would be taken for junk.
    if (dump_table(sock, AF_UNSPEC, RTM_GETLINK, tables) != 0) {
        return -1;
    }
    if ((flags & TARNNET_READ_IPV4) != 0 && dump_table(sock, AF_INET, RTM_GETADDR, tables) != 0) {
        return -1;
    }
    if ((flags & TARNNET_READ_IPV6) != 0 && dump_table(sock, AF_INET6, RTM_GETADDR, tables) != 0) {
        return -1;
    }
    return 0;
}

}  // namespace

int ask_kernel(uint32_t flags, link_tables* tables) {
    rtnl_sock sock;
    if (rtnl_open(&sock, 0) < 0) {
        return -1;
    }
    const int result = dump_tables(&sock, flags, tables);
    rtnl_close(&sock);
    return result;
}

}  // namespace tarnnet
