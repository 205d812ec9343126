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

const std::string most = "9223372036854775807";  // that a figure can be

Figure cpu_ms_at_100(std::string_view text) {
    return parse_cpu_ms(text, 100);
}

TEST(UsageParsers, OneFigure) {
    const Figure none;
    const std::tuple<Figure (*)(std::string_view), std::string, Figure> cases[] = {
        {cpu_ms_at_100, "ctxt 5\ncpu  1 20 300 9 9 4000 50000\ncpu0 9 9 9 9 9 9 9\n", 543210},
        {cpu_ms_at_100, "cpu 1 1 1 9 9 1\n", none},
        {cpu_ms_at_100, "cpu 1 1 1 9 9 1 1", none},  // torn
        {cpu_ms_at_100, "cpu 1 1 1 9 9 1 " + most + "\n", none},
        {cpu_ms_at_100, "cpu 0 0 0 9 9 0 " + most + "\n", none},
        {parse_runnable, "procs_running -0\n", none},
        {parse_runnable, "procs_running\n", none},
        {parse_pressure_us, "some avg10=0.82 avg300=4 total=6642\nfull avg10=0 total=9\n", 6642},
        {parse_pressure_us, "full avg10=0.00 total=9\n", none},
        {parse_pressure_us, "some avg10=0.00 total=9223372036854775808\n", none},
        {parse_uptime_ms, "657.07 1000.01\n", 657070},
        {parse_uptime_ms, "657.7 1\n", none},
        {parse_uptime_ms, "657.77 10", none},
        {parse_uptime_ms, most + ".00 1\n", none},
        {count_cpu_list, "0-3,8\n", 5},
        {count_cpu_list, "0\n", 1},
        {count_cpu_list, "3-0\n", none},
        {count_cpu_list, "0-3,\n", none},
        {count_cpu_list, "0-" + most + "\n", none},
        {count_cpu_list, "0-3", none},
    };
    for (const auto& [parse, text, figure] : cases) {
        EXPECT_EQ(parse(text), figure) << text;
    }
}

TEST(UsageParsers, BootId) {
    const std::string id = "9b0b7d13-c910-4f72-848b-fb91ccdfaad1";
    EXPECT_EQ(parse_boot_id(id + "\n"), id);
    const std::string others[] = {id, id + "1\n", "x" + id.substr(1) + "\n", "",
                                  id.substr(0, 8) + "e" + id.substr(9) + "\n"};
    for (const std::string& text : others) {
        EXPECT_EQ(parse_boot_id(text), "") << text;
    }
}

using Figures = std::vector<Figure>;

TEST(UsageParsers, MemoryInUse) {
    const auto of = [](const std::string& more) {
        const auto [total, used, swap_total, swap_used] = parse_memory_info(
            "MemTotal:  9000 kB\nMemFree: 100 kB\nBuffers: 20 kB\nCached: 3000 kB\n"
            "SwapTotal: 700 kB\nSwapFree: 699 kB\n" +
            more);
        return Figures{total, used, swap_total, swap_used};
    };
    EXPECT_EQ(of("MemAvailable: 5000 kB\nShmem: 9 kB\n"), (Figures{9000, 4000, 700, 1}));
    EXPECT_EQ(of("Shmem: 6 kB\n"), (Figures{9000, 9000 - 100 - 20 - 3000 + 6, 700, 1}));
    EXPECT_EQ(of(""), (Figures{9000, {}, 700, 1}));
    EXPECT_EQ(of("MemAvailable: 9001 kB\n"), (Figures{9000, {}, 700, 1}));
    EXPECT_EQ(of("MemAvailable: ? kB\nShmem: 6 kB\n"), (Figures{9000, {}, 700, 1}));
}

// Reads, sectors read, writes and sectors written, among what does not count.
std::string disk_line(const std::string& name, const std::string& reads,
                      const std::string& sectors_read, const std::string& writes,
                      const std::string& sectors_written) {
    return "   8       0 " + name + " " + reads + " 77 " + sectors_read + " 77 " + writes + " 77 " +
           sectors_written + " 77 0 77 77 77 77 77 77\n";
}

