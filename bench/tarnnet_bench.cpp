// What an inventory costs beside the bare netlink dumps of the same links and addresses, with many
// links in a network namespace of its own, and how the cost grows with their number.
//
//     tarnnet_bench [--quick]      as root
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "bench/bench_support.h"
#include "tarnnet.h"

namespace {

constexpr double ratio_limit = 2.6;   // with 1,000 links
constexpr double growth_limit = 5.0;  // from 250 to 1,000 links

// A network namespace with a /sys that shows it.
void enter_empty_namespace() {
    if (unshare(CLONE_NEWNET | CLONE_NEWNS) != 0 ||
        mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("sysfs", "/sys", "sysfs", 0, nullptr) != 0)
        Bench::give_up("cannot enter a network namespace");
}

// Pairs of devices, each end with an IPv4 and an IPv6 address.
void make_pairs(int first, int end) {
    FILE* ip = popen("ip -batch -", "w");
    if (ip == nullptr)
        Bench::give_up("ip");
    for (int pair = first; pair < end; ++pair) {
        std::fprintf(ip, "link add a%d type veth peer name b%d\n", pair, pair);
        for (const char side : {'a', 'b'}) {
            const int net = side == 'a' ? 10 : 11;
            std::fprintf(ip, "addr add %d.0.%d.%d/24 dev %c%d\n", net, pair / 250, pair % 250 + 1,
                         side, pair);
            std::fprintf(ip, "addr add fd00:%d::%x/64 dev %c%d nodad\n", net, pair + 1, side, pair);
        }
    }
    if (pclose(ip) != 0)
        Bench::give_up("ip -batch");
}

// Whether the messages of a datagram hold the one that ends the dump.
bool ends_dump(const char* bytes, std::size_t length) {
    nlmsghdr header = {};
    while (length >= sizeof header) {
        std::memcpy(&header, bytes, sizeof header);
        if (header.nlmsg_type == NLMSG_DONE)
            return true;
        const std::size_t step = std::min<std::size_t>(NLMSG_ALIGN(header.nlmsg_len), length);
        bytes += step;
        length -= step;
    }
    return false;
}

// The kernel's answer to one dump, received and thrown away.
void dump(int fd, unsigned char family, unsigned short type) {
    struct {
        nlmsghdr header;
        rtgenmsg body;
    } request = {};
    request.header.nlmsg_len = NLMSG_LENGTH(sizeof(rtgenmsg));
    request.header.nlmsg_type = type;
    request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    request.body.rtgen_family = family;
    if (send(fd, &request, sizeof request, 0) < 0)
        Bench::give_up("send");
    alignas(nlmsghdr) std::array<char, 16384> buffer;
    ssize_t received = 0;
    do {
        received = recv(fd, buffer.data(), buffer.size(), 0);
        if (received < 0)
            Bench::give_up("recv");
    } while (!ends_dump(buffer.data(), static_cast<std::size_t>(received)));
}

void bare_dumps() {
    const int fd = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE);
    if (fd < 0)
        Bench::give_up("socket");
    dump(fd, AF_UNSPEC, RTM_GETLINK);
    dump(fd, AF_INET, RTM_GETADDR);
    dump(fd, AF_INET6, RTM_GETADDR);
    close(fd);
}

void inventory(int links) {
    tarnnet_filter* filter = tarnnet_get_simple_filter(0x33, nullptr, nullptr, nullptr, 0, 0);
    tarnnet_info* result = tarnnet_get_info(TARNNET_EVERYTHING, filter);
    tarnnet_release_filter(filter);
    if (result == nullptr)
        Bench::give_up("tarnnet_get_info");
    int found = 0;
    for (tarnnetif_info** record = result->records; *record != nullptr; ++record)
        found += (*record)->addresses != nullptr && (*record)->addresses[1] != nullptr ? 1 : 0;
    tarnnet_release_info(result);
    if (found != links) {
        std::fprintf(stderr, "%d links with two addresses found, not %d\n", found, links);
        std::exit(2);
    }
}

int measure(const Bench::Options& options) {
    Bench::Table table;
    int pairs = 0;
    const auto cost_of = [&](int links, double limit) {
        make_pairs(pairs, links / 2);
        pairs = links / 2;
        const Bench::Medians medians = Bench::by_turns(
            options.rounds(41, 11), Bench::Timing::cold_cpu, [links] { inventory(links); },
            bare_dumps);
        table.compare("tarnnet_get_info, " + std::to_string(links) + " links", medians, limit);
        return medians;
    };
    const Bench::Medians of_100 = cost_of(100, Bench::no_limit);
    const Bench::Medians of_250 = cost_of(250, Bench::no_limit);
    const Bench::Medians of_1000 = cost_of(1000, ratio_limit);
    table.growth("  growth, 100 to 1000 links", of_100, of_1000, Bench::no_limit);
    table.growth("  growth, 250 to 1000 links", of_250, of_1000, growth_limit);
    return table.exit_status();
}

}  // namespace

int main(int argc, char** argv) {
    const Bench::Options options(argc, argv);
    if (geteuid() != 0) {
        Bench::Table().skip("tarnnet_get_info", "skipped: needs root");
        return 0;
    }
    enter_empty_namespace();
    return measure(options);
}
