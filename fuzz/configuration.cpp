// The computation of the configuration, beside a second one that rounds by itself.
#include "calc/container_config.h"
#include "fuzz/support.h"

namespace {

__extension__ using Wide = __int128;

// The nearest number of so many binary digits, the even one of two: what a float (24) or a double
// (53) holds of it.
Wide rounded(Wide number, int digits) {
    if (number < 0) {
        return -rounded(-number, digits);
    }
    Wide unit = 1;
    while (number >> digits >= unit) {
        unit <<= 1;
    }
    const Wide rest = number & (unit - 1);
    const Wide below = number - rest;
    const bool up = 2 * rest > unit || (2 * rest == unit && (below & unit) != 0);
    return up ? below + unit : below;
}

std::int32_t wrapped(Wide number) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(number));
}

// What an int keeps of the number in a float, which is given in parts of a unit.
std::int32_t clamped(Wide number, Wide parts = 1) {
    return static_cast<std::int32_t>(
        std::clamp<Wide>(rounded(number, 24) / parts, INT32_MIN, INT32_MAX));
}

std::int32_t truncated(double number) {
    return number >= INT32_MIN ? static_cast<std::int32_t>(std::min<double>(number, INT32_MAX))
                               : INT32_MIN;
}

// What a float holds of a product or a sum of floats, which a double has room for.
double to_float(double number) {
    return static_cast<double>(static_cast<float>(number));
}

double as_double(Wide number) {
    return static_cast<double>(rounded(number, 24));
}

std::int32_t scaled(std::int32_t count, float factor) {
    return truncated(to_float(as_double(count) * static_cast<double>(factor)));
}

// With 1.1 as a double, which is that many parts of 2^52.
std::int32_t tenth_more(std::int32_t count) {
    return clamped(rounded(Wide{4953959590107546} * count, 53), Wide{1} << 52);
}

std::string line(const std::string& name, const std::string& value) {
    return value.empty() ? "" : name + "=\"" + value + "\"\n";
}

std::string written(std::int32_t number) {
    return std::to_string(static_cast<std::uint64_t>(std::int64_t{number}));
}

std::string pair(const std::string& name, std::int32_t barrier, std::int32_t limit) {
    return line(name, written(barrier) + ":" + written(limit));
}

std::string pair(const std::string& name, std::int32_t both) {
    return pair(name, both, both);
}

// The bytes of so many buffers of 64 KiB; their sign may change, but no digit is lost.
std::int32_t buffers(std::int32_t sockets) {
    return wrapped(Wide{sockets} * 65536);
}

std::string socket_buffers(const char* name, std::int32_t sockets) {
    const std::int32_t all = buffers(sockets);
    return pair(name, clamped(all - Wide{sockets} * 2560), all);
}

std::string memory_limit(double bytes, std::int32_t page_size) {
    std::uint64_t limit = 0 - static_cast<std::uint64_t>(page_size);  // also for a NaN
    if (bytes >= 0x1p63 && bytes < 0x1p64) {
        limit = static_cast<std::uint64_t>(bytes);
    } else if (bytes < 0x1p63) {
        limit = static_cast<std::uint64_t>(bytes >= -0x1p63 ? static_cast<std::int64_t>(bytes)
                                                            : INT64_MIN);
    }
    return line("SLMMEMORYLIMIT", std::to_string(limit) + ":" + std::to_string(limit));
}