bool is_hard(std::string_view name) {
    return name.substr(0, 4) == "hard";
}

TEST(UsageParsers, Disks) {
    const auto of = [](const std::string& text) {
        const auto [read, written, operations] = parse_disk_totals(text, is_hard);
        return Figures{read, written, operations};
    };
    const std::string two = disk_line("hard1", "1", "2", "3", "4") +
                            disk_line("soft", "5", "6", "7", "8") +
                            disk_line("hard2", "10", "20", "30", "40");
    EXPECT_EQ(of(two), (Figures{22 * 512, 44 * 512, 44}));
    EXPECT_EQ(of(""), (Figures{0, 0, 0}));
    EXPECT_EQ(of(two + "8 0\n\n"), of(two));
    EXPECT_EQ(of(two.substr(0, two.size() - 1)), Figures(3)) << "torn";
    EXPECT_EQ(of("8 0 hard1 1 77 2 77\n"), (Figures{1024, {}, {}}));
    EXPECT_EQ(of(two + disk_line("hard3", "1", most, "-1", "4")), (Figures{{}, 48 * 512, {}}));
    EXPECT_EQ(of(two + disk_line("hard3", most, "1", "0", "1")), (Figures{23 * 512, 45 * 512, {}}));
}

TEST(UsageParsers, Interfaces) {
    const auto of = [](const std::string& text) {
        const auto [received, sent] = parse_net_totals(text, is_hard);
        return Figures{received, sent};
    };
    const std::string two =
        "Inter-|   Receive                                                |  Transmit\n"
        " face |bytes    packets errs drop fifo frame compressed multicast|bytes    packets\n"
        "    lo:    3267      29    0    0    0     0          0         0     3267      29\n"
        " hard1: 1000 7 7 7 7 7 7 7 20 7 7 7 7 7 7 7\n"
        "hard2:300 7 7 7 7 7 7 7 4 7 7 7 7 7 7 7\n";
    EXPECT_EQ(of(two), (Figures{1300, 24}));
    EXPECT_EQ(of(""), (Figures{0, 0}));
    EXPECT_EQ(of(two.substr(0, two.size() - 1)), Figures(2)) << "torn";
    EXPECT_EQ(of(two + "hard3: 1 2 3\n"), (Figures{1301, {}}));
    EXPECT_EQ(of(two + "hard3: " + most + " 7 7 7 7 7 7 7 1 7\n"), (Figures{{}, 25}));
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
    EXPECT_EQ(of({"nas:/x /data nfs", "/dev/vdb /data xfs"}), Texts{"/"});
    EXPECT_EQ(of({"/dev/vdb /data xfs", "/dev/vdc /data ext3", "/dev/vdb /old xfs"}),
              (Texts{"/", "/data", "/old"}));
    EXPECT_EQ(of({"/dev/root / nfs", "/dev/vdb /scratch xfs"}), Texts{"/scratch"});
}

// Its processes have files whose number is that of their folder's entries.
class UsedHost : public testing::Test {
protected:
    void put_process(const std::string& pid, const std::string& status, int descriptors) {
        made_up_.put(pid + "/status", status);
        for (int i = 0; i < descriptors; ++i) {
            made_up_.put(pid + "/fd/" + std::to_string(i), "");
        }
    }

    ProcessUsage processes() const {
        ProcessUsage seen;
        EXPECT_TRUE(scan_memory(made_up_.host, &seen));
        return seen;
    }

    MadeUpHost made_up_;
};

std::string text_of(const std::optional<ProcessFigure>& figure) {
    return figure ? figure->name + " " + std::to_string(figure->value) : "none";
}

