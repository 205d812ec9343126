// Options of `podman run`, as an array for a shell. Docker takes the same ones.
#include <algorithm>

#include "plan/limits/commented_text.h"
#include "plan/limits/host_text.h"
#include "plan/text/printable.h"

namespace {

// What the option takes is memory and swap together.
void add_memory(const LimitSheet& sheet, CommentedText& text) {
    text.limit(LimitKind::memory, "    --memory=@m");
    const std::optional<Limit>& memory = sheet[LimitKind::memory];
    const std::optional<Limit>& swap = sheet[LimitKind::swap];
    if (memory && swap) {
        const std::int64_t both = std::min(most_mib, memory->value + swap->value);
        text.setting("memory and " + grouped(swap->value) + " MiB of swap; " + swap->source,
                     "    --memory-swap=" + std::to_string(both) + "m");
    }
}

// "1.5"
std::string cores_text(std::int64_t tenths) {
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
}

// 1,024 for each core, which is what a container has without the option.
std::string cpu_shares(std::int64_t hundredths) {
    constexpr std::int64_t least = 2;
    constexpr std::int64_t most = 262144;
    return std::to_string(std::clamp((hundredths * 1024 + 99) / 100, least, most));
}

void add_other_limits(CommentedText& text) {
    text.limit(LimitKind::tasks, "    --pids-limit=@");
    text.limit(LimitKind::cpu_share, "    --cpu-shares=@", cpu_shares, ", 1,024 for each core");
    text.limit(LimitKind::cpu, "    --cpus=@", cores_text);
    text.limit(LimitKind::descriptors, "    --ulimit=nofile=@", descriptor_range);
    text.limit(LimitKind::locked, "    --ulimit=memlock=@:@", bytes_of_mib);
    text.limit(LimitKind::shm, "    --shm-size=@m");
}

void add_identity(const LimitSheet& sheet, CommentedText& text) {
    text.host_name("    --hostname=");
    for (const std::string& server : sheet.host.ns_attrs.nameservers) {
        text.host_text("NAMESERVER", "    --dns=", server, is_ip_address(server),
                       "it is no IP address");
    }
    for (const std::string& domain : sheet.host.ns_attrs.search_domains) {
        text.host_text("SEARCHDOMAIN", "    --dns-search=", domain, is_domain_name(domain),
                       "it is no domain");
    }
}

}  // namespace

LimitsText write_podman(const LimitSheet& sheet) {
    CommentedText text(sheet);
    text.heading();
    text.blank();
    text.comment("For bash: read this file with \".\", then");
    text.line("#   podman run \"${limits[@]}\" --rootfs DIRECTORY COMMAND");
    text.comment("or the same options with docker run and an image.");
    text.line("limits=(");
    add_memory(sheet, text);
    add_other_limits(text);
    add_identity(sheet, text);
    text.bind_comments(
        [](const std::string& path) { return "    --volume=" + shell_quoted(path + ":" + path); });
    text.line(")");
    text.blank();
    text.disk_comments();
    text.address_comments();
    text.lacking_comments(Engine::podman);
    return text.finish();
}
