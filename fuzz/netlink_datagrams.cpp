// Datagrams of a netlink answer, and what their link and address messages say.
#include <cstring>
#include <memory>

#include "fuzz/support.h"
#include "netinfo/link_facts.h"
#include "netinfo/message_list.h"
#include "rtnl.h"

namespace {

// The dump that the datagrams answer; the seeds carry the same numbers.
constexpr std::uint32_t our_port = 0x31313131;
constexpr std::uint32_t our_sequence = 0x32323232;

int collect(const sockaddr_nl* /*sender*/, nlmsghdr* message, void* list) {
    return add_message(static_cast<message_list*>(list), message);
}

int refuse(const sockaddr_nl* /*sender*/, nlmsghdr* /*message*/, void* /*argument*/) {
    return -2;
}

// Walks one datagram in a copy of exactly its size, so that a read behind it is noticed.
rtnl_walk walk(const std::string& datagram, message_list* list, rtnl_filter_fn junk) {
    rtnl_sock sock = {};
    sock.local_addr.nl_pid = our_port;
    sock.dump_seq = our_sequence;
    const sockaddr_nl kernel = {};
    const rtnl_receivers receivers = {collect, list, junk, nullptr};
    const std::unique_ptr<char[]> copy(new char[datagram.size()]);
    std::memcpy(copy.get(), datagram.data(), datagram.size());
    const rtnl_walk end =
        rtnl_walk_datagram(&sock, &kernel, copy.get(), datagram.size(), &receivers);
    fuzz::require(end.remaining <= datagram.size(), "no more is left over than there was");
    fuzz::require(end.result <= 0 && (end.finished != 0 || end.result == 0), "a documented end");
    return end;
}

void show_links(const message_list& links, const address_index& addresses) {
    for (nlmsghdr* message = first_message(&links); message != nullptr;
         message = next_message(&links, message)) {
        link_facts facts;
        std::uint32_t index = 0;
        if (!parse_link(message, &facts, &index)) {
            continue;
        }
        print_selected_addrinfo(&addresses, index, facts.addresses, sizeof(facts.addresses));
        fuzz::require(std::strlen(facts.name) < sizeof(facts.name) &&
                          std::strlen(facts.addresses) < sizeof(facts.addresses) &&
                          std::strlen(facts.hwaddr) < sizeof(facts.hwaddr),
                      "every text is ended");
    }
}

}  // namespace

// Input: three datagrams, of links and of the addresses of two families.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string> datagrams = fuzz::sections(data, size, 3);
    message_list lists[3] = {};
    for (std::size_t i = 0; i < 3; ++i) {
        walk(datagrams[i], &lists[i], nullptr);
    }
    message_list unused = {};
    walk(datagrams[0], &unused, refuse);
    free_messages(&unused);

    address_index addresses;
    fuzz::require(make_address_index(&addresses, &lists[1], &lists[2]) == 0, "memory");
    show_links(lists[0], addresses);
    free_address_index(&addresses);
    for (message_list& list : lists) {
        free_messages(&list);
    }
    return 0;
}

// In the place of perror: a kernel's error answer is nothing to be seen here.
extern "C" void __wrap_perror(const char* /*prefix*/) {}