TEST_F(UsedHost, ProcessesThatHaveMemory) {
    EXPECT_EQ(processes().tasks(), Figure());
    EXPECT_EQ(text_of(processes().descriptors()), "none");
    put_process("1", "Name:\tinit\nVmSize:\t 10 kB\nVmLck:\t 0 kB\nThreads:\t1\n", 3);
    EXPECT_EQ(text_of(processes().locked_kib()), " 0");
    put_process("2", "Name:\tkworker\nThreads:\t1\n", 9);
    put_process("3", "Name:\t a\\nb \nVmSize:\t10 kB\nVmLck:\t3000000000 kB\nThreads:\t1500\n", 7);
    put_process("4", "Name:\tended first\nThreads:\t20\n", 0);
    put_process("5", "Name:\tquiet\nVmSize:\t10 kB\nVmLck:\t64 kB\nThreads:\t1\n", 2);
    fs::remove_all(made_up_.path("5/fd"));  // it has just ended
    EXPECT_EQ(processes().tasks(), 1522);
    EXPECT_EQ(text_of(processes().descriptors()), " a\\nb  7");
    EXPECT_EQ(text_of(processes().locked_kib()), " a\\nb  3000000000");
}

TEST_F(UsedHost, AProcessThatCannotBeLookedAtCouldBeTheLargest) {
    put_process("1", "Name:\tinit\nVmSize:\t 10 kB\nVmLck:\t 8 kB\nThreads:\t1\n", 3);
    put_process("2", "Name:\todd\nVmSize:\t10 kB\n", 0);
    made_up_.put("2/fd", "no folder");
    EXPECT_EQ(processes().tasks(), Figure());
    EXPECT_EQ(text_of(processes().descriptors()), "none");
    EXPECT_EQ(text_of(processes().locked_kib()), "none");
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
    EXPECT_LT(before, 50);
}

class ReadHost : public UsedHost {
protected:
    ReadHost() {
        sources_.paths = {made_up_.root, made_up_.path("sys"), made_up_.root};
        sources_.ticks_per_second = 100;
        made_up_.put("uptime", "10.50 1.00\n");
        made_up_.put("stat", "cpu  1 1 1 9 9 1 1 9 9 9\nprocs_running 3\n");
        made_up_.put("pressure/cpu", "some total=11\n");
        made_up_.put("pressure/memory", "some total=12\n");
        made_up_.put("pressure/io", "some total=13\n");
        made_up_.put("meminfo",
                     "MemTotal: 90 kB\nMemAvailable: 50 kB\nSwapTotal: 7 kB\nSwapFree: 5 kB\n");
        made_up_.put("diskstats", disk_line("vda", "1", "1", "1", "1") +
                                      disk_line("vda1", "2", "2", "2", "2") +
                                      disk_line("dm-0", "4", "4", "4", "4") +
                                      disk_line("nvme0n1", "8", "8", "8", "8") +
                                      disk_line("nvme0c0n1", "16", "16", "16", "16") +
                                      disk_line("cciss/c0d0", "32", "32", "32", "32"));
        const std::string head = "devices/virtual/nvme-subsystem/nvme-subsys0/nvme0n1";
        for (const std::string& disk : {std::string("block/vda"), std::string("block/nvme0c0n1"),
                                        std::string("block/cciss!c0d0"), head}) {
            made_up_.put("sys/" + disk + "/device", "");
        }
        made_up_.put("sys/block/dm-0/size", "");
        fs::create_symlink("../" + head, made_up_.path("sys/block/nvme0n1"));
        // One by itself, two that are one, one in a bond, which is in a bridge.
        const auto line = [](const std::string& name, const std::string& bytes) {
            return name + ": " + bytes + " 0 0 0 0 0 0 0 " + bytes + " 0 0 0 0 0 0 0\n";
        };
        made_up_.put("net/dev", line("eth0", "1") + line("vf0", "2") + line("eth1", "4") +
                                    line("bond0", "8") + line("br0", "16") + line("lo", "32"));
        for (const char* file : {"eth0/device", "vf0/device", "eth1/device", "bond0/mtu"}) {
            made_up_.put(std::string("sys/class/net/") + file, "");
        }
        fs::create_symlink("../eth0", made_up_.path("sys/class/net/vf0/master"));
        fs::create_symlink("../bond0", made_up_.path("sys/class/net/eth1/master"));
    }

    Usage usage() const { return read_usage(sources_, processes()); }

    // As a pass has it in its line.
    nlohmann::ordered_json json() const {
        RecordedPass pass;
        pass.usage = usage();
        return nlohmann::ordered_json::parse(pass_line(pass))["usage"];
    }

