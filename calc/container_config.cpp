// The widths and precisions of every step decide the numbers: 32-bit integers wrap, a float times a
// float is a float, and where a margin is a double the product is rounded to float before it is
// clamped. Change none of them.
#include "calc/container_config.h"

#include <cfloat>
#include <utility>

#include "kiln/numbers.h"
#include "kiln/strings.h"

static_assert(FLT_EVAL_METHOD == 0, "a float must be rounded to a float at every step");

namespace {

using Kiln::truncate_to_int32;

// What every container gets at least, and how each count is scaled.
constexpr CountRule numproc_rule = {"numproc", &PhysParams::numproc, 240, true, Factor::memory};
constexpr CountRule avnumproc_rule = {"avnumproc", nullptr, 180, false, Factor::memory};
constexpr CountRule numtcpsock_rule = {"numtcpsock", &PhysParams::numtcpsock, 360, true,
                                       Factor::memory};
constexpr CountRule numothersock_rule = {"numothersock", &PhysParams::numothersock, 360, true,
                                         Factor::memory};
constexpr CountRule numfile_rule = {"numfile", &PhysParams::numfile, 9312, true, Factor::memory};
constexpr CountRule numpty_rule = {"numpty", &PhysParams::numpty, 255, false, Factor::none};
// The floor after the scaling, unlike the other counts; that is the rule.
constexpr CountRule privvmpages_rule = {"privvmpages", &PhysParams::privvmpages, 65536, false,
                                        Factor::memory};
constexpr CountRule lockedpages_rule = {"lockedpages", &PhysParams::lockedpages, 256, true,
                                        Factor::memory};
constexpr CountRule shmpages_rule = {"shmpages", &PhysParams::shmpages, 21504, true,
                                     Factor::memory};
constexpr CountRule numflock_rule = {"numflock", &PhysParams::numflock, 188, true, Factor::memory};
constexpr CountRule numiptent_rule = {"numiptent", &PhysParams::numiptent, 128, true,
                                      Factor::memory};
constexpr CountRule diskspace_rule = {"diskspace", &PhysParams::diskspace, no_floor, false,
                                      Factor::disk};
constexpr CountRule diskinodes_rule = {"diskinodes", &PhysParams::diskinodes, no_floor, false,
                                       Factor::disk};
// Where there are quotas at all: 0 stays 0.
constexpr CountRule quotaugidlimit_rule = {"quotaugidlimit", &PhysParams::quotaugidlimit, 1024,
                                           false, Factor::two};

constexpr std::int32_t shmpages_written_floor = 1024;

// How much is kept in reserve.
constexpr double no_margin = 1.0;
constexpr double margin = 1.1;
constexpr float memory_margin = 1.1F;

// What one unit of a count costs.
constexpr float files_per_process = 32.0F;
constexpr std::int64_t dentry_bytes_per_file = 384;
constexpr std::int64_t kernel_bytes_per_process = std::int64_t{15} * 4096;
constexpr std::int64_t socket_buffer_bytes = 65536;
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

// Sign-extended, so that a negative number is written with twenty digits; that is the rule.
std::uint64_t extended(std::int32_t value) {
    return static_cast<std::uint64_t>(std::int64_t{value});
}

// `value` and a tenth more, multiplied in double precision and rounded to float.
std::int32_t with_margin(std::int32_t value) {
    return truncate_to_int32(static_cast<float>(static_cast<double>(value) * margin));
}

std::string joined(const std::vector<std::string>& list) {
    return Kiln::join(" ", list);
}

// The low 32 bits of a product or a sum, and whether that lost something.
struct Cut {
    std::int32_t value;
    bool wrapped;
};

Cut cut(std::int64_t exact) {
    const auto value = static_cast<std::int32_t>(static_cast<std::uint32_t>(exact));
    return {value, value != exact};
}

// A barrier and a limit.
struct Pair {
    std::int32_t barrier;
    std::int32_t limit;
    bool wrapped = false;
};

Pair alike(Cut both) {
    return {both.value, both.value, both.wrapped};
}

// The bytes of buffers that so many sockets need.
Pair socket_buffers(std::int32_t sockets) {
    const Cut bytes = cut(std::int64_t{sockets} * socket_buffer_bytes);
    const auto all = static_cast<float>(bytes.value);
    const double reserve = static_cast<double>(sockets) * socket_reserve_kib * negative_kib;
    const auto barrier = static_cast<float>(static_cast<double>(all) + reserve);
    return {truncate_to_int32(barrier), truncate_to_int32(all), bytes.wrapped};
}

std::int32_t scaled(std::int32_t value, Factor factor, ConfigScales scales) {
    switch (factor) {
        case Factor::memory:
            return truncate_to_int32(static_cast<float>(value) * scales.memory);
        case Factor::disk:
            return truncate_to_int32(static_cast<float>(value) * scales.disk);
        case Factor::two:
            return Kiln::wrap_mul(value, 2);
        case Factor::none:
            break;
    }
    return value;
}

// One computation. `kmem_total_` gathers the bytes of kernel and user memory that the container may
// need, in single precision and in the order of the lines.
class Computation {
public:
    Computation(const PhysParams& profile, ConfigScales scales, std::int32_t page_size)
        : p_(profile), scales_(scales), page_size_(page_size) {}

