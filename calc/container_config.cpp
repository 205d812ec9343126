// The widths and precisions of every step decide the numbers: 32-bit integers wrap, a float times a
// float is a float, and where a margin is a double the product is rounded to float before it is
// clamped. Change none of them.
#include "calc/container_config.h"

#include <cfloat>

#include "calc/unit_costs.h"
#include "kiln/numbers.h"
#include "kiln/strings.h"

static_assert(FLT_EVAL_METHOD == 0, "a float must be rounded to a float at every step");

namespace {

using Kiln::truncate_to_int32;

constexpr std::int32_t shmpages_written_floor = 1024;

// How much is kept in reserve.
constexpr double no_margin = 1.0;
constexpr double margin = 1.1;
constexpr float memory_margin = 1.1F;

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

void store(ConfigLine& line, Pair pair) {
    line.barrier = extended(pair.barrier);
    line.limit = extended(pair.limit);
    line.wrapped = pair.wrapped;
}

// One computation. `kmem_total_` gathers the bytes of kernel and user memory that the container may
// need, in single precision and in the order of the lines.
class Computation {
public:
    Computation(const PhysParams& profile, ConfigScales scales, std::int32_t page_size)
        : p_(profile), scales_(scales), page_size_(page_size) {}

    // Raises and multiplies what was measured. The lines are made from that, each in its turn.
    void adjust() {
        for (const Count& count : sampled_counts) {
            adjust_count(count);
        }
        adjust_count(terminal_count);
        if (p_.quotaugidlimit != 0) {
            quota_wrapped_ = cut(std::int64_t{p_.quotaugidlimit} * 2).wrapped;
            adjust_count(quota_count);
        }
        p_.avnumproc = scales_.memory * p_.avnumproc;
        const auto average_floor = static_cast<float>(average_count.floor.value);
        if (average_floor > p_.avnumproc) {  // a NaN stays
            p_.avnumproc = average_floor;
        }
    }

    // A line that is its first source and no more, or that with a margin.
    void take_count(ConfigLine& line) {
        const std::int32_t value = p_.*line.sources.front().field;
        store(line, {value, line.margin > no_margin ? with_margin(value) : value});
    }

    void average(ConfigLine& line) {
        const std::int32_t average = truncate_to_int32(p_.avnumproc);
        store(line, {average, average});
    }

    // Every socket and terminal is an open file, and every process has some.
    void open_files(ConfigLine& line) {
        const Cut descriptors = cut(std::int64_t{p_.numtcpsock} + p_.numothersock + p_.numpty);
        raise_to(p_.numfile, truncate_to_int32(static_cast<float>(descriptors.value)));
        raise_to(p_.numfile, truncate_to_int32(files_per_process * p_.avnumproc));
        store(line, {p_.numfile, p_.numfile, descriptors.wrapped});
    }

    void dentry_cache(ConfigLine& line) {
        const Cut dentries = cut(p_.numfile * dentry_bytes_per_file);
        p_.dcachesize = with_margin(dentries.value);
        store(line, alike({p_.dcachesize, dentries.wrapped}));
    }

    void kernel_memory(ConfigLine& line) {
        const Cut bytes = cut(p_.numproc * kernel_bytes_per_process + p_.dcachesize);
        const std::int32_t kmemsize = truncate_to_int32(static_cast<float>(bytes.value));
        store(line, alike({kmemsize, bytes.wrapped}));
        kmem_total_ = static_cast<float>(kmemsize);
    }

    void tcp_send_buffers(ConfigLine& line) { store(line, socket_buffers(p_.numtcpsock)); }

    // The need is told once, for both directions.
    void tcp_receive_buffers(ConfigLine& line) {
        const Pair tcp = socket_buffers(p_.numtcpsock);
        store(line, tcp);
        const Cut twice = cut(std::int64_t{2} * tcp.limit);
        need(static_cast<float>(twice.value));
        kmem_wrapped_ = twice.wrapped;
    }

    void other_buffers(ConfigLine& line) {
        const Pair other = socket_buffers(p_.numothersock);
        store(line, other);
        need(static_cast<float>(other.limit));  // once, unlike the TCP buffers
    }

    void datagram_buffers(ConfigLine& line) {
        store(line, {dgramrcvbuf_bytes, dgramrcvbuf_bytes});
        need(static_cast<float>(dgramrcvbuf_bytes));
    }

    void private_pages(ConfigLine& line) {
        const std::int32_t limit =
            truncate_to_int32(static_cast<float>(p_.privvmpages) * memory_margin);
        store(line, {p_.privvmpages, limit});
        need_pages(limit);
    }

