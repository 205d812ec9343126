// A file of settings with "#" comments: what the writers of most engines put together.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "plan/limits/engines.h"

// Numbers as several engines write them: "12"
std::string decimal_text(std::int64_t number);
std::string bytes_of_mib(std::int64_t mib);
// "1804:524288", the soft limit and a hard one that is at least as large.
std::string descriptor_range(std::int64_t soft);
// 100 for each core, within what a weight can be.
std::string cpu_weight(std::int64_t hundredths_of_core);

class CommentedText {
public:
    explicit CommentedText(const LimitSheet& sheet)
        : sheet_(sheet), complaints_(sheet.complaints) {}

    // A comment, cut into lines where it is long. It must be printable.
    void comment(const std::string& text);
    void line(const std::string& text) { text_ += text + "\n"; }
    void blank() { text_ += "\n"; }
    // A line, and before it where it comes from.
    void setting(const std::string& source, const std::string& text);
    // Where there is such a limit: the setting, with its number for every "@" of the pattern, as
    // `number` writes it. `remark` goes behind its source.
    using Number = std::string (*)(std::int64_t);
    void limit(LimitKind kind, const std::string& pattern, Number number = decimal_text,
               const std::string& remark = {});
    // The setting of the host's name, where it has one.
    void host_name(const std::string& before);
    // The setting of a text of the host, which comes behind `before`; what is not good is refused.
    void host_text(const std::string& what, const std::string& before, const std::string& text,
                   bool is_good, const std::string& reason);

    // Whose limits these are, how far they can be trusted, and what the sheet complains about.
    void heading();
    // What the host said and the format cannot carry: a comment and a complaint.
    void refuse(const std::string& what, const std::string& text, const std::string& reason);
    // Disk and inodes, for an engine that has no limits of them.
    void disk_comments();
    // The resolver's settings, for an engine that leaves them to the copy's own files.
    void resolver_comments();
    void address_comments();
    // `text` makes the setting that binds a path; for a host with NFS mounts.
    using BindText = std::string (*)(const std::string& path);
    void bind_comments(BindText text);
    // Which lines of the configuration the engine has nothing for.
    void lacking_comments(Engine engine);

    LimitsText finish() { return {std::move(text_), std::move(complaints_)}; }

private:
    // A comment with texts of the host, where there are any.
    void list(const std::string& what, const std::vector<std::string>& texts);

    const LimitSheet& sheet_;
    std::string text_;
    std::vector<std::string> complaints_;
};

std::string refusal(const std::string& what, const std::string& text, const std::string& reason);
