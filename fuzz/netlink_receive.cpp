// The receive loop of a netlink dump, which is fed through a socket pair and compared with a walk
// over the same bytes that is written another way.
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

#include "fuzz/library_support.h"
#include "rtnl.h"

using namespace tarnnet;

namespace {

// The dump that the datagrams answer; the seeds carry the same numbers.
constexpr std::uint32_t our_port = 0x31313131;
constexpr std::uint32_t our_sequence = 0x32323232;
constexpr std::uint16_t refused_type = 0x2121;

// What one dump ends with, and the types that it delivers, those of strangers with a minus.
struct Dump {
    bool ended = false;
    int result = 0;
    std::vector<int> types;
};

nlmsghdr header_at(const std::string& bytes, std::size_t offset) {
    nlmsghdr header = {};
    std::memcpy(&header, bytes.data() + offset, sizeof(header));
    return header;
}

void expect_message(const nlmsghdr& header, Dump* dump) {
    const bool ours = header.nlmsg_pid == our_port && header.nlmsg_seq == our_sequence;
    const bool ends = ours && (header.nlmsg_type == NLMSG_DONE || header.nlmsg_type == NLMSG_ERROR);
    if (!ends)
        dump->types.push_back(ours ? header.nlmsg_type : -int{header.nlmsg_type});
    dump->ended = ends || (ours && header.nlmsg_type == refused_type);
    dump->result = !dump->ended ? 0 : header.nlmsg_type == NLMSG_DONE ? 0 : ends ? -1 : -7;
}

// Cuts off what would be left over behind the whole messages, which is no end for a fuzzer.
std::string without_remnant(const std::string& datagram, Dump* dump) {
    std::size_t offset = 0;
    while (!dump->ended && offset + sizeof(nlmsghdr) <= datagram.size()) {
        const nlmsghdr header = header_at(datagram, offset);
        const std::size_t left = datagram.size() - offset;
        if (header.nlmsg_len < sizeof(nlmsghdr) || header.nlmsg_len > left)
            break;
        expect_message(header, dump);
        offset += std::min<std::size_t>(NLMSG_ALIGN(header.nlmsg_len), left);
    }
    return dump->ended ? datagram : datagram.substr(0, offset);
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
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::start_library();
    int ends[2];
    fuzz::require(socketpair(AF_UNIX, SOCK_DGRAM, 0, ends) == 0, "a socket pair");
    rtnl_sock sock = {};
    sock.fd = ends[0];
    sock.local_addr.nl_pid = our_port;
    sock.dump_seq = our_sequence;
    Dump expected;
    for (const std::string& datagram : fuzz::sections(data, size, 4)) {
        const std::string whole = without_remnant(datagram, &expected);
        if (!whole.empty())
            fuzz::require(send(ends[1], whole.data(), whole.size(), 0) >= 0, "send");
    }
    // A socket that ends without the end of the dump: an empty datagram.
    expected.result = expected.ended ? expected.result : -1;
    fuzz::require(send(ends[1], "", 0, 0) == 0, "send");
    Dump found;
    found.result = rtnl_dump_filter(&sock, take, &found, take_junk, &found);
    fuzz::require(found.result == expected.result, "the result");
    fuzz::require(found.types == expected.types, "every message, in its order, to its receiver");
    rtnl_close(&sock);
    close(ends[1]);
    return 0;
}

// In the place of perror: a kernel's error answer is nothing to be seen here.
extern "C" void __wrap_perror(const char* /*prefix*/) {}
