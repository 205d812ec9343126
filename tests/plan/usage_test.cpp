// What a host really uses: the parsers, which mounts are its own, its processes, one reading.
#include "plan/record/usage.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <tuple>
#include <vector>

#include "calc/memory_scan.h"
#include "kiln/owners.h"
#include "plan/record/local_mounts.h"
#include "plan/record/usage_parsers.h"
#include "plan/recording/format.h"
#include "tests/support/made_up_host.h"

namespace {

namespace fs = std::filesystem;

Figure cpu_ms_at_100(std::string_view text) {
    return parse_cpu_ms(text, 100);
}

TEST(UsageParsers, OneFigure) {
    const Figure none;
    const std::tuple<Figure (*)(std::string_view), std::string, Figure> cases[] = {
        {cpu_ms_at_100, "ctxt 5\ncpu  1 20 300 9 9 4000 50000\ncpu0 9 9 9 9 9 9 9\n", 543210},
        {cpu_ms_at_100, "cpu 1 1 1 9 9 1 1", none},  // torn
        {cpu_ms_at_100, "cpu 1 1 1 9 9 1 9223372036854775807\n", none},
        {parse_runnable, "procs_running -0\n", none},
        {parse_pressure_us, "some avg10=0.82 avg300=4 total=6642\nfull avg10=0 total=9\n", 6642},
        {parse_uptime_ms, "657.07 1000.01\n", 657070},
        {parse_uptime_ms, "657.7 1\n", none},
        {count_cpu_list, "0-3,8\n", 5},
        {count_cpu_list, "3-0\n", none},
    };
    for (const auto& [parse, text, figure] : cases) {
        EXPECT_EQ(parse(text), figure) << text;
    }
}

TEST(UsageParsers, MemoryInUse) {
    const auto of = [](const std::string& more) {
        return parse_memory_info(
                   "MemTotal:  9000 kB\nMemFree: 100 kB\nBuffers: 20 kB\nCached: 3000 kB\n" + more)
            .used_kib;
    };
    EXPECT_EQ(of("MemAvailable: 5000 kB\nShmem: 9 kB\n"), 4000);
    EXPECT_EQ(of("Shmem: 6 kB\n"), 9000 - 100 - 20 - 3000 + 6);
    EXPECT_EQ(of(""), Figure());
}

TEST(LocalMounts, AreThoseOfItsOwnDisks) {
    using Texts = std::vector<std::string>;
    const auto of = [](const Texts& mounts) {
        std::string table = "proc /proc proc rw 0 0\n/dev/vda1 / ext4 rw 0 0\n";
        for (const std::string& mount : mounts) {
            table += mount + " rw 0 0\n";
        }
        return local_mount_points(parse_mount_table(table));
    };
    EXPECT_EQ(of({"systemd-1 /boot autofs", "/dev/vda2 /boot vfat", "/dev/vdb /srv/my\\040data xfs",
                  "tmpfs /run tmpfs", "/dev/vdc /run/media/disk btrfs"}),
              (Texts{"/", "/boot", "/srv/my data", "/run/media/disk"}));
    EXPECT_EQ(
        of({"tank /tank zfs", "tank/a /tank/a zfs", "pool/b /b zfs", "/dev/vda1 /bound ext4"}),
        (Texts{"/", "/tank", "/b"}));
    EXPECT_EQ(
        of({"nas:/x /net nfs4", "//nas/x /smb cifs", "me@nas: /ssh fuse.sshfs",
            "/dev/vdd /ntfs fuseblk", "/dev/vde /shared gfs2", "/dev/loop0 /snap/x squashfs"}),
        Texts{"/"});
    // On the way to them, or on top of them, lies what may hang.
    EXPECT_EQ(of({"nas:/x /net nfs4", "/dev/vdb /net/disk xfs", "/dev/vdc /nets xfs"}),
              (Texts{"/", "/nets"}));
    EXPECT_EQ(of({"/dev/vdb /data xfs", "nas:/x /data nfs"}), Texts{"/"});
}

// Its processes have files whose number is that of their folder's entries.
class UsedHost : public testing::Test {
protected:
    UsedHost() {
        sources_.paths = {made_up_.root, made_up_.path("sys"), made_up_.root};
        sources_.ticks_per_second = 100;
    }

