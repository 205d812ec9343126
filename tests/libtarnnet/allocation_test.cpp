// Fails each allocation of one inventory in turn: nothing crashes, nothing leaks, and the next
// inventory is whole again. The linker leads the library's calls to the functions below.
#include <dirent.h>
#include <gtest/gtest.h>
#include <search.h>
#include <semaphore.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <set>

#include "conf_lists.h"
#include "inventory_host.h"
#include "netinfo/records.h"
#include "tarnnet.h"

namespace {

// While `watching`, what the library took and did not give back, and the call that is to fail.
bool watching = false;
bool no_semaphore = false;
int calls = 0;
int failing_call = 0;
long tree_nodes = 0;

std::set<const void*>& taken() {
    static std::set<const void*> blocks;
    return blocks;
}

bool fails() {
    if (!watching || ++calls != failing_call)
        return false;
    errno = ENOMEM;
    return true;
}

template <class Pointer>
Pointer take(Pointer block) {
    if (watching && block != nullptr)
        taken().insert(block);
    return block;
}

void give_back(const void* block) {
    if (watching)
        taken().erase(block);
}

void node_is_gone(const void* /*node*/, VISIT visit, void* /*unused*/) {
    if (visit == postorder || visit == leaf)
        --tree_nodes;
}

}  // namespace

extern "C" {
void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void* __real_realloc(void* block, size_t size);
char* __real_strdup(const char* text);
void __real_free(void* block);
void* __real_tsearch(const void* key, void** root, __compar_fn_t compare);
void* __real_tdelete(const void* key, void** root, __compar_fn_t compare);
void __real_tdestroy(void* root, __free_fn_t free_item);
int __real_scandir(const char* path, dirent*** entries, int (*filter)(const dirent*),
                   int (*compare)(const dirent**, const dirent**));
FILE* __real_fdopen(int fd, const char* mode);
int __real_fclose(FILE* file);
DIR* __real_opendir(const char* path);
int __real_closedir(DIR* dir);
int __real_sem_init(sem_t* semaphore, int shared, unsigned value);

void* __wrap_malloc(size_t size) {
    return fails() ? nullptr : take(__real_malloc(size));
}

void* __wrap_calloc(size_t count, size_t size) {
    return fails() ? nullptr : take(__real_calloc(count, size));
}

void* __wrap_realloc(void* block, size_t size) {
    if (fails())
        return nullptr;
    give_back(block);
    return take(__real_realloc(block, size));
}

char* __wrap_strdup(const char* text) {
    return fails() ? nullptr : take(__real_strdup(text));
}

void __wrap_free(void* block) {
    give_back(block);
    __real_free(block);
}

void* __wrap_tsearch(const void* key, void** root, __compar_fn_t compare) {
    const bool present = tfind(key, root, compare) != nullptr;
    if (!present && fails())
        return nullptr;
    tree_nodes += present ? 0 : 1;
    return __real_tsearch(key, root, compare);
}

void* __wrap_tdelete(const void* key, void** root, __compar_fn_t compare) {
    void* parent = __real_tdelete(key, root, compare);
    tree_nodes -= parent == nullptr ? 0 : 1;
    return parent;
}

void __wrap_tdestroy(void* root, __free_fn_t free_item) {
    twalk_r(root, node_is_gone, nullptr);
    __real_tdestroy(root, free_item);
}

int __wrap_scandir(const char* path, dirent*** entries, int (*filter)(const dirent*),
                   int (*compare)(const dirent**, const dirent**)) {
    if (fails())
        return -1;
    const int count = __real_scandir(path, entries, filter, compare);
    for (int i = 0; i < count; ++i)
        take((*entries)[i]);
    if (count >= 0)
        take(*entries);
    return count;
}

FILE* __wrap_fdopen(int fd, const char* mode) {
    return fails() ? nullptr : take(__real_fdopen(fd, mode));
}

int __wrap_fclose(FILE* file) {
    give_back(file);
    return __real_fclose(file);
}

DIR* __wrap_opendir(const char* path) {
    return fails() ? nullptr : take(__real_opendir(path));
}

int __wrap_closedir(DIR* dir) {
    give_back(dir);
    return __real_closedir(dir);
}

int __wrap_sem_init(sem_t* semaphore, int shared, unsigned value) {
    if (no_semaphore) {
        errno = ENOSYS;
        return -1;
    }
    return __real_sem_init(semaphore, shared, value);
}
}

