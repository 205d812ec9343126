// The .nspawn file of a container, and the drop-in of its unit: two files in one text.
#include "plan/limits/host_text.h"
#include "plan/limits/unit_limits.h"
#include "plan/limits/writers.h"

namespace {

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

LimitsText write_nspawn(const LimitSheet& sheet) {
    const std::string machine =
        is_host_name(sheet.host_name) ? first_label(sheet.host_name) : "server";
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
