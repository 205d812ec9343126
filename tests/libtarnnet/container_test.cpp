// The branch for containers, with a stand-in of the container-control library whose containers are
// network namespaces of this test.
#include <fcntl.h>
#include <sched.h>
#include <sys/wait.h>

#include <array>
#include <utility>

#include "inventory_host.h"
#include "netinfo/container_read.h"
#include "netinfo/single_conf.h"
#include "tarnctl.h"

// An open configuration is the number of its container.
struct tarnctl_conf {
    uint32_t veid;
};

namespace {

using inventory_host::inventory;
using inventory_host::Lines;
using inventory_host::run_ip;

struct Container {
    uint32_t veid;
    int namespace_fd;
};

// The stand-in's containers, and what is still open of what it gave out.
std::array<Container, 3> containers = {{{3, -1}, {101, -1}, {102, -1}}};
int given_out = 0;
bool refuses = false;
std::string calls;

// Every container gets a link that is named after it, and one without a hardware address.
void make_containers() {
    const int own = open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC);
    for (Container& container : containers) {
        ASSERT_EQ(unshare(CLONE_NEWNET), 0);
        const std::string id = std::to_string(container.veid);
        run_ip("link add eth" + id + " type veth peer name peer" + id + "\ntuntap add tun" + id +
               " mode tun\naddr add 10.1.0." + id + "/24 dev eth" + id + "\naddr add fd00::" + id +
               "/64 dev eth" + id + " nodad\nlink set eth" + id + " up\n");
        container.namespace_fd = open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC);
    }
    ASSERT_EQ(setns(own, CLONE_NEWNET), 0);
    close(own);
}

const Container* find(uint32_t veid) {
    for (const Container& container : containers)
        if (container.veid == veid)
            return &container;
    return nullptr;
}

}  // namespace

extern "C" {

int tarnctl_open(void) {
    return refuses ? -1 : 0;
}

tarnctl_env_ids* tarnctl_alloc_env_ids(void) {
    ++given_out;
    return new tarnctl_env_ids{new uint32_t[containers.size()], 0};
}

void tarnctl_free_env_ids(tarnctl_env_ids* list) {
    --given_out;
    delete[] list->ids;
    delete list;
}

int tarnctl_get_env_ids_by_state(tarnctl_env_ids* list, uint32_t state) {
    EXPECT_EQ(state, 4u);
    for (const Container& container : containers)
        list->ids[list->count++] = container.veid;
    return 0;
}

int tarnctl_get_env_conf_path(uint32_t veid, char* path, size_t size) {
    EXPECT_EQ(size, 512u);
    std::snprintf(path, size, "/etc/containers/%u.conf", veid);
    return find(veid) == nullptr ? -1 : 0;
}

tarnctl_conf* tarnctl_conf_open(const char* path) {
    unsigned veid = 0;
    if (std::sscanf(path, "/etc/containers/%u.conf", &veid) != 1)
        return nullptr;
    ++given_out;
    calls += "open " + std::to_string(veid) + ";";
    return new tarnctl_conf{veid};
}

void tarnctl_conf_close(tarnctl_conf* conf) {
    --given_out;
    delete conf;
}

int tarnctl_conf_parse(tarnctl_conf* /*conf*/) {
    return refuses ? -1 : 0;
}

tarnctl_env_param* tarnctl_conf_get_env_param(tarnctl_conf* conf) {
    ++given_out;
    calls += "param " + std::to_string(conf->veid) + ";";
    return new tarnctl_env_param{"/containers/root"};
}

void tarnctl_free_env_param(tarnctl_env_param* param) {
    --given_out;
    delete param;
}

pid_t tarnctl_env_exec_fn_async(uint32_t veid, const char* root, int (*function)(void* argument),
                                void* argument) {
    EXPECT_STREQ(root, "/containers/root");
    const pid_t child = fork();
    if (child == 0)
        _exit(setns(find(veid)->namespace_fd, CLONE_NEWNET) == 0 ? function(argument) : 99);
    return child;
}
}

namespace {

TEST(Container, IsReadFromWithin) {
    private_host::run([] {
        make_containers();
        run_ip("link add host0 type veth peer name host1\n");
        EXPECT_EQ(inventory(TARNNET_READ_IPV4 | TARNNET_READ_IPV6, 101, 101),
                  (Lines{"101:tun101 1 [] []", "101:eth101 2 [10.1.0.101/24,fd00::101/64] []",
                         "101:peer101 2 [] []"}));
        EXPECT_EQ(inventory(TARNNET_READ_IPV4, 100, 111)[1], "102:eth102 2 [10.1.0.102/24] []");
        EXPECT_EQ(given_out, 0);
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "every child was waited for";
    });
}

// Last id first, so that the first one's links are the newest; the host is not read.
TEST(Container, IsFoundByItsStateInAWideRange) {
    private_host::run([] {
        make_containers();
        run_ip("link add host0 type veth peer name host1\n");
        const Lines found = inventory(0, 0, 0x7fffffff);
        ASSERT_EQ(found.size(), 9u);
        EXPECT_EQ(found[1].substr(0, 6), "3:eth3");
        EXPECT_EQ(found[4].substr(0, 10), "101:eth101");
        EXPECT_EQ(found[7].substr(0, 10), "102:eth102");
        EXPECT_EQ(inventory(0, 90, 101).size(), 3u) << "twelve ids are no wide range";
        for (const auto& [first, last] : {std::pair{9u, 8u}, {55u, 55u}, {~0u - 1, ~0u}})
            EXPECT_EQ(inventory(0, first, last), Lines{});
        refuses = true;
        EXPECT_EQ(inventory(0, 101, 101), Lines{});
        EXPECT_EQ(inventory(0, 0, 4000), Lines{});
        EXPECT_EQ(given_out, 0);
    });
}

TEST(Container, ConfigurationIsOpenedAndNothingTakenFromIt) {
    private_host::run([] {
        calls.clear();
        read_single_conf(TARNNET_EVERYTHING, 101);
        EXPECT_EQ(calls, "open 101;param 101;");
        EXPECT_EQ(given_out, 0);
        read_single_conf(TARNNET_EVERYTHING, 55);
        EXPECT_EQ(calls, "open 101;param 101;");
    });
}

TEST(Container, LinesAreCutToTheirFields) {
    const std::string name(40, 'n');
    const std::string addresses(3000, '1');
    const std::string hwaddr(30, 'f');
    const char* lines[LINK_LINES] = {name.c_str(), addresses.c_str(), hwaddr.c_str(), "4099"};
    link_facts facts;
    parse_link_lines(lines, &facts);
    EXPECT_EQ(facts.name, name.substr(0, 15));
    EXPECT_EQ(facts.addresses, addresses.substr(0, 1023));
    EXPECT_EQ(facts.hwaddr, hwaddr.substr(0, 19));
    EXPECT_EQ(facts.flags, 4099u);
}

}  // namespace
