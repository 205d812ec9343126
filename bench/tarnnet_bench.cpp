// What an inventory costs beside the bare netlink dumps of the same links and addresses, with many
// links in a network namespace of its own, and how the cost grows with their number. For root.
//
//     tarnnet_bench [links [smaller number of links]]
#include <fcntl.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "tarnnet.h"

namespace {

constexpr double ratio_limit = 2.0;
constexpr double growth_limit = 5.0;
constexpr int rounds = 31;

struct Costs {
    double ours_us;
    double floor_us;
};

[[noreturn]] void give_up(const char* what) {
    std::perror(what);
    std::exit(2);
}

// A network namespace with a /sys that shows it.
void enter_empty_namespace() {
    if (unshare(CLONE_NEWNET | CLONE_NEWNS) != 0 ||
        mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("sysfs", "/sys", "sysfs", 0, nullptr) != 0)
        give_up("cannot enter a network namespace");
}

// Pairs of devices, each end with an IPv4 and an IPv6 address.
void make_links(int links) {
    FILE* ip = popen("ip -batch -", "w");
    if (ip == nullptr)
        give_up("ip");
    for (int pair = 0; pair < links / 2; ++pair) {
        std::fprintf(ip, "link add a%d type veth peer name b%d\n", pair, pair);
        for (const char end : {'a', 'b'}) {
            const int net = end == 'a' ? 10 : 11;
            std::fprintf(ip, "addr add %d.0.%d.%d/24 dev %c%d\n", net, pair / 250, pair % 250 + 1,
                         end, pair);
            std::fprintf(ip, "addr add fd00:%d::%x/64 dev %c%d nodad\n", net, pair + 1, end, pair);
        }
    }
    if (pclose(ip) != 0)
        give_up("ip -batch");
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
        give_up("send");
    alignas(nlmsghdr) std::array<char, 16384> buffer;
    ssize_t received = 0;
    do {
        received = recv(fd, buffer.data(), buffer.size(), 0);
        if (received < 0)
            give_up("recv");
    } while (!ends_dump(buffer.data(), static_cast<std::size_t>(received)));
}

void bare_dumps() {
    const int fd = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE);
    if (fd < 0)
        give_up("socket");
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
        give_up("tarnnet_get_info");
    int found = 0;
    for (tarnnetif_info** record = result->records; *record != nullptr; ++record)
        found += (*record)->addresses != nullptr && (*record)->addresses[1] != nullptr ? 1 : 0;
    tarnnet_release_info(result);
    if (found != links) {
        std::fprintf(stderr, "%d links with two addresses found, not %d\n", found, links);
        std::exit(2);
    }
}

double median(std::vector<double> samples) {
    std::sort(samples.begin(), samples.end());
    return samples[samples.size() / 2];
}

// The processor's time for this process, the kernel's work for it included: neither side waits for
// anything, and other processes do not count.
double cpu_us() {
    timespec now = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

template <class Action>
double time_us(Action action) {
    const double start = cpu_us();
    action();
    return cpu_us() - start;
}

// Both ways in turn, so that neither profits from a quiet moment.
Costs measure(int links) {
    std::vector<double> ours;
    std::vector<double> floor;
    for (int round = 0; round < rounds; ++round) {
        floor.push_back(time_us(bare_dumps));
        ours.push_back(time_us([links] { inventory(links); }));
    }
    return {median(ours), median(floor)};
}

// In a process of its own, as a namespace cannot be left.
Costs measure_in_namespace(int links) {
    std::array<int, 2> ends;
    if (pipe(ends.data()) != 0)
        give_up("pipe");
    const pid_t child = fork();
    if (child < 0)
        give_up("fork");
    if (child == 0) {
        enter_empty_namespace();
        make_links(links);
        const Costs costs = measure(links);
        _exit(write(ends[1], &costs, sizeof costs) == sizeof costs ? 0 : 2);
    }
    close(ends[1]);
    Costs costs = {};
    const bool received = read(ends[0], &costs, sizeof costs) == sizeof costs;
    close(ends[0]);
    waitpid(child, nullptr, 0);
    if (!received)
        std::exit(2);
    return costs;
}

bool report(const char* name, double ours_us, double floor_us, double limit) {
    const double ratio = ours_us / floor_us;
    const bool kept = ratio <= limit;
    std::printf("%s  %.0fus %.0fus %.2f %.2f %s\n", name, ours_us, floor_us, ratio, limit,
                kept ? "ok" : "MISSED");
    return kept;
}

}  // namespace

int main(int argc, char** argv) {
    const int many = argc > 1 ? std::atoi(argv[1]) : 1000;
    const int few = argc > 2 ? std::atoi(argv[2]) : 250;
    const Costs small = measure_in_namespace(few);
    const Costs large = measure_in_namespace(many);
    // Where the kernel's own dumps grow by more than the limit, the inventory may grow as much.
    const double kernel_growth = large.floor_us / small.floor_us;
    const double allowed_growth = std::max(growth_limit, kernel_growth);
    std::printf("bare_dumps_growth  %.0fus %.0fus %.2f - -\n", large.floor_us, small.floor_us,
                kernel_growth);
    const bool cheap = report("tarnnet_get_info", large.ours_us, large.floor_us, ratio_limit);
    const bool linear =
        report("tarnnet_get_info_growth", large.ours_us, small.ours_us, allowed_growth);
    return cheap && linear ? 0 : 1;
}
