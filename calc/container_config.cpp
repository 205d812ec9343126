// The widths and precisions of every step decide the numbers: 32-bit integers wrap, a float times a
// float is a float, and where a margin is a double the product is rounded to float before it is
// clamped. Change none of them.
#include "calc/container_config.h"

#include <unistd.h>

#include <cstdint>

#include "calc/tarn_hwcalc.h"
#include "kiln/numbers.h"
#include "kiln/strings.h"

namespace {

// What every container gets at least; before scaling, where not said otherwise.
constexpr std::int32_t numproc_floor = 240;
constexpr float avnumproc_floor = 180.0F;  // after scaling
constexpr std::int32_t numtcpsock_floor = 360;
constexpr std::int32_t numothersock_floor = 360;
constexpr std::int32_t numfile_floor = 9312;
constexpr std::int32_t numpty_floor = 255;         // never scaled
constexpr std::int32_t privvmpages_floor = 65536;  // after scaling, unlike the other counts
constexpr std::int32_t lockedpages_floor = 256;
constexpr std::int32_t shmpages_floor = 21504;
constexpr std::int32_t shmpages_written_floor = 1024;
constexpr std::int32_t numflock_floor = 188;
constexpr std::int32_t numiptent_floor = 128;
constexpr std::int32_t quotaugidlimit_floor = 1024;  // where there are quotas at all

// How much is kept in reserve.
constexpr double margin = 1.1;
constexpr float memory_margin = 1.1F;

// What one unit of a count costs.
constexpr float files_per_process = 32.0F;
constexpr std::int32_t dentry_bytes_per_file = 384;
constexpr unsigned process_page_shift = 12;
constexpr std::int32_t pages_per_process = 15;
constexpr unsigned socket_buffer_shift = 16;
constexpr double socket_reserve_kib = 2.5;
constexpr double negative_kib = -1024.0;

// Values that no measurement changes.
constexpr std::int32_t dgramrcvbuf_bytes = 262144;
constexpr std::int32_t no_limit = 2147483647;
constexpr std::uint64_t physpages_limit = 9223372036854775807U;
constexpr std::uint64_t numsiginfo = 256;
constexpr std::uint64_t cpuunits = 1000;
constexpr std::uint64_t quotatime = 0;
constexpr std::int32_t max_memory_pages = 0x3FFFFFFF;

std::int32_t scaled(const char* name, std::int32_t value, float scale) {
    return TarnHWCalc::check_overflow_parameter(name, static_cast<float>(value) * scale);
}

// Raised to the floor first, then scaled.
std::int32_t floored_and_scaled(const char* name, std::int32_t value, std::int32_t floor,
                                float scale) {
    TarnHWCalc::set_max(value, floor);
    return scaled(name, value, scale);
}

// `value` and a tenth more, multiplied in double precision and rounded to float.
std::int32_t with_margin(const char* name, std::int32_t value) {
    const auto product = static_cast<float>(static_cast<double>(value) * margin);
    return TarnHWCalc::check_overflow_parameter(name, product);
}

// Brings the measured counts up to what the container shall have.
void adjust(PhysParams& p, float mem_scale, float disk_scale) {
    p.diskspace = scaled("DISKSPACE", p.diskspace, disk_scale);
    p.diskinodes = scaled("DISKINODES", p.diskinodes, disk_scale);
    p.numproc = floored_and_scaled("NUMPROC", p.numproc, numproc_floor, mem_scale);
    p.avnumproc = mem_scale * p.avnumproc;
    if (avnumproc_floor > p.avnumproc) {  // a NaN stays
        p.avnumproc = avnumproc_floor;
    }
    p.numtcpsock = floored_and_scaled("NUMTCPSOCK", p.numtcpsock, numtcpsock_floor, mem_scale);
    p.numothersock =
        floored_and_scaled("NUMOTHERSOCK", p.numothersock, numothersock_floor, mem_scale);
    p.numfile = floored_and_scaled("NUMFILE", p.numfile, numfile_floor, mem_scale);
    TarnHWCalc::set_max(p.numpty, numpty_floor);
    p.privvmpages = scaled("PRIVVMPAGES", p.privvmpages, mem_scale);
    TarnHWCalc::set_max(p.privvmpages, privvmpages_floor);
    p.lockedpages = floored_and_scaled("LOCKEDPAGES", p.lockedpages, lockedpages_floor, mem_scale);
    p.shmpages = floored_and_scaled("SHMPAGES", p.shmpages, shmpages_floor, mem_scale);
    p.numflock = floored_and_scaled("NUMFLOCK", p.numflock, numflock_floor, mem_scale);
    p.numiptent = floored_and_scaled("NUMIPTENT", p.numiptent, numiptent_floor, mem_scale);
    if (p.quotaugidlimit != 0) {
        p.quotaugidlimit = Kiln::wrap_mul(p.quotaugidlimit, 2);
        TarnHWCalc::set_max(p.quotaugidlimit, quotaugidlimit_floor);
    }
}

// Sign-extended, so that a negative number is written with twenty digits; that is the rule.
std::uint64_t extended(std::int32_t value) {
    return static_cast<std::uint64_t>(std::int64_t{value});
}

// A barrier and a limit.
struct Pair {
    std::int32_t barrier;
    std::int32_t limit;
};

// The buffers that so many sockets need.
Pair socket_buffers(const char* name, std::int32_t sockets) {
    const auto all = static_cast<float>(Kiln::wrap_shift_left(sockets, socket_buffer_shift));
    const double reserve = static_cast<double>(sockets) * socket_reserve_kib * negative_kib;
    const auto barrier = static_cast<float>(static_cast<double>(all) + reserve);
    return {TarnHWCalc::check_overflow_parameter(name, barrier),
            TarnHWCalc::check_overflow_parameter(name, all)};
}

// Writes the lines of one configuration. `kmem_total_` gathers the bytes of kernel and user memory
// that the container may need, in single precision and in the order of the lines.
class Writer {
public:
    Writer(const PhysParams& adjusted, float mem_scale, EnvConfig& config)
        : p_(adjusted), mem_scale_(mem_scale), config_(config) {}

