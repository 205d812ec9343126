// Options of `podman run`, as an array for a shell. Docker takes the same ones.
#include <algorithm>

#include "plan/limits/host_text.h"
#include "plan/limits/unit_limits.h"
#include "plan/limits/writers.h"

namespace {

constexpr const char* indent = "    ";

// What the option takes is memory and swap together.
void add_memory(const LimitSheet& sheet, CommentedText& text) {
    text.limit(LimitKind::memory,
               [](std::int64_t mib) { return indent + ("--memory=" + std::to_string(mib) + "m"); });
    const std::optional<Limit>& memory = sheet[LimitKind::memory];
    const std::optional<Limit>& swap = sheet[LimitKind::swap];
    if (memory && swap) {
        constexpr std::int64_t most_mib = (std::int64_t{1} << 43) - 1;
        const std::int64_t both = std::min(most_mib, memory->value + swap->value);
        text.setting("memory and " + std::to_string(swap->value) + " MiB of swap; " + swap->source,
                     indent + ("--memory-swap=" + std::to_string(both) + "m"));
    }
}

// "1.5"
std::string cores_text(std::int64_t tenths) {
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
}

// 1,024 for each core, which is what a container has without the option.
std::int64_t cpu_shares(std::int64_t hundredths) {
    constexpr std::int64_t least = 2;
    constexpr std::int64_t most = 262144;
    return std::clamp((hundredths * 1024 + 99) / 100, least, most);
}

void add_other_limits(CommentedText& text) {
    text.limit(LimitKind::tasks, [](std::int64_t tasks) {
        return indent + ("--pids-limit=" + std::to_string(tasks));
    });
    text.limit(
        LimitKind::cpu_share,
        [](std::int64_t hundredths) {
            return indent + ("--cpu-shares=" + std::to_string(cpu_shares(hundredths)));
        },
        ", 1,024 for each core");
    text.limit(LimitKind::cpu,
               [](std::int64_t tenths) { return indent + ("--cpus=" + cores_text(tenths)); });
    text.limit(LimitKind::descriptors, [](std::int64_t soft) {
        return indent + ("--ulimit=nofile=" + std::to_string(soft) + ":" +
                         std::to_string(hard_descriptor_limit(soft)));
    });
    text.limit(LimitKind::locked, [](std::int64_t mib) {
        const std::string bytes = std::to_string(mib * 1048576);
        return indent + ("--ulimit=memlock=" + bytes + ":" + bytes);
    });
    text.limit(LimitKind::shm, [](std::int64_t mib) {
        return indent + ("--shm-size=" + std::to_string(mib) + "m");
    });
}

void add_identity(const LimitSheet& sheet, CommentedText& text) {
    if (is_host_name(sheet.host_name)) {
        text.setting("HOSTNAME", indent + ("--hostname=" + sheet.host_name));
    } else if (!sheet.host_name.empty()) {
        text.refuse("HOSTNAME", sheet.host_name, "it is no host name");
    }
    for (const std::string& server : sheet.name_servers) {
        if (is_ip_address(server)) {
            text.setting("NAMESERVER", indent + ("--dns=" + server));
        } else {
            text.refuse("NAMESERVER", server, "it is no IP address");
        }
    }
    for (const std::string& domain : sheet.search_domains) {
        if (is_domain_name(domain)) {
            text.setting("SEARCHDOMAIN", indent + ("--dns-search=" + domain));
        } else {
            text.refuse("SEARCHDOMAIN", domain, "it is no domain");
        }
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
    text.bind_comments([](const std::string& path) {
        return indent + ("--volume=" + shell_quoted(path + ":" + path));
    });
    text.line(")");
    text.blank();
    text.disk_comments();
    text.address_comments();
    text.lacking_comments(Engine::podman);
    return text.finish();
}
