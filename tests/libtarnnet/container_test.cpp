// The branch for containers, with a stand-in of the container-control library whose containers are
// network namespaces of this test.
#include <fcntl.h>
#include <sched.h>
#include <sys/wait.h>

#include <map>

#include "inventory_host.h"
#include "tarnctl.h"

struct tarnctl_conf {};

namespace {

using inventory_host::inventory;
using inventory_host::Lines;
using inventory_host::run_ip;

// The stand-in's containers with their namespaces, and what it gave out.
std::map<uint32_t, int> containers = {{3, -1}, {101, -1}, {102, -1}};
int still_given_out = 0;

// Every container gets a link that is named after it, and one without a hardware address.
void make_containers() {
    const int own = open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC);
    for (auto& [veid, namespace_fd] : containers) {
        ASSERT_EQ(unshare(CLONE_NEWNET), 0);
        const std::string id = std::to_string(veid);
        run_ip("link add eth" + id + " type veth peer name peer" + id + "\ntuntap add tun" + id +
               " mode tun\naddr add 10.1.0." + id + "/24 dev eth" + id + "\naddr add fd00::" + id +
               "/64 dev eth" + id + " nodad\n");
        namespace_fd = open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC);
    }
    ASSERT_EQ(setns(own, CLONE_NEWNET), 0);
    run_ip("link add host0 type veth peer name host1\n");
}

}  // namespace

extern "C" {

int tarnctl_open(void) {
    return 0;
}

tarnctl_env_ids* tarnctl_alloc_env_ids(void) {
    ++still_given_out;
    return new tarnctl_env_ids{new uint32_t[containers.size()], 0};
}

void tarnctl_free_env_ids(tarnctl_env_ids* list) {
    --still_given_out;
    delete[] list->ids;
    delete list;
}

int tarnctl_get_env_ids_by_state(tarnctl_env_ids* list, uint32_t state) {
    EXPECT_EQ(state, 4u);
    for (const auto& container : containers)
        list->ids[list->count++] = container.first;
    return 0;
}

int tarnctl_get_env_conf_path(uint32_t veid, char* path, size_t size) {
    EXPECT_EQ(size, 512u);
    *path = '\0';
    return containers.count(veid) == 0 ? -1 : 0;
}

tarnctl_conf* tarnctl_conf_open(const char* /*path*/) {
    ++still_given_out;
    static tarnctl_conf conf;
    return &conf;
}

void tarnctl_conf_close(tarnctl_conf* /*conf*/) {
    --still_given_out;
}

int tarnctl_conf_parse(tarnctl_conf* /*conf*/) {
    return 0;
}

tarnctl_env_param* tarnctl_conf_get_env_param(tarnctl_conf* /*conf*/) {
    ++still_given_out;
    static tarnctl_env_param param = {"/containers/root"};
    return &param;
}

void tarnctl_free_env_param(tarnctl_env_param* /*param*/) {
    --still_given_out;
}

pid_t tarnctl_env_exec_fn_async(uint32_t veid, const char* root, int (*function)(void* argument),
                                void* argument) {
    EXPECT_STREQ(root, "/containers/root");
    const pid_t child = fork();
    if (child == 0)
        _exit(setns(containers[veid], CLONE_NEWNET) == 0 ? function(argument) : 99);
    return child;
}
}

namespace {

TEST(Container, IsReadFromWithinOneByOneOrInAWideRangeByItsState) {
    private_host::run([] {
        make_containers();
        EXPECT_EQ(inventory(TARNNET_READ_IPV4 | TARNNET_READ_IPV6, 101, 101),
                  (Lines{"101:tun101 1 [] []", "101:eth101 2 [10.1.0.101/24,fd00::101/64] []",
                         "101:peer101 2 [] []"}));
        EXPECT_EQ(inventory(0, 91, 102)[1], "102:eth102 2 [] []") << "twelve ids: in their order";
        // Last id first, so that the first one's links are the newest; the host is not read.
        const Lines found = inventory(0, 0, 0x7fffffff);
        ASSERT_EQ(found.size(), 9u);
        EXPECT_EQ(found[1], "3:eth3 2 [] []");
        EXPECT_EQ(found[4], "101:eth101 2 [] []");
        EXPECT_EQ(found[7], "102:eth102 2 [] []");
        EXPECT_EQ(inventory(0, 9, 8), Lines{});
        EXPECT_EQ(inventory(0, ~0u - 1, ~0u), Lines{});
        EXPECT_EQ(still_given_out, 0);
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "every child was waited for";
    });
}

}  // namespace
