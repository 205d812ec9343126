// Datagrams of a netlink answer, and what their link and address messages say.
#include <arpa/inet.h>

#include <cstring>
#include <memory>

#include "fuzz/library_support.h"
#include "netinfo/link_facts.h"
#include "netinfo/link_tables.h"
#include "rtnl.h"

using namespace tarnnet;

namespace {

// The dump that the datagrams answer; the seeds carry the same numbers.
constexpr std::uint32_t our_port = 0x31313131;
constexpr std::uint32_t our_sequence = 0x32323232;

int take_link(const sockaddr_nl* /*sender*/, nlmsghdr* message, void* tables) {
    return collect_link(static_cast<link_tables*>(tables), message);
}

int take_address(const sockaddr_nl* /*sender*/, nlmsghdr* message, void* tables) {
    return collect_address(static_cast<link_tables*>(tables), message);
}

int refuse(const sockaddr_nl* /*sender*/, nlmsghdr* /*message*/, void* /*argument*/) {
    return -2;
}

// Walks one datagram in a copy of exactly its size, so that a read behind it is noticed.
void walk(const std::string& datagram, rtnl_filter_fn filter, link_tables* tables,
          rtnl_filter_fn junk) {
    rtnl_sock sock = {};
    sock.local_addr.nl_pid = our_port;
    sock.dump_seq = our_sequence;
    const sockaddr_nl kernel = {};
    const rtnl_receivers receivers = {filter, tables, junk, nullptr};
    const std::unique_ptr<unsigned char[]> copy(new unsigned char[datagram.size()]);
    std::memcpy(copy.get(), datagram.data(), datagram.size());
    const rtnl_walk end =
        rtnl_walk_datagram(&sock, &kernel, {copy.get(), datagram.size()}, &receivers);
    fuzz::require(end.remaining <= datagram.size(), "no more is left over than there was");
    fuzz::require(end.result <= 0 && (end.finished || end.result == 0), "a documented end");
}

// The C library reads the text of an address and would write the same.
void check_address(const std::string& text) {
    const std::string address = text.substr(0, text.find('/'));
    const int family = address.find(':') == std::string::npos ? AF_INET : AF_INET6;
    in6_addr bytes = {};
    char again[INET6_ADDRSTRLEN] = "";
    fuzz::require(inet_pton(family, address.c_str(), &bytes) == 1, "an address can be read");
    inet_ntop(family, &bytes, again, sizeof(again));
    fuzz::require(address == again, "an address has its usual form");
}

void check_tables(const link_tables& tables) {
    for (std::size_t i = 0; i < tables.addresses.count(); ++i) {
        check_address(tables.addresses[i].text);
    }
    for (std::size_t i = 0; i < tables.links.count(); ++i) {
        const link_entry& link = tables.links[i];
        char line[address_line_size];
        print_selected_addrinfo(tables, link.index, line);
        fuzz::require(std::strlen(link.name) < sizeof(link.name) &&
                          std::strlen(link.hwaddr) < sizeof(link.hwaddr) &&
                          std::strlen(line) < sizeof(line),
                      "every text is ended");
    }
}

}  // namespace

// Input: three datagrams, of links and of the addresses of two families.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string> datagrams = fuzz::sections(data, size, 3);
    fuzz::start_library();
    link_tables tables;
    walk(datagrams[0], take_link, &tables, nullptr);
    walk(datagrams[1], take_address, &tables, nullptr);
    walk(datagrams[2], take_address, &tables, refuse);
    sort_addresses(&tables);
    check_tables(tables);
    return 0;
}

// In the place of perror: a kernel's error answer is nothing to be seen here.
extern "C" void __wrap_perror(const char* /*prefix*/) {}