std::string numbers(const PhysParams& p, ConfigScales scales, std::int32_t page_size) {
    const auto memory = static_cast<double>(scales.memory);
    const auto count = [&](std::int32_t measured, std::int32_t floor) {
        return scaled(std::max(measured, floor), scales.memory);
    };
    const std::int32_t numproc = count(p.numproc, 240);
    const std::int32_t tcp = count(p.numtcpsock, 360);
    const std::int32_t other = count(p.numothersock, 360);
    const std::int32_t ptys = std::max(p.numpty, 255);
    const std::int32_t pages = std::max(scaled(p.privvmpages, scales.memory), 65536);
    const std::int32_t page_limit = scaled(pages, 1.1F);
    const std::int32_t locked = count(p.lockedpages, 256);
    const std::int32_t flocks = count(p.numflock, 188);
    const std::int32_t space = scaled(p.diskspace, scales.disk);
    const std::int32_t inodes = scaled(p.diskinodes, scales.disk);
    const std::int32_t ids = std::max(wrapped(Wide{2} * p.quotaugidlimit), 1024);
    double average = to_float(memory * static_cast<double>(p.avnumproc));
    average = average < 180 ? 180 : average;
    const std::int32_t files = std::max({count(p.numfile, 9312), truncated(32 * average),
                                         clamped(wrapped(Wide{tcp} + other + ptys))});
    const std::int32_t dentries = tenth_more(wrapped(Wide{files} * 384));
    const std::int32_t kernel = clamped(wrapped(Wide{numproc} * 61440 + dentries));

    // At most 62 bits: not every compiler can check a product of two wide numbers.
    const auto bytes = [page_size](std::int32_t page_count) {
        return Wide{static_cast<std::int64_t>(rounded(page_count, 24)) * page_size};
    };
    double total = as_double(kernel);
    for (const Wide part : {Wide{wrapped(Wide{2} * buffers(tcp))}, Wide{buffers(other)},
                            Wide{262144}, bytes(page_limit), bytes(locked)}) {
        total = to_float(total + as_double(part));
    }
    return pair("NUMPROC", numproc) + pair("AVNUMPROC", truncated(average)) +
           pair("NUMTCPSOCK", tcp) + pair("NUMOTHERSOCK", other) + pair("NUMPTY", ptys) +
           pair("NUMFILE", files) + pair("DCACHESIZE", dentries) + pair("KMEMSIZE", kernel) +
           socket_buffers("TCPSNDBUF", tcp) + socket_buffers("TCPRCVBUF", tcp) +
           socket_buffers("OTHERSOCKBUF", other) + pair("DGRAMRCVBUF", 262144) +
           pair("PRIVVMPAGES", pages, page_limit) + pair("VMGUARPAGES", pages, INT32_MAX) +
           pair("OOMGUARPAGES", pages, INT32_MAX) + pair("LOCKEDPAGES", locked) +
           pair("SHMPAGES", std::max(count(p.shmpages, 21504), 1024)) +
           "PHYSPAGES=\"0:9223372036854775807\"\n" + pair("NUMFLOCK", flocks, tenth_more(flocks)) +
           pair("NUMSIGINFO", 256) + pair("NUMIPTENT", count(p.numiptent, 128)) +
           pair("DISKSPACE", space, tenth_more(space)) +
           pair("DISKINODES", inodes, tenth_more(inodes)) + "CPUUNITS=\"1000\"\nQUOTATIME=\"0\"\n" +
           line("QUOTAUGIDLIMIT", written(p.quotaugidlimit == 0 ? 0 : ids)) +
           memory_limit(to_float(memory * total), page_size) + "SLMMODE=\"all\"\n";
}

std::string texts(const std::string& text, bool nfs_used) {
    return line("DISTRIBUTION", text) + line("HOSTNAME", text) +
           line("#IP_ADDRESS", text + " " + text + " ") + line("SEARCHDOMAIN", text + " " + text) +
           line("NAMESERVER", text) + line("FEATURES", nfs_used ? "nfs:on" : "");
}

}  // namespace

// Input: the factors, the page size, the counts, and the text that stands for every name.
void try_input(fuzz::Input input) {
    const auto memory = input.next<float>();
    const ConfigScales scales = {memory, input.next<float>()};
    const std::int32_t page_size = 4096 << input.next<std::uint8_t>() % 5;
    PhysParams p;
    p.nfs_used = input.next<std::uint8_t>() % 2 != 0;
    p.avnumproc = input.next<float>();
    for (std::int32_t* count : {&p.numproc, &p.numtcpsock, &p.numothersock, &p.numfile, &p.numpty,
                                &p.privvmpages, &p.lockedpages, &p.shmpages, &p.numflock,
                                &p.numiptent, &p.diskspace, &p.diskinodes, &p.quotaugidlimit}) {
        *count = input.next<std::int32_t>();
    }
    const std::string text = input.text().c_str();
    p.distribution = p.hostname = text;
    p.ifaces.push_back({2, "eth0", {text, text}, false});
    p.ns_attrs = {{text}, {text, text}};

    EnvConfig config;
    write_config(compute_config(p, scales, page_size), config);
    require(config.text() == numbers(p, scales, page_size) + texts(text, p.nfs_used), "both agree");
}