    std::vector<ConfigLine> run();

private:
    using Sources = std::vector<const CountRule*>;

    void adjust();
    void adjust_count(const CountRule& rule);

    void add(const char* name, Pair pair, Sources sources, double reserve = no_margin);
    void add_count(const char* name, const CountRule& rule);
    void add_count_with_margin(const char* name, const CountRule& rule);
    void add_wide(const char* name, std::uint64_t barrier, std::uint64_t limit);
    void add_number(const char* name, std::uint64_t value);
    void add_text(const char* name, std::string text);

    void add_process_lines();
    bool raise_file_count();
    void add_kernel_memory_lines();
    void add_socket_buffer_lines();
    void add_page_lines();
    void add_count_lines();
    void add_disk_lines();
    void add_share_and_quota_lines();
    void add_memory_limit_lines();
    void add_identity_lines();

    void need(float bytes) { kmem_total_ += bytes; }
    void need_pages(std::int32_t pages) {
        need(static_cast<float>(page_size_) * static_cast<float>(pages));
    }

    PhysParams p_;  // what was measured, then what the container shall have
    const ConfigScales scales_;
    const std::int32_t page_size_;
    float kmem_total_ = 0.0F;
    bool kmem_wrapped_ = false;
    bool quota_wrapped_ = false;
    std::vector<ConfigLine> lines_;
};

void Computation::adjust_count(const CountRule& rule) {
    std::int32_t& count = p_.*rule.measured;
    count = apply_rule(rule, count, scales_);
}

void Computation::adjust() {
    for (const CountRule* rule :
         {&diskspace_rule, &diskinodes_rule, &numproc_rule, &numtcpsock_rule, &numothersock_rule,
          &numfile_rule, &numpty_rule, &privvmpages_rule, &lockedpages_rule, &shmpages_rule,
          &numflock_rule, &numiptent_rule}) {
        adjust_count(*rule);
    }
    if (p_.quotaugidlimit != 0) {
        quota_wrapped_ = cut(std::int64_t{p_.quotaugidlimit} * 2).wrapped;
        adjust_count(quotaugidlimit_rule);
    }
    p_.avnumproc = scales_.memory * p_.avnumproc;
    const auto average_floor = static_cast<float>(avnumproc_rule.floor);
    if (average_floor > p_.avnumproc) {  // a NaN stays
        p_.avnumproc = average_floor;
    }
}

void Computation::add(const char* name, Pair pair, Sources sources, double reserve) {
    lines_.push_back({name,
                      ConfigLine::Kind::pair,
                      extended(pair.barrier),
                      extended(pair.limit),
                      {},
                      std::move(sources),
                      reserve,
                      pair.wrapped});
}

void Computation::add_count(const char* name, const CountRule& rule) {
    const std::int32_t value = p_.*rule.measured;
    add(name, {value, value}, {&rule});
}

void Computation::add_count_with_margin(const char* name, const CountRule& rule) {
    const std::int32_t value = p_.*rule.measured;
    add(name, {value, with_margin(value)}, {&rule}, margin);
}

void Computation::add_wide(const char* name, std::uint64_t barrier, std::uint64_t limit) {
    lines_.push_back({name, ConfigLine::Kind::pair, barrier, limit, {}, {}, no_margin, false});
}

void Computation::add_number(const char* name, std::uint64_t value) {
    lines_.push_back({name, ConfigLine::Kind::number, value, value, {}, {}, no_margin, false});
}

void Computation::add_text(const char* name, std::string text) {
    lines_.push_back({name, ConfigLine::Kind::text, 0, 0, std::move(text), {}, no_margin, false});
}

void Computation::add_process_lines() {
    add_count("NUMPROC", numproc_rule);
    const std::int32_t average = truncate_to_int32(p_.avnumproc);
    add("AVNUMPROC", {average, average}, {&avnumproc_rule});
    add_count("NUMTCPSOCK", numtcpsock_rule);
    add_count("NUMOTHERSOCK", numothersock_rule);
    add_count("NUMPTY", numpty_rule);
    const bool wrapped = raise_file_count();
    add("NUMFILE", {p_.numfile, p_.numfile, wrapped},
        {&numfile_rule, &numtcpsock_rule, &numothersock_rule, &numpty_rule, &avnumproc_rule});
}

// Every socket and terminal is an open file, and every process has some. Whether their sum wrapped.
bool Computation::raise_file_count() {
    const Cut descriptors = cut(std::int64_t{p_.numtcpsock} + p_.numothersock + p_.numpty);
    raise_to(p_.numfile, truncate_to_int32(static_cast<float>(descriptors.value)));
    raise_to(p_.numfile, truncate_to_int32(files_per_process * p_.avnumproc));
    return descriptors.wrapped;
}

void Computation::add_kernel_memory_lines() {
    const Cut dentries = cut(p_.numfile * dentry_bytes_per_file);
    p_.dcachesize = with_margin(dentries.value);
    add("DCACHESIZE", alike({p_.dcachesize, dentries.wrapped}), {&numfile_rule}, margin);

    const Cut bytes = cut(p_.numproc * kernel_bytes_per_process + p_.dcachesize);
    const std::int32_t kmemsize = truncate_to_int32(static_cast<float>(bytes.value));
    add("KMEMSIZE", alike({kmemsize, bytes.wrapped}), {&numproc_rule, &numfile_rule});
    kmem_total_ = static_cast<float>(kmemsize);
}

void Computation::add_socket_buffer_lines() {
    const Pair tcp = socket_buffers(p_.numtcpsock);
    add("TCPSNDBUF", tcp, {&numtcpsock_rule});
    add("TCPRCVBUF", tcp, {&numtcpsock_rule});
    const Cut twice = cut(std::int64_t{2} * tcp.limit);
    need(static_cast<float>(twice.value));
    kmem_wrapped_ = twice.wrapped;

    const Pair other = socket_buffers(p_.numothersock);
    add("OTHERSOCKBUF", other, {&numothersock_rule});
    need(static_cast<float>(other.limit));  // once, unlike the TCP buffers

    add("DGRAMRCVBUF", {dgramrcvbuf_bytes, dgramrcvbuf_bytes}, {});
    need(static_cast<float>(dgramrcvbuf_bytes));
}

void Computation::add_page_lines() {
    const std::int32_t limit =
        truncate_to_int32(static_cast<float>(p_.privvmpages) * memory_margin);
    add("PRIVVMPAGES", {p_.privvmpages, limit}, {&privvmpages_rule}, margin);
    need_pages(limit);

    const std::int32_t guaranteed = p_.privvmpages & 0x7FFFFFFF;
    add("VMGUARPAGES", {guaranteed, no_limit}, {&privvmpages_rule});
    add("OOMGUARPAGES", {guaranteed, no_limit}, {&privvmpages_rule});
    add_count("LOCKEDPAGES", lockedpages_rule);
    need_pages(p_.lockedpages);

    raise_to(p_.shmpages, shmpages_written_floor);
    add_count("SHMPAGES", shmpages_rule);
    add_wide("PHYSPAGES", 0, physpages_limit);
}

void Computation::add_count_lines() {
    add_count_with_margin("NUMFLOCK", numflock_rule);
    add_wide("NUMSIGINFO", numsiginfo, numsiginfo);
    add_count("NUMIPTENT", numiptent_rule);
}

void Computation::add_disk_lines() {
    add_count_with_margin("DISKSPACE", diskspace_rule);
    add_count_with_margin("DISKINODES", diskinodes_rule);
}

void Computation::add_share_and_quota_lines() {
    add_number("CPUUNITS", cpuunits);
    add_number("QUOTATIME", quotatime);
    add_number("QUOTAUGIDLIMIT", extended(p_.quotaugidlimit));
    lines_.back().sources = {&quotaugidlimit_rule};
    lines_.back().wrapped = quota_wrapped_;
}

void Computation::add_memory_limit_lines() {
    kmem_total_ = scales_.memory * kmem_total_;
    // The product wraps in 32 bits, as the rule wants it: with pages of 4 KiB the cap lies one page
    // below 2^64.
    const std::uint64_t cap = extended(Kiln::wrap_mul(page_size_, max_memory_pages));
    const bool below_cap = static_cast<float>(cap) > kmem_total_;
    const std::uint64_t memory_limit = below_cap ? Kiln::truncate_to_uint64(kmem_total_) : cap;
    add_wide("SLMMEMORYLIMIT", memory_limit, memory_limit);
    lines_.back().sources = {&privvmpages_rule, &lockedpages_rule, &numproc_rule,
                             &numfile_rule,     &numtcpsock_rule,  &numothersock_rule};
    lines_.back().wrapped = kmem_wrapped_;
    add_text("SLMMODE", "all");
}

void Computation::add_identity_lines() {
    add_text("DISTRIBUTION", p_.distribution);
    add_text("HOSTNAME", p_.hostname);
    add_text("#IP_ADDRESS", p_.ifaces.get_ip());  // the "#" makes it a comment there
    add_text("SEARCHDOMAIN", joined(p_.ns_attrs.search_domains));
    add_text("NAMESERVER", joined(p_.ns_attrs.nameservers));
    add_text("FEATURES", p_.nfs_used ? "nfs:on" : "");
}

std::vector<ConfigLine> Computation::run() {
    adjust();
    add_process_lines();
    add_kernel_memory_lines();
    add_socket_buffer_lines();
    add_page_lines();
    add_count_lines();
    add_disk_lines();
    add_share_and_quota_lines();
    add_memory_limit_lines();
    add_identity_lines();
    return std::move(lines_);
}

}  // namespace

std::int32_t apply_rule(const CountRule& rule, std::int32_t measured, ConfigScales scales) {
    std::int32_t count = measured;
    if (rule.floor_is_scaled) {
        raise_to(count, rule.floor);
        return scaled(count, rule.factor, scales);
    }
    count = scaled(count, rule.factor, scales);
    raise_to(count, rule.floor);
    return count;
}

std::vector<ConfigLine> compute_config(const PhysParams& profile, ConfigScales scales,
                                       std::int32_t page_size) {
    return Computation(profile, scales, page_size).run();
}

void write_config(const std::vector<ConfigLine>& lines, EnvConfig& config) {
    for (const ConfigLine& line : lines) {
        switch (line.kind) {
            case ConfigLine::Kind::pair:
                config.add_2ul_param(line.name, line.barrier, line.limit);
                break;
            case ConfigLine::Kind::number:
                config.add_ul_param(line.name, line.limit);
                break;
            case ConfigLine::Kind::text:
                config.add_param(line.name, line.text.c_str());
                break;
        }
    }
}