namespace {

// Everything that an inventory can find, and that takes memory of its own.
void make_host() {
    inventory_host::run_ip(
        "link add eth0 type veth peer name vnic0\n"
        "link add veth5.0 type veth peer name port0\n"
        "addr add 10.1.0.1/24 dev eth0\n"
        "addr add fd00::1/64 dev eth0 nodad\n");
    inventory_host::empty("/proc");
    inventory_host::empty("/sys");
    private_host::write_file("/etc/tarn/tarnnet.conf",
                             "VNID_br0=\"net1\"\nIFLST_br0=\"eth0 eth1\"\nVLAN_eth0=\"10 20\"\n"
                             "ADDR_far0=\"10.9.0.1 10.9.0.2\"\n");
    private_host::write_file("/etc/sysconfig/network-scripts/ifcfg-eth0", "BOOTPROTO=dhcp\n");
    private_host::write_file("/proc/tarn/veth", "Version: 1.0\nm veth5.0 m eth0 5\n");
    private_host::write_file("/proc/tarn/vmth", "Version: 1.0\nvme5 m\n");
    private_host::write_file("/proc/net/vlan/config", "x\nName-Type: x\neth0.10 | 10 | eth0\n");
    private_host::write_file("/sys/class/net/br0/bridge/x", "");
    private_host::write_file("/sys/class/net/br0/brif/veth5.0", "");
}

// The lines of an inventory; what the library took for it is counted until it is all given back.
inventory_host::Lines watched_inventory() {
    watching = true;
    tarnnet_filter* filter = tarnnet_get_simple_filter(IFT_ALL, "br0", "net1", nullptr, 0, 0);
    tarnnet_filter* everything =
        tarnnet_get_simple_filter(IFT_ALL, nullptr, nullptr, nullptr, 0, 0);
    tarnnet_info* result = nullptr;
    if (everything != nullptr)
        result = tarnnet_get_info(TARNNET_EVERYTHING, everything);
    watching = false;
    inventory_host::Lines lines = inventory_host::lines_of(result);
    watching = true;
    tarnnet_release_info(result);
    tarnnet_release_filter(everything);
    tarnnet_release_filter(filter);
    purge_all_generations();
    flush_networks();
    flush_vlans();
    flush_veths();
    flush_iface_addrs();
    watching = false;
    return lines;
}

int lowest_free_descriptor() {
    const int fd = dup(STDERR_FILENO);
    close(fd);
    return fd;
}

TEST(Allocation, ThatFailsCostsWhatItWasForAndNothingElse) {
    private_host::run([] {
        make_host();
        const inventory_host::Lines whole = watched_inventory();
        ASSERT_EQ(whole.size(), 10u);
        const int descriptor = lowest_free_descriptor();
        int incomplete = 0;
        for (failing_call = 1; failing_call == 1 || calls >= failing_call - 1; ++failing_call) {
            calls = 0;
            incomplete += watched_inventory() == whole ? 0 : 1;
            ASSERT_EQ(taken().size(), 0u) << "leaked after allocation " << failing_call;
            ASSERT_EQ(tree_nodes, 0) << "leaked after allocation " << failing_call;
            ASSERT_EQ(netinfo.trash, nullptr);
            ASSERT_EQ(lowest_free_descriptor(), descriptor);
        }
        EXPECT_GT(incomplete, 50) << "of " << failing_call;
        EXPECT_EQ(watched_inventory(), whole);
    });
}

TEST(Semaphore, ThatCannotBeMadeFailsEveryEntryUntilItCan) {
    private_host::run([] {
        no_semaphore = true;
        EXPECT_EQ(tarnnet_get_simple_filter(IFT_ALL, nullptr, nullptr, nullptr, 0, 0), nullptr);
        EXPECT_EQ(tarnnet_get_info(0, nullptr), nullptr);
        EXPECT_EQ(grab_shared_tarnnetlock(0), 6);
        EXPECT_EQ(grab_shared_tarnnetlock(1), 6);
        EXPECT_EQ(grab_excl_tarnnetlock(), 6);
        no_semaphore = false;
        EXPECT_EQ(inventory_host::inventory(), inventory_host::Lines{});
    });
}

}  // namespace
