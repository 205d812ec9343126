// Datagrams of a netlink answer, and what their link and address messages say.
#include <arpa/inet.h>

#include "fuzz/library_support.h"
#include "netinfo/link_facts.h"
#include "netinfo/link_tables.h"

using namespace tarnnet;

namespace {

template <int (*collect)(link_tables*, nlmsghdr*)>
int take(const sockaddr_nl* /*sender*/, nlmsghdr* message, void* tables) {
    return collect(static_cast<link_tables*>(tables), message);
}

int refuse(const sockaddr_nl* /*sender*/, nlmsghdr* /*message*/, void* /*argument*/) {
    return -2;
}

void walk(const std::string& datagram, const rtnl_receivers& receivers) {
    const rtnl_sock sock = fuzz::dump_socket(-1);
    const sockaddr_nl kernel = {};
    const auto copy = fuzz::exact_copy(datagram);
    auto* const start = reinterpret_cast<unsigned char*>(copy.get());
    const rtnl_walk end = rtnl_walk_datagram(&sock, &kernel, {start, datagram.size()}, &receivers);
    require(end.remaining <= datagram.size(), "no more is left over than there was");
    require(end.result <= 0 && (end.finished || end.result == 0), "a documented end");
}

// The C library reads the text of an address and would write the same.
void check_address(const std::string& text) {
    const std::string address = text.substr(0, text.find('/'));
    const int family = address.find(':') == std::string::npos ? AF_INET : AF_INET6;
    in6_addr bytes = {};
    char again[INET6_ADDRSTRLEN] = "";
    require(inet_pton(family, address.c_str(), &bytes) == 1, "an address can be read");
    inet_ntop(family, &bytes, again, sizeof(again));
    require(address == again, "an address has its usual form");
}

}  // namespace

// Input: three datagrams, of links and of the addresses of two families.
void try_input(fuzz::Input input) {
    const std::vector<std::string> datagrams = input.sections(3);
    fuzz::start_library();
    const fuzz::ClosedConsole console;  // a kernel's error answer is nothing to be seen here
    link_tables tables;
    walk(datagrams[0], {take<collect_link>, &tables, nullptr, nullptr});
    walk(datagrams[1], {take<collect_address>, &tables, nullptr, nullptr});
    walk(datagrams[2], {take<collect_address>, &tables, refuse, nullptr});
    sort_addresses(&tables);
    for (std::size_t i = 0; i < tables.addresses.count(); ++i) {
        check_address(tables.addresses[i].text);
    }
    for (std::size_t i = 0; i < tables.links.count(); ++i) {
        const link_entry& link = tables.links[i];
        char line[address_line_size];
        print_selected_addrinfo(tables, link.index, line);
        require(memchr(link.name, 0, sizeof link.name) && memchr(line, 0, sizeof line) &&
                    memchr(link.hwaddr, 0, sizeof link.hwaddr),
                "every text is ended");
    }
}
