// The receive loop of a netlink dump, which is fed through a socket pair and compared with a walk
// over the same bytes that is written another way.
#include <sys/socket.h>

#include "fuzz/library_support.h"

using namespace tarnnet;

namespace {

constexpr std::uint16_t refused_type = 0x2121;

// What one dump ends with, and the types that it delivers, those of strangers with a minus.
struct Dump {
    bool ended = false;
    int result = 0;
    std::vector<int> types;
};

void expect_message(const nlmsghdr& header, const rtnl_sock& sock, Dump& dump) {
    const bool ours =
        header.nlmsg_pid == sock.local_addr.nl_pid && header.nlmsg_seq == sock.dump_seq;
    const bool ends = ours && (header.nlmsg_type == NLMSG_DONE || header.nlmsg_type == NLMSG_ERROR);
    if (!ends) {
        dump.types.push_back(ours ? header.nlmsg_type : -int{header.nlmsg_type});
    }
    dump.ended = ends || (ours && header.nlmsg_type == refused_type);
    dump.result = !dump.ended || header.nlmsg_type == NLMSG_DONE ? 0 : ends ? -1 : -7;
}

// Cuts off what would be left over behind the whole messages, which is no end for a fuzzer.
std::string without_remnant(const std::string& datagram, const rtnl_sock& sock, Dump& dump) {
    std::size_t offset = 0;
    nlmsghdr header = {};
    while (!dump.ended && offset + sizeof(header) <= datagram.size()) {
        datagram.copy(reinterpret_cast<char*>(&header), sizeof(header), offset);
        const std::size_t left = datagram.size() - offset;
        if (header.nlmsg_len < sizeof(header) || header.nlmsg_len > left) {
            break;
        }
        expect_message(header, sock, dump);
        offset += std::min<std::size_t>(NLMSG_ALIGN(header.nlmsg_len), left);
    }
    return dump.ended ? datagram : datagram.substr(0, offset);
}

int take(const sockaddr_nl* /*sender*/, nlmsghdr* message, void* dump) {
    static_cast<Dump*>(dump)->types.push_back(message->nlmsg_type);
    return message->nlmsg_type == refused_type ? -7 : 0;
}

int take_junk(const sockaddr_nl* /*sender*/, nlmsghdr* message, void* dump) {
    static_cast<Dump*>(dump)->types.push_back(-int{message->nlmsg_type});
    return 0;
}

}  // namespace

// Input: up to four datagrams.
void try_input(fuzz::Input input) {
    fuzz::start_library();
    const fuzz::ClosedConsole console;  // a kernel's error answer is nothing to be seen here
    int ends[2];
    require(socketpair(AF_UNIX, SOCK_DGRAM, 0, ends) == 0, "a socket pair");
    rtnl_sock sock = fuzz::dump_socket(ends[0]);
    Dump expected;
    for (const std::string& datagram : input.sections(4)) {
        const std::string whole = without_remnant(datagram, sock, expected);
        require(whole.empty() || send(ends[1], whole.data(), whole.size(), 0) >= 0, "send");
    }
    // A socket that ends without the end of the dump: an empty datagram.
    expected.result = expected.ended ? expected.result : -1;
    require(send(ends[1], "", 0, 0) == 0, "send");
    Dump found;
    found.result = rtnl_dump_filter(&sock, take, &found, take_junk, &found);
    require(found.result == expected.result, "the result");
    require(found.types == expected.types, "every message, in its order, to its receiver");
    rtnl_close(&sock);
    close(ends[1]);
}