    UsageSources sources_;
};

TEST_F(ReadHost, EverySourceIsRead) {
    put_process("1", "Name:\tinit\nVmSize:\t 10 kB\nVmLck:\t 8 kB\nThreads:\t2\n", 3);
    // Disks: (1 + 16 + 32) * 512 and 2 * (1 + 16 + 32), interfaces: 1 + 4. Nothing is mounted where
    // shared memory would be.
    EXPECT_EQ(json().dump(),
              R"({"uptime_ms":10500,"tasks":2,"memory_kib":40,"swap_kib":2,"cpu_ms":50,)"
              R"("runnable":3,"cpu_pressure_us":11,"memory_pressure_us":12,"io_pressure_us":13,)"
              R"("disk_read_bytes":25088,"disk_written_bytes":25088,"disk_operations":98,)"
              R"("net_received_bytes":5,"net_sent_bytes":5,)"
              R"("descriptors":{"value":3,"name":"init"},"locked_kib":{"value":8,"name":"init"}})");
}

TEST_F(ReadHost, ASourceThatIsMissingCostsItsMembers) {
    const std::pair<const char*, std::vector<const char*>> sources[] = {
        {"uptime", {"uptime_ms"}},
        {"stat", {"cpu_ms", "runnable"}},
        {"pressure/cpu", {"cpu_pressure_us"}},
        {"pressure/memory", {"memory_pressure_us"}},
        {"pressure/io", {"io_pressure_us"}},
        {"diskstats", {"disk_read_bytes", "disk_written_bytes", "disk_operations"}},
        {"sys/block", {"disk_read_bytes", "disk_written_bytes", "disk_operations"}},
        {"net/dev", {"net_received_bytes", "net_sent_bytes"}},
        {"sys/class/net", {"net_received_bytes", "net_sent_bytes"}},
        {"meminfo", {"memory_kib", "swap_kib"}},
    };
    for (const auto& [source, members] : sources) {
        nlohmann::ordered_json rest = json();
        for (const char* const member : members) {
            rest.erase(member);
        }
        fs::rename(made_up_.path(source), made_up_.path("aside"));
        EXPECT_EQ(json(), rest) << source;
        fs::rename(made_up_.path("aside"), made_up_.path(source));
    }
}

TEST_F(ReadHost, SharedMemoryInUse) {
    sources_.paths.shm = "/dev/shm";
    std::string name = "/dev/shm/usage_test.XXXXXX";
    const Kiln::Descriptor file(mkstemp(name.data()));
    if (!file) {
        GTEST_SKIP() << "no shared memory to write to";
    }
    unlink(name.c_str());
    ASSERT_TRUE(usage().shm_kib);
    ASSERT_EQ(posix_fallocate(file.get(), 0, 8 << 20), 0);
    EXPECT_GE(usage().shm_kib, 8192);
    EXPECT_LT(*usage().shm_kib, static_cast<std::int64_t>(fs::space("/dev/shm").capacity / 2048));
    std::string folder = "/dev/shm/usage_test.XXXXXX";
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    sources_.paths.shm = folder;
    EXPECT_FALSE(usage().shm_kib) << "nothing is mounted there";
    fs::remove(folder);
}

TEST_F(ReadHost, HowLargeItIs) {
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
    fs::remove_all(made_up_.root);
    EXPECT_EQ(part_text(read_hardware(sources_)), R"({"file_systems":[],"boot_id":""})");
}

TEST(FileSystems, AreAskedForTheirSize) {
    const std::optional<FileSystemSize> root = kernel_file_system_size("/");
    struct statvfs status = {};
    ASSERT_EQ(statvfs("/", &status), 0);
    ASSERT_TRUE(root);
    EXPECT_EQ(root->mount_point, "/");
    EXPECT_EQ(root->inodes, static_cast<std::int64_t>(status.f_files));
    EXPECT_EQ(root->size_kib, static_cast<std::int64_t>(status.f_blocks * status.f_frsize / 1024));
    EXPECT_FALSE(kernel_file_system_size("/proc")) << "has no size";
    EXPECT_FALSE(kernel_file_system_size("/no such folder"));
}

}  // namespace
