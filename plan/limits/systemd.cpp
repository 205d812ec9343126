// A drop-in for a service, or for a slice.
#include "plan/limits/host_text.h"
#include "plan/limits/unit_limits.h"
#include "plan/limits/writers.h"
#include "plan/text/printable.h"

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
