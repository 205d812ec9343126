// A drop-in for a service, or for a slice; and for a container the .nspawn file with the drop-in of
// its unit: two files in one text.
#include "plan/limits/commented_text.h"
#include "plan/limits/host_text.h"
#include "plan/text/printable.h"

namespace {

// The resource controls of a unit.
void add_unit_limits(CommentedText& text) {
    // 0 switches swap off, and has no unit.
    const auto swap_text = [](std::int64_t mib) {
        return decimal_text(mib) + (mib == 0 ? "" : "M");
    };
    // Of one processor: two of them are 200 %.
    const auto percent = [](std::int64_t tenths) { return decimal_text(tenths * 10) + "%"; };
    text.limit(LimitKind::memory, "MemoryMax=@M");
    text.limit(LimitKind::swap, "MemorySwapMax=@", swap_text);
    text.limit(LimitKind::tasks, "TasksMax=@");
    text.limit(LimitKind::cpu_share, "CPUWeight=@", cpu_weight, ", 100 for each core");
    text.limit(LimitKind::cpu, "CPUQuota=@", percent);
}

// The two limits of each process, in a unit's section of its own or in a .nspawn file's.
void add_process_limits(CommentedText& text) {
    text.limit(LimitKind::descriptors, "LimitNOFILE=@", descriptor_range);
    text.limit(LimitKind::locked, "LimitMEMLOCK=@M");
}

void add_settings(const LimitSheet& sheet, CommentedText& text) {
    text.line("[Exec]");
    text.host_name("Hostname=");
    text.resolver_comments();
    text.setting("the copy's own /etc/resolv.conf, with the server's name servers",
                 "ResolvConf=off");
    add_process_limits(text);
    if (sheet[LimitKind::locked]) {
        text.setting("a container may lock no memory without this, whatever its limit",
                     "SystemCallFilter=@memlock");
    }
    text.blank();
    text.line("[Files]");
    text.limit(LimitKind::shm, "TemporaryFileSystem=/dev/shm:mode=1777,nosuid,nodev,size=@M");
    text.bind_comments([](const std::string& path) { return "Bind=" + nspawn_escaped(path); });
}

}  // namespace

LimitsText write_systemd(const LimitSheet& sheet) {
    CommentedText text(sheet);
    text.heading();
    text.blank();
    text.comment("For a service: /etc/systemd/system/NAME.service.d/limits.conf.");
    text.comment("A slice starts no process; make its NAME.slice.d/limits.conf from this file by");
    text.line(R"(#   sed 's/^\[Service]/[Slice]/; /^Limit/d; /^#BindPaths/d')");
    text.line("[Service]");
    add_unit_limits(text);
    add_process_limits(text);
    text.blank();
    if (const std::optional<Limit>& shm = sheet[LimitKind::shm]) {
        text.comment("/dev/shm: " + grouped(shm->value) +
                     " MiB; a service shares it with its host; " + shm->source);
    }
    text.disk_comments();
    text.resolver_comments();
    text.address_comments();
    text.bind_comments([](const std::string& path) { return "BindPaths=" + unit_quoted(path); });
    text.blank();
    text.lacking_comments(Engine::systemd);
    return text.finish();
}

LimitsText write_nspawn(const LimitSheet& sheet) {
    const std::string machine =
        is_host_name(sheet.host.hostname) ? first_label(sheet.host.hostname) : "server";
    CommentedText text(sheet);
    text.comment("Two files, for a container in /var/lib/machines/" + machine +
                 "; this puts both in their places:");
    text.line("#   mkdir -p /etc/systemd/nspawn /etc/systemd/system/systemd-nspawn@" + machine +
              ".service.d");
    text.line(
        "#   awk '/^# File: /{file=$3} file{print >file}' THIS_TEXT; systemctl daemon-reload");
    text.blank();
    text.line("# File: /etc/systemd/nspawn/" + machine + ".nspawn");
    text.heading();
    add_settings(sheet, text);
    text.address_comments();
    text.blank();
    text.line("# File: /etc/systemd/system/systemd-nspawn@" + machine + ".service.d/limits.conf");
    text.heading();
    text.line("[Service]");
    add_unit_limits(text);
    if (sheet[LimitKind::descriptors] || sheet[LimitKind::locked]) {
        text.comment("A container with users of its own gets no more of this than its unit has:");
        add_process_limits(text);
    }
    text.blank();
    text.disk_comments();
    text.lacking_comments(Engine::nspawn);
    return text.finish();
}