    void guaranteed_pages(ConfigLine& line) {
        store(line, {p_.privvmpages & 0x7FFFFFFF, no_limit});
    }

    void locked_pages(ConfigLine& line) {
        take_count(line);
        need_pages(p_.lockedpages);
    }

    void shared_pages(ConfigLine& line) {
        raise_to(p_.shmpages, shmpages_written_floor);
        take_count(line);
    }

    void quota_ids(ConfigLine& line) {
        store(line, {p_.quotaugidlimit, p_.quotaugidlimit, quota_wrapped_});
    }

    void memory_limit(ConfigLine& line) {
        kmem_total_ = scales_.memory * kmem_total_;
        // The product wraps in 32 bits, as the rule wants it: with pages of 4 KiB the cap lies one
        // page below 2^64.
        const std::uint64_t cap = extended(Kiln::wrap_mul(page_size_, max_memory_pages));
        const bool below_cap = static_cast<float>(cap) > kmem_total_;
        const std::uint64_t limit = below_cap ? Kiln::truncate_to_uint64(kmem_total_) : cap;
        line.barrier = line.limit = limit;
        line.wrapped = kmem_wrapped_;
    }

private:
    void adjust_count(const Count& count) {
        std::int32_t& value = p_.*count.field;
        value = apply_rule(count, value, scales_);
    }

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
};

// A line: what it is, and how its value is found, or what it always is.
struct LineRule {
    LineFacts facts;
    void (Computation::*compute)(ConfigLine&);
    std::uint64_t barrier = 0;
    std::uint64_t limit = 0;
    std::string (*text)(const PhysParams& profile) = nullptr;
};

constexpr const Count& numproc = count_of(&PhysParams::numproc);
constexpr const Count& numtcpsock = count_of(&PhysParams::numtcpsock);
constexpr const Count& numothersock = count_of(&PhysParams::numothersock);
constexpr const Count& numfile = count_of(&PhysParams::numfile);
constexpr const Count& privvmpages = count_of(&PhysParams::privvmpages);
constexpr const Count& lockedpages = count_of(&PhysParams::lockedpages);

constexpr std::nullopt_t no_step = std::nullopt;

// A line that has a count's name, label and unit.
constexpr LineFacts line_of(const Count& count, double reserve = no_margin) {
    return {count.line, LineFacts::Kind::pair, count.unit, count.label, Sources::of(count), reserve,
            no_step};
}

constexpr LineFacts line_of(CountField field, double reserve = no_margin) {
    return line_of(count_of(field), reserve);
}

constexpr LineFacts of_bytes(const char* name, Sources sources, double reserve = no_margin) {
    return {name, LineFacts::Kind::pair, Unit::byte, "", sources, reserve, no_step};
}

// As many as the private pages of 4 KiB, each taken for a page of the system.
constexpr LineFacts of_pages(const char* name, const Count& count, double reserve = no_margin) {
    return {name,   LineFacts::Kind::pair, Unit::page_of_system, "", Sources::of(count), reserve,
            no_step};
}

constexpr LineFacts fixed(const char* name, LineFacts::Kind kind, Unit unit, const char* label) {
    return {name, kind, unit, label, Sources(), no_margin, no_step};
}

constexpr LineRule of_text(const char* name, std::optional<OneShotStep> step,
                           std::string (*text)(const PhysParams& profile)) {
    return {{name, LineFacts::Kind::text, Unit::thing, "", Sources(), no_margin, step},
            nullptr,
            0,
            0,
            text};
}

constexpr LineFacts::Kind pair_kind = LineFacts::Kind::pair;
constexpr LineFacts::Kind number_kind = LineFacts::Kind::number;

// In the order of the configuration, which is also the order in which the memory limit adds up.
constexpr LineRule line_rules[] = {
    {line_of(numproc), &Computation::take_count},
    {line_of(average_count), &Computation::average},
    {line_of(numtcpsock), &Computation::take_count},
    {line_of(numothersock), &Computation::take_count},
    {line_of(terminal_count), &Computation::take_count},
    {{numfile.line, pair_kind, numfile.unit, numfile.label,
      Sources::of(numfile, numtcpsock, numothersock, terminal_count, average_count), no_margin,
      no_step},
     &Computation::open_files},
    {of_bytes("DCACHESIZE", Sources::of(numfile), margin), &Computation::dentry_cache},
    {of_bytes("KMEMSIZE", Sources::of(numproc, numfile)), &Computation::kernel_memory},
    {of_bytes("TCPSNDBUF", Sources::of(numtcpsock)), &Computation::tcp_send_buffers},
    {of_bytes("TCPRCVBUF", Sources::of(numtcpsock)), &Computation::tcp_receive_buffers},
    {of_bytes("OTHERSOCKBUF", Sources::of(numothersock)), &Computation::other_buffers},
    {of_bytes("DGRAMRCVBUF", Sources()), &Computation::datagram_buffers},
    {of_pages("PRIVVMPAGES", privvmpages, margin), &Computation::private_pages},
    {of_pages("VMGUARPAGES", privvmpages), &Computation::guaranteed_pages},
    {of_pages("OOMGUARPAGES", privvmpages), &Computation::guaranteed_pages},
    {of_pages("LOCKEDPAGES", lockedpages), &Computation::locked_pages},
    {line_of(&PhysParams::shmpages), &Computation::shared_pages},
    {fixed("PHYSPAGES", pair_kind, Unit::page_of_system, ""), nullptr, 0, physpages_limit},
    {line_of(&PhysParams::numflock, margin), &Computation::take_count},
    {fixed("NUMSIGINFO", pair_kind, Unit::thing, "queued signals"), nullptr, numsiginfo,
     numsiginfo},
    {line_of(&PhysParams::numiptent), &Computation::take_count},
    {line_of(&PhysParams::diskspace, margin), &Computation::take_count},
    {{"DISKINODES", pair_kind, Unit::thing, "inodes",
      Sources::of(count_of(&PhysParams::diskinodes)), margin, no_step},
     &Computation::take_count},
    {fixed("CPUUNITS", number_kind, Unit::thing, "shares of the processors"), nullptr, cpuunits,
     cpuunits},
    {fixed("QUOTATIME", number_kind, Unit::thing, "seconds over a soft limit"), nullptr, quotatime,
     quotatime},
    {{quota_count.line, number_kind, quota_count.unit, quota_count.label, Sources::of(quota_count),
      no_margin, OneShotStep::quotas},
     &Computation::quota_ids},
    {of_bytes("SLMMEMORYLIMIT",
              Sources::of(privvmpages, lockedpages, numproc, numfile, numtcpsock, numothersock)),
     &Computation::memory_limit},
    of_text("SLMMODE", no_step, [](const PhysParams& /*profile*/) { return std::string("all"); }),
    of_text("DISTRIBUTION", OneShotStep::distribution,
            [](const PhysParams& p) { return p.distribution; }),
    of_text("HOSTNAME", OneShotStep::host_name, [](const PhysParams& p) { return p.hostname; }),
    // The "#" makes it a comment in the configuration; that is the rule.
    of_text("#IP_ADDRESS", OneShotStep::interfaces,
            [](const PhysParams& p) { return p.ifaces.get_ip(); }),
    of_text("SEARCHDOMAIN", OneShotStep::resolver,
            [](const PhysParams& p) { return Kiln::join(" ", p.ns_attrs.search_domains); }),
    of_text("NAMESERVER", OneShotStep::resolver,
            [](const PhysParams& p) { return Kiln::join(" ", p.ns_attrs.nameservers); }),
    of_text("FEATURES", OneShotStep::mounts,
            [](const PhysParams& p) { return std::string(p.nfs_used ? "nfs:on" : ""); }),
};

}  // namespace

std::vector<LineFacts> config_line_facts() {
    std::vector<LineFacts> facts;
    for (const LineRule& rule : line_rules) {
        facts.push_back(rule.facts);
    }
    return facts;
}

std::int32_t apply_rule(const Count& count, std::int32_t measured, ConfigScales scales) {
    std::int32_t value = measured;
    if (count.floor.place == Floor::Place::before_factor) {
        raise_to(value, count.floor.value);
    }
    value = scaled(value, count.factor, scales);
    if (count.floor.place == Floor::Place::behind_factor) {
        raise_to(value, count.floor.value);
    }
    return value;
}

std::vector<ConfigLine> compute_config(const PhysParams& profile, ConfigScales scales,
                                       std::int32_t page_size) {
    Computation computation(profile, scales, page_size);
    computation.adjust();
    std::vector<ConfigLine> lines;
    for (const LineRule& rule : line_rules) {
        ConfigLine& line = lines.emplace_back(rule.facts);
        line.barrier = rule.barrier;
        line.limit = rule.limit;
        if (rule.compute != nullptr) {
            (computation.*rule.compute)(line);
        }
        line.text = rule.text != nullptr ? rule.text(profile) : "";
    }
    return lines;
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
