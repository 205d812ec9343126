// The branch for containers, with a stand-in of the container-control library whose containers are
// child processes with a kernel's answer of their own.
#include <sys/wait.h>
#include <unistd.h>

#include <set>

#include "made_up_host.h"
#include "tarnctl.h"

struct tarnctl_conf {};

static const std::set<uint32_t> containers = {3, 101, 102};

extern "C" {

int tarnctl_open(void) {
    return 0;
}

tarnctl_env_ids* tarnctl_alloc_env_ids(void) {
    return new tarnctl_env_ids{new uint32_t[containers.size()], 0};
}

void tarnctl_free_env_ids(tarnctl_env_ids* list) {
    delete[] list->ids;
    delete list;
}

int tarnctl_get_env_ids_by_state(tarnctl_env_ids* list, uint32_t wanted_state) {
    EXPECT_EQ(wanted_state, 4u);
    for (const uint32_t veid : containers)
        list->ids[list->count++] = veid;
    return 0;
}

int tarnctl_get_env_conf_path(uint32_t veid, char* path, size_t size) {
    EXPECT_EQ(size, 512u);
    *path = '\0';
    return containers.count(veid) == 0 ? -1 : 0;
}

// What is handed out is new each time, so that the leak check sees what is not given back.
tarnctl_conf* tarnctl_conf_open(const char* /*path*/) {
    return new tarnctl_conf;
}

void tarnctl_conf_close(tarnctl_conf* conf) {
    delete conf;
}

int tarnctl_conf_parse(tarnctl_conf* /*conf*/) {
    return 0;
}

tarnctl_env_param* tarnctl_conf_get_env_param(tarnctl_conf* /*conf*/) {
    return new tarnctl_env_param{"/containers/root"};
}

void tarnctl_free_env_param(tarnctl_env_param* param) {
    delete param;
}

pid_t tarnctl_env_exec_fn_async(uint32_t veid, const char* root, int (*function)(void* argument),
                                void* argument) {
    EXPECT_STREQ(root, "/containers/root");
    const pid_t child = fork();
    if (child == 0) {
        const char last = static_cast<char>(veid);
        kernel_messages = {link_message(1, "eth0", "\2abcde"), link_message(2, "tun0", ""),
                           address_message(AF_INET, 1, last), address_message(AF_INET6, 1, last)};
        _exit(function(argument));
    }
    return child;
}
}

namespace {

TEST_F(MadeUpHost, HasContainersReadFromWithinOneByOneOrInAWideRangeByTheirState) {
    kernel_messages = {link_message(1, "eth0", "\2abcde")};
    write(state.host.pair_devices, "Version: 1.0\nm veth m tun0 101\n");
    EXPECT_EQ(inventory(TARNNET_READ_IPV4 | TARNNET_READ_IPV6, 101, 101),
              (Lines{"101:tun0 1 [] []", "101:eth0 2 [10.1.0.101/24,fd00::65/64] []"}));
    std::filesystem::remove(state.host.pair_devices);
    const Lines of_101 = {"101:tun0 1 [] []", "101:eth0 2 [] []"};
    const Lines of_102 = {"102:tun0 1 [] []", "102:eth0 2 [] []"};
    EXPECT_EQ(inventory(0, 91, 102), (Lines{of_102[0], of_102[1], of_101[0], of_101[1]}))
        << "twelve ids, in their order";
    EXPECT_EQ(inventory(0, 90, 102), (Lines{of_101[0], of_101[1], of_102[0], of_102[1]}))
        << "the running ones, last id first";
    tarnnet_info* all = tarnnet_get_info(0, nullptr);
    EXPECT_EQ(lines_of(all).size(), 6u) << "without the host";
    tarnnet_release_info(all);
    EXPECT_EQ(inventory(0, 0, 0), Lines{"eth0 2 [] []"});
    EXPECT_EQ(inventory(0, 9, 8), Lines{});
    EXPECT_EQ(inventory(0, ~0u - 1, ~0u), Lines{});
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "every child was waited for";
}

}  // namespace