    void write();

private:
    void add(const char* name, std::int32_t barrier, std::int32_t limit) {
        config_.add_2ul_param(name, extended(barrier), extended(limit));
    }
    void add(const char* name, std::int32_t both) { add(name, both, both); }
    void add(const char* name, const std::string& value) { config_.add_param(name, value.c_str()); }

    void add_process_lines();
    void raise_file_count();
    void add_kernel_memory_lines();
    void add_socket_buffer_lines();
    void add_page_lines();
    void add_count_lines();
    void add_disk_lines();
    void add_memory_limit_line();
    void add_identity_lines();

    void need(float bytes) { kmem_total_ += bytes; }
    void need_pages(std::int32_t pages) {
        need(static_cast<float>(getpagesize()) * static_cast<float>(pages));
    }

    PhysParams p_;
    const float mem_scale_;
    EnvConfig& config_;
    float kmem_total_ = 0.0F;
};

void Writer::add_process_lines() {
    add("NUMPROC", p_.numproc);
    add("AVNUMPROC", TarnHWCalc::check_overflow_parameter("AVNUMPROC", p_.avnumproc));
    add("NUMTCPSOCK", p_.numtcpsock);
    add("NUMOTHERSOCK", p_.numothersock);
    add("NUMPTY", p_.numpty);
    raise_file_count();
    add("NUMFILE", p_.numfile);
}

// Every socket and terminal is an open file, and every process has some.
void Writer::raise_file_count() {
    const std::int32_t sockets = Kiln::wrap_add(p_.numtcpsock, p_.numothersock);
    const std::int32_t descriptors = Kiln::wrap_add(sockets, p_.numpty);
    const auto name = "NUMFILE";
    TarnHWCalc::set_max(
        p_.numfile, TarnHWCalc::check_overflow_parameter(name, static_cast<float>(descriptors)));
    TarnHWCalc::set_max(
        p_.numfile, TarnHWCalc::check_overflow_parameter(name, files_per_process * p_.avnumproc));
}

void Writer::add_kernel_memory_lines() {
    p_.dcachesize = with_margin("DCACHESIZE", Kiln::wrap_mul(p_.numfile, dentry_bytes_per_file));
    add("DCACHESIZE", p_.dcachesize);

    const std::int32_t stacks =
        Kiln::wrap_mul(Kiln::wrap_shift_left(p_.numproc, process_page_shift), pages_per_process);
    const auto bytes = static_cast<float>(Kiln::wrap_add(stacks, p_.dcachesize));
    const std::int32_t kmemsize = TarnHWCalc::check_overflow_parameter("KMEMSIZE", bytes);
    add("KMEMSIZE", kmemsize);
    kmem_total_ = static_cast<float>(kmemsize);
}

void Writer::add_socket_buffer_lines() {
    const Pair tcp = socket_buffers("TCPSNDBUF", p_.numtcpsock);
    add("TCPSNDBUF", tcp.barrier, tcp.limit);
    add("TCPRCVBUF", tcp.barrier, tcp.limit);
    need(static_cast<float>(Kiln::wrap_mul(2, tcp.limit)));

    const Pair other = socket_buffers("OTHERSOCKBUF", p_.numothersock);
    add("OTHERSOCKBUF", other.barrier, other.limit);
    need(static_cast<float>(other.limit));  // once, unlike the TCP buffers

    add("DGRAMRCVBUF", dgramrcvbuf_bytes);
    need(static_cast<float>(dgramrcvbuf_bytes));
}

void Writer::add_page_lines() {
    const std::int32_t limit = TarnHWCalc::check_overflow_parameter(
        "PRIVVMPAGES", static_cast<float>(p_.privvmpages) * memory_margin);
    add("PRIVVMPAGES", p_.privvmpages, limit);
    need_pages(limit);

    const std::int32_t guaranteed = p_.privvmpages & 0x7FFFFFFF;
    add("VMGUARPAGES", guaranteed, no_limit);
    add("OOMGUARPAGES", guaranteed, no_limit);
    add("LOCKEDPAGES", p_.lockedpages);
    need_pages(p_.lockedpages);

    std::int32_t shmpages = p_.shmpages;
    TarnHWCalc::set_max(shmpages, shmpages_written_floor);
    add("SHMPAGES", shmpages);
    config_.add_2ul_param("PHYSPAGES", 0, physpages_limit);
}

void Writer::add_count_lines() {
    add("NUMFLOCK", p_.numflock, with_margin("NUMFLOCK", p_.numflock));
    config_.add_2ul_param("NUMSIGINFO", numsiginfo, numsiginfo);
    add("NUMIPTENT", p_.numiptent);
}

void Writer::add_disk_lines() {
    add("DISKSPACE", p_.diskspace, with_margin("DISKSPACE", p_.diskspace));
    add("DISKINODES", p_.diskinodes, with_margin("DISKINODES", p_.diskinodes));
    config_.add_ul_param("CPUUNITS", cpuunits);
    config_.add_ul_param("QUOTATIME", quotatime);
    config_.add_ul_param("QUOTAUGIDLIMIT", extended(p_.quotaugidlimit));
}

void Writer::add_memory_limit_line() {
    kmem_total_ = mem_scale_ * kmem_total_;
    // The product wraps in 32 bits, on purpose: the cap lies one page below 2^64.
    const std::uint64_t cap = extended(Kiln::wrap_mul(getpagesize(), max_memory_pages));
    const bool below_cap = static_cast<float>(cap) > kmem_total_;
    const std::uint64_t memory_limit = below_cap ? Kiln::truncate_to_uint64(kmem_total_) : cap;
    config_.add_2ul_param("SLMMEMORYLIMIT", memory_limit, memory_limit);
    config_.add_param("SLMMODE", "all");
}

void Writer::add_identity_lines() {
    const auto joined = [](const std::vector<std::string>& list) {
        return Kiln::join(" ", list.begin(), list.end());
    };
    add("DISTRIBUTION", p_.distribution);
    add("HOSTNAME", p_.hostname);
    add("#IP_ADDRESS", p_.ifaces.get_ip());  // a comment in the configuration, on purpose
    add("SEARCHDOMAIN", joined(p_.ns_attrs.search_domains));
    add("NAMESERVER", joined(p_.ns_attrs.nameservers));
    if (p_.nfs_used) {
        config_.add_param("FEATURES", "nfs:on");
    }
}

void Writer::write() {
    add_process_lines();
    add_kernel_memory_lines();
    add_socket_buffer_lines();
    add_page_lines();
    add_count_lines();
    add_disk_lines();
    add_memory_limit_line();
    add_identity_lines();
}

}  // namespace

void add_container_config(const PhysParams& profile, float mem_scale, float disk_scale,
                          EnvConfig& config) {
    PhysParams adjusted = profile;
    adjust(adjusted, mem_scale, disk_scale);
    Writer(adjusted, mem_scale, config).write();
}