    void put_process(const std::string& pid, const std::string& status, int descriptors) {
        made_up_.put(pid + "/status", status);
        for (int i = 0; i < descriptors; ++i) {
            made_up_.put(pid + "/fd/" + std::to_string(i), "");
        }
    }

    Usage usage() const {
        ProcessUsage seen;
        EXPECT_TRUE(scan_memory(made_up_.host, &seen));
        return read_usage(sources_, seen);
    }

    // As a pass has it in its line.
    std::string usage_text() const {
        RecordedPass pass;
        pass.usage = usage();
        return nlohmann::ordered_json::parse(pass_line(pass))["usage"].dump();
    }

    MadeUpHost made_up_;
    UsageSources sources_;
};

TEST_F(UsedHost, ProcessesThatHaveMemory) {
    EXPECT_EQ(usage_text(), "{}");
    put_process("1", "Name:\tinit\nVmSize:\t 10 kB\nVmLck:\t 0 kB\nThreads:\t1\n", 3);
    put_process("2", "Name:\tkworker\nThreads:\t1\n", 9);
    put_process("3", "Name:\t a\\nb \nVmSize:\t10 kB\nVmLck:\t3000000000 kB\nThreads:\t1500\n", 7);
    put_process("4", "Name:\tended first\nThreads:\t20\n", 0);
    EXPECT_EQ(usage_text(), R"({"tasks":1521,"descriptors":{"value":7,"name":" a\\nb "},)"
                            R"("locked_kib":{"value":3000000000,"name":" a\\nb "}})");
    put_process("5", "Name:\todd\nVmSize:\t10 kB\n", 0);
    made_up_.put("5/fd", "no folder");
    EXPECT_EQ(usage_text(), "{}") << "what cannot be looked at could be the largest";
}

// Whether this kernel tells how many there are or leaves the counting to us.
TEST(Descriptors, OfTheRealKernel) {
    const auto own = [] {
        const Kiln::Descriptor proc(open("/proc", O_RDONLY | O_CLOEXEC));
        ProcessUsage seen;
        seen.saw_process(proc.get(), getpid(), "Name:\tme\nVmSize:\t1 kB\n");
        return seen.descriptors()->value;
    };
    const std::int64_t before = own();
    std::vector<Kiln::Descriptor> files;
    for (int i = 0; i < 100; ++i) {
        files.emplace_back(open("/", O_RDONLY | O_CLOEXEC));
    }
    EXPECT_EQ(own(), before + 100);
}

TEST_F(UsedHost, EverySourceIsRead) {
    made_up_.put("uptime", "10.50 1.00\n");
    made_up_.put("stat", "cpu  1 1 1 9 9 1 1 9 9 9\nprocs_running 3\n");
    made_up_.put("pressure/cpu", "some total=11\n");
    made_up_.put("pressure/memory", "some total=12\n");
    made_up_.put("pressure/io", "some total=13\n");
    made_up_.put("meminfo",
                 "MemTotal: 90 kB\nMemAvailable: 50 kB\nSwapTotal: 7 kB\nSwapFree: 5 kB\n");
    // Reads, sectors read, writes and sectors written, each with one behind it that does not count.
    made_up_.put("diskstats",
                 "   8       0 vda 1 7 2 7 3 7 4 7 0 7 7\n"
                 "   8       1 vda1 100 7 100 7 100 7 100 7 0 7 7\n"
                 " 252       0 dm-0 100 7 100 7 100 7 100 7 0 7 7\n"
                 " 259       0 nvme0n1 100 7 100 7 100 7 100 7 0 7 7\n"
                 " 259       1 nvme0c0n1 10 7 20 7 30 7 40 7 0 7 7\n"
                 " 104       0 cciss/c0d0 20 7 40 7 60 7 80 7 0 7 7\n");
    const std::string head = "devices/virtual/nvme-subsystem/nvme-subsys0/nvme0n1";
    for (const std::string disk : {"block/vda", "block/nvme0c0n1", "block/cciss!c0d0"}) {
        made_up_.put("sys/" + disk + "/device", "");
    }
    made_up_.put("sys/" + head + "/device", "");
    made_up_.put("sys/block/dm-0/size", "");
    fs::create_symlink("../" + head, made_up_.path("sys/block/nvme0n1"));
    // One by itself, two that are one, one in a bond, which is in a bridge.
    made_up_.put("net/dev",
                 " face |bytes    packets errs drop fifo frame compressed multicast|bytes\n"
                 "  eth0: 1 7 7 7 7 7 7 7 10 7\n   vf0: 100 7 7 7 7 7 7 7 100 7\n"
                 "eth1:4 7 7 7 7 7 7 7 40 7\n bond0: 100 7 7 7 7 7 7 7 100 7\n"
                 "   br0: 100 7 7 7 7 7 7 7 100 7\n    lo: 100 7 7 7 7 7 7 7 100 7\n");
    for (const std::string file : {"eth0/device", "vf0/device", "eth1/device", "bond0/mtu"}) {
        made_up_.put("sys/class/net/" + file, "");
    }
    fs::create_symlink("../eth0", made_up_.path("sys/class/net/vf0/master"));
    fs::create_symlink("../bond0", made_up_.path("sys/class/net/eth1/master"));
    // Disks: 62 * 512 read, 124 * 512 written, 31 + 93 operations. Nothing is mounted where shared
    // memory would be.
    EXPECT_EQ(usage_text(),
              R"({"uptime_ms":10500,"memory_kib":40,"swap_kib":2,"cpu_ms":50,)"
              R"("runnable":3,"cpu_pressure_us":11,"memory_pressure_us":12,"io_pressure_us":13,)"
              R"("disk_read_bytes":31744,"disk_written_bytes":63488,"disk_operations":124,)"
              R"("net_received_bytes":5,"net_sent_bytes":50})");
    ASSERT_TRUE(made_up_.shell("rm -r pressure sys/block net"));
    EXPECT_EQ(usage_text(),
              R"({"uptime_ms":10500,"memory_kib":40,"swap_kib":2,"cpu_ms":50,"runnable":3})");
}

TEST_F(UsedHost, SharedMemoryInUse) {
    sources_.paths.shm = "/dev/shm";
    std::string name = "/dev/shm/usage_test.XXXXXX";
    const Kiln::Descriptor file(mkstemp(name.data()));
    if (!file) {
        GTEST_SKIP() << "no shared memory to write to";
    }
    unlink(name.c_str());
    ASSERT_EQ(posix_fallocate(file.get(), 0, 8 << 20), 0);
    EXPECT_GE(usage().shm_kib, 8192);
    EXPECT_LT(*usage().shm_kib, static_cast<std::int64_t>(fs::space("/dev/shm").capacity / 2048));
}

TEST_F(UsedHost, HowLargeItIs) {
    made_up_.put("meminfo", "MemTotal: 90 kB\nSwapTotal: 7 kB\n");
    made_up_.put("sys/devices/system/cpu/online", "0-2\n");
    made_up_.put("sys/kernel/random/boot_id", "9b0b7d13-c910-4f72-848b-fb91ccdfaad1\n");
    made_up_.put("self/mounts",
                 "/dev/a / ext4 rw 0 0\n/dev/b /gone xfs rw 0 0\nn:/ /n nfs rw 0 0\n");
    sources_.file_system_size = [](const std::string& mount_point) {
        return mount_point == "/gone" ? std::nullopt
                                      : std::optional(FileSystemSize{mount_point, 5000, 300});
    };
    EXPECT_EQ(part_text(read_hardware(sources_)),
              R"({"cpus":3,"memory_kib":90,"swap_kib":7,)"
              R"("file_systems":[{"mount_point":"/","size_kib":5000,"inodes":300}],)"
              R"("boot_id":"9b0b7d13-c910-4f72-848b-fb91ccdfaad1"})");
}

TEST(FileSystems, AreAskedForTheirSize) {
    const std::optional<FileSystemSize> root = kernel_file_system_size("/");
    struct statvfs status = {};
    ASSERT_EQ(statvfs("/", &status), 0);
    ASSERT_TRUE(root);
    EXPECT_EQ(root->inodes, static_cast<std::int64_t>(status.f_files));
    EXPECT_EQ(root->size_kib, static_cast<std::int64_t>(status.f_blocks * status.f_frsize / 1024));
    EXPECT_FALSE(kernel_file_system_size("/proc")) << "has no size";
}

}  // namespace
