#include "plan/limits/host_text.h"

#include <arpa/inet.h>

#include <algorithm>
#include <vector>

#include "kiln/strings.h"
#include "plan/text/printable.h"

namespace {

// The characters of a label.
const std::string lower_case = "abcdefghijklmnopqrstuvwxyz0123456789-";
const std::string any_case = lower_case + "ABCDEFGHIJKLMNOPQRSTUVWXYZ_";
// The limits of the names of DNS, and of the kernel's own name.
constexpr std::size_t label_size = 63;
constexpr std::size_t domain_size = 253;
constexpr std::size_t host_name_size = 64;

bool is_label(const std::string& text, const std::string& characters) {
    return !text.empty() && text.size() <= label_size && text.front() != '-' &&
           text.back() != '-' && text.find_first_not_of(characters) == std::string::npos;
}

bool is_name(const std::string& text, std::size_t size, const std::string& characters) {
    const std::vector<std::string> labels = Kiln::split(".", text, -1);
    return text.size() <= size &&
           std::all_of(labels.begin(), labels.end(),
                       [&](const std::string& label) { return is_label(label, characters); });
}

// The text with another in the place of each such character.
std::string replaced(const char* character, const char* other, const std::string& text) {
    return Kiln::join(other, Kiln::split(character, text, -1));
}

// The text with a backslash before each of the characters.
std::string with_backslashes(const std::string& text, const std::string& characters) {
    std::string escaped;
    for (const char c : text) {
        if (characters.find(c) != std::string::npos) {
            escaped += '\\';
        }
        escaped += c;
    }
    return escaped;
}

}  // namespace

bool is_host_name(const std::string& text) {
    return is_name(text, host_name_size, any_case);
}

bool is_domain_name(const std::string& text) {
    return is_name(text, domain_size, any_case);
}

bool is_dns_label(const std::string& text) {
    return is_label(text, lower_case);
}

bool is_dns_name(const std::string& text) {
    return is_name(text, domain_size, lower_case);
}

std::string first_label(const std::string& host_name) {
    return host_name.substr(0, host_name.find('.'));
}

bool is_ip_address(const std::string& text) {
    in6_addr address;
    return text.find('\0') == std::string::npos &&
           (inet_pton(AF_INET, text.c_str(), &address) == 1 ||
            inet_pton(AF_INET6, text.c_str(), &address) == 1);
}

std::optional<std::string> directory_of_contents(const std::string& path) {
    const std::size_t slash = path.rfind("/*");
    return slash != std::string::npos && slash > 0 && slash + 2 == path.size()
               ? std::optional(path.substr(0, slash))
               : std::nullopt;
}

bool is_plain_path(const std::string& path) {
    return !path.empty() && path.front() == '/' && path.back() != ' ' && printable(path) == path;
}

std::string shell_quoted(const std::string& text) {
    if (!text.empty() && text.find_first_not_of(any_case + "./:=,@+") == std::string::npos) {
        return text;
    }
    return "'" + replaced("'", "'\\''", text) + "'";
}

std::string unit_quoted(const std::string& path) {
    return "\"" + replaced("%", "%%", with_backslashes(path, "\"\\")) + "\"";
}

std::string nspawn_escaped(const std::string& path) {
    return with_backslashes(path, ":\\");
}

std::string fstab_escaped(const std::string& path) {
    return replaced(" ", "\\040", replaced("\\", "\\134", path));
}

// A backslash only escapes where the pattern has a wildcard at all, an escaped one too.
std::string rsync_pattern(const std::string& path, const std::string& suffix) {
    const bool is_wild = (path + suffix).find_first_of("*?[") != std::string::npos;
    return (is_wild ? with_backslashes(path, "*?[\\") : path) + suffix;
}
