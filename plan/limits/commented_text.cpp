#include "plan/limits/commented_text.h"

#include <algorithm>

#include "kiln/strings.h"
#include "plan/limits/host_text.h"
#include "plan/text/printable.h"

std::string decimal_text(std::int64_t number) {
    return std::to_string(number);
}

std::string bytes_of_mib(std::int64_t mib) {
    constexpr std::int64_t bytes = 1048576;
    return std::to_string(mib * bytes);
}

std::string descriptor_range(std::int64_t soft) {
    constexpr std::int64_t hard = 524288;  // where one process needs no more
    return std::to_string(soft) + ":" + std::to_string(std::max(soft, hard));
}

std::string cpu_weight(std::int64_t hundredths_of_core) {
    constexpr std::int64_t most_weight = 10000;
    return std::to_string(std::clamp<std::int64_t>(hundredths_of_core, 1, most_weight));
}

std::string refusal(const std::string& what, const std::string& text, const std::string& reason) {
    return what + " \"" + printable(text) + "\" is left out: " + reason;
}

// Words stay whole, however long: a path or a number can still be searched for.
void CommentedText::comment(const std::string& text) {
    constexpr std::size_t width = 100;
    std::string line = "#";
    std::size_t columns = 1;
    for (const std::string& word : Kiln::split(" ", text, -1)) {
        const std::size_t more = columns_of(word) + 1;
        if (columns > 1 && columns + more > width) {
            text_ += line + "\n";
            line = "#  ";
            columns = line.size();
        }
        line += " " + word;
        columns += more;
    }
    text_ += line + "\n";
}

void CommentedText::setting(const std::string& source, const std::string& text) {
    comment(source);
    line(text);
}

void CommentedText::limit(LimitKind kind, const std::string& pattern, Number number,
                          const std::string& remark) {
    if (const std::optional<Limit>& known = sheet_[kind]) {
        setting(known->source + remark,
                Kiln::join(number(known->value).c_str(), Kiln::split("@", pattern, -1)));
    }
}

void CommentedText::host_text(const std::string& what, const std::string& before,
                              const std::string& text, bool is_good, const std::string& reason) {
    if (is_good) {
        setting(what, before + text);
    } else {
        refuse(what, text, reason);
    }
}

void CommentedText::host_name(const std::string& before) {
    if (!sheet_.host.hostname.empty()) {
        host_text("HOSTNAME", before, sheet_.host.hostname, is_host_name(sheet_.host.hostname),
                  "it is no host name");
    }
}

void CommentedText::heading() {
    for (const std::vector<std::string>* lines : {&sheet_.heading, &sheet_.notes}) {
        for (const std::string& text : *lines) {
            comment(text);
        }
    }
    for (const std::string& complaint : sheet_.complaints) {
        comment("! " + printable(complaint));
    }
}

// In the file too: who is handed the file alone must not take it for complete.
void CommentedText::refuse(const std::string& what, const std::string& text,
                           const std::string& reason) {
    complaints_.push_back(refusal(what, text, reason));
    comment("! " + complaints_.back());
}

void CommentedText::disk_comments() {
    for (const std::optional<OwnLimit>& own : {sheet_.disk_kib, sheet_.inodes}) {
        if (own) {
            comment(own->text);
        }
    }
}

void CommentedText::list(const std::string& what, const std::vector<std::string>& texts) {
    if (!texts.empty()) {
        comment(what + printable(Kiln::join(" ", texts)));
    }
}

void CommentedText::resolver_comments() {
    list("name servers: ", sheet_.host.ns_attrs.nameservers);
    list("search domains: ", sheet_.host.ns_attrs.search_domains);
}

void CommentedText::address_comments() {
    list("addresses, decide yourself which of them move: ", sheet_.addresses);
}

void CommentedText::bind_comments(BindText text) {
    if (!sheet_.host.nfs_used) {
        return;
    }
    comment(
        "The server has NFS mounts. They are among these, which are not to be copied (network, "
        "removable, loop and bind mounts): bind those that the container needs.");
    for (const std::string& path : sheet_.mounts) {
        // Commented out: nobody but the administrator knows which of them are still wanted.
        if (is_plain_path(path)) {
            line("#" + text(path));
        } else {
            refuse("the mount", path, "it cannot be written here");
        }
    }
}

void CommentedText::lacking_comments(Engine engine) {
    comment("Lines of the calculator's configuration that have no equivalent here:");
    for (const LinesOfReason& group : lacking_lines(engine)) {
        comment(Kiln::join(", ", group.lines) + ": " + group.reason);
    }
}
