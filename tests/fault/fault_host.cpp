#include "tests/fault/fault_host.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <thread>
#include <tuple>

#include "tests/support/private_host.h"

namespace {

using private_host::write_file;

constexpr std::chrono::seconds time_limit(60);
constexpr const char* page_path = "/tmp/page";
constexpr const char* out_path = "/tmp/out";
constexpr const char* err_path = "/tmp/err";

std::string read_file(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void write_program(const std::string& path, const std::string& bytes) {
    write_file(path, bytes);
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
}

// The machine's own /proc stays in sight under another name, for the sanitizers' runtime.
bool cover_kernel_files() {
    std::filesystem::create_directories("/tmp/proc");
    if (mount("/proc", "/tmp/proc", nullptr, MS_BIND | MS_REC, nullptr) != 0 ||
        mount("none", "/proc", "tmpfs", 0, nullptr) != 0 ||
        mount("none", "/sys", "tmpfs", 0, nullptr) != 0) {
        return false;
    }
    std::filesystem::create_directories("/proc/self");
    for (const std::string name : {"maps", "task", "exe", "cmdline", "environ", "status"}) {
        std::filesystem::create_symlink("/tmp/proc/self/" + name, "/proc/self/" + name);
    }
    return true;
}

bool add_links() {
    return std::system(
               "ip link add eth0 type veth peer name p0 2>/tmp/ip.log &&"
               "ip link set eth0 addrgenmode none up && ip link set p0 addrgenmode none &&"
               "ip address add 10.0.0.1/24 dev eth0 &&"
               "ip address add fd00::1/64 dev eth0 nodad &&"
               "ip address add 10.0.1.1/24 dev p0") == 0;
}

void write_process(int pid, const std::string& sizes) {
    write_file("/proc/" + std::to_string(pid) + "/status",
               "Name:\tp\nPPid:\t" + std::to_string(pid + 1000) + "\n" + sizes);
}

void write_mount_tables() {
    write_file("/proc/filesystems", "nodev\tproc\n\text4\n");
    write_file("/etc/fstab", "/dev/cd /cd iso9660 ro 0 0\n");
    write_file("/etc/mtab",
               "/tmp/disk / ext4 rw,usrquota 0 0\nproc /proc proc rw 0 0\nhost:/x /x nfs rw 0 0\n");
    write_file("/tmp/disk", "");
}

// Every source that libtarnnet knows says something.
void write_network_files() {
    write_file("/etc/tarn/tarnnet.conf",
               "VNID_br0=\"net1\"\nIFLST_br0=\"eth0 p0\"\nVLAN_eth0=\"10 20\"\n"
               "ADDR_eth0=\"10.0.0.1 10.0.0.2\"\nADDR_eth7=\"10.0.0.7\"\n");
    write_file("/proc/net/vlan/config",
               "VLAN Dev name\nName-Type: VLAN_NAME_TYPE_RAW_PLUS_VID\neth0.10 | 10 | eth0\n");
    write_file("/proc/tarn/veth", "Version: 1.0\nm veth101.0 m eth0 101\n");
    write_file("/proc/tarn/vmth", "Version: 1.0\nvme101.0\n");
    std::filesystem::create_directories("/sys/class/net/br0/bridge");
    std::filesystem::create_directories("/sys/class/net/br0/brif/veth101.0");
    write_file("/etc/sysconfig/network-scripts/ifcfg-eth0", "DEVICE=eth0\nBOOTPROTO=dhcp\n");
    write_file("/etc/resolv.conf", "search a.example b.example\nnameserver 10.0.0.53\n");
}

int wait_for_program(pid_t pid) {
    const auto end = std::chrono::steady_clock::now() + time_limit;
    int status = 0;
    while (waitpid(pid, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > end) {
            ADD_FAILURE() << "the program does not end";
            kill(pid, SIGKILL);
            waitpid(pid, &status, 0);
            return -1;
        }
        std::this_thread::sleep_for(std::chrono::microseconds(500));
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void redirect(int fd, const char* path) {
    dup2(open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600), fd);
}

}  // namespace

bool operator<(const Outcome& left, const Outcome& right) {
    return std::tie(left.status, left.out, left.err) < std::tie(right.status, right.out, right.err);
}

bool operator==(const Outcome& left, const Outcome& right) {
    return !(left < right) && !(right < left);
}

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
    return stream << "status " << outcome.status << "\n--- standard output\n"
                  << outcome.out << "--- standard error\n"
                  << outcome.err;
}

FaultHost::FaultHost()
    : program_(read_file(TARN_PROGRAM)),
      library_(read_file(FAULT_LIBRARY)),
      shell_(read_file(FAULT_SHELL)) {}

bool FaultHost::raise() {
    if (!cover_kernel_files() || !add_links()) {
        return false;
    }
    write_program("/tmp/tarnhwcalc", program_);
    write_program("/tmp/fault.so", library_);
    write_program("/tmp/bin/sh", shell_);
    write_file("/tmp/usr/local/share/tarnp2v/distdetect-common.sh", "");
    write_process(101, "VmSize:\t400000 kB\nVmLck:\t2000 kB\n");
    write_process(102, "VmSize:\t300000 kB\nVmLck:\t1000 kB\n");
    write_mount_tables();
    write_network_files();
    write_file("/var/log/lastlog", "");
    std::filesystem::resize_file("/var/log/lastlog", 1073741825);

    const std::string zeros(sizeof(fault_page), '\0');
    write_file(page_path, zeros);
    const int fd = open(page_path, O_RDWR | O_CLOEXEC);
    void* mapped = mmap(nullptr, sizeof(fault_page), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    close(fd);
    page_ = static_cast<fault_page*>(mapped);
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    return mapped != MAP_FAILED && chdir("/") == 0;
}

void FaultHost::write_page(const Fault& fault) {
    const int alarms = page_->alarm_usec;
    *page_ = fault_page{};
    page_->call = fault.call;
    page_->at = fault.at;
    page_->error = fault.error;
    page_->in_child = fault.in_child ? 1 : 0;
    page_->alarm_usec = alarms;
}

void FaultHost::start_program(const std::vector<std::string>& arguments,
                              const std::vector<std::string>& environment) const {
    redirect(STDOUT_FILENO, out_path);
    redirect(STDERR_FILENO, err_path);
    std::vector<const char*> argv = {"tarnhwcalc"};
    for (const std::string& argument : arguments) {
        argv.push_back(argument.c_str());
    }
    argv.push_back(nullptr);
    // A sanitizer's leak check wants the task list of the process by its number.
    const std::string tasks = std::to_string(getpid()) + "/task";
    std::filesystem::create_directories("/proc/" + std::to_string(getpid()));
    std::filesystem::create_symlink("/tmp/proc/" + tasks, "/proc/" + tasks);
    clearenv();
    setenv("PATH", "/tmp/bin", 1);
    setenv("LD_PRELOAD", "/tmp/fault.so", 1);
    setenv(FAULT_PAGE_VARIABLE, page_path, 1);
    setenv("ASAN_OPTIONS", "verify_asan_link_order=0", 1);
    for (const std::string& entry : environment) {
        putenv(const_cast<char*>(entry.c_str()));
    }
    execv("/tmp/tarnhwcalc", const_cast<char* const*>(argv.data()));
    _exit(127);
}

Outcome FaultHost::run(const Fault& fault, const std::vector<std::string>& arguments,
                       const std::vector<std::string>& environment, int kept) {
    write_page(fault);
    const pid_t pid = fork();
    if (pid == 0) {
        start_program(arguments, environment);
    }
    Outcome outcome;
    outcome.status = wait_for_program(pid);
    EXPECT_EQ(page_->finished, 1) << "the program did not end by its own exit";
    EXPECT_EQ(page_->descriptors_after - page_->descriptors_before, page_->hit != 0 ? kept : 0);
    EXPECT_EQ(page_->children_left, 0) << "a child was not waited for";
    EXPECT_TRUE(waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD) << "a process is left";
    std::filesystem::remove_all("/proc/" + std::to_string(pid));
    outcome.out = read_file(out_path);
    outcome.err = read_file(err_path);
    return outcome;
}

Outcome FaultHost::run_without(const std::string& path) {
    std::filesystem::rename(path, path + ".away");
    const Outcome outcome = run({});
    std::filesystem::rename(path + ".away", path);
    return outcome;
}
