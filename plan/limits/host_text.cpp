#include "plan/limits/host_text.h"

#include <arpa/inet.h>

#include <algorithm>

#include "plan/text/printable.h"

namespace {

constexpr const char* digits_and_small = "abcdefghijklmnopqrstuvwxyz0123456789";
constexpr const char* capitals = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
// The limits of the names of DNS, and of the kernel's own name.
constexpr std::size_t label_size = 63;
constexpr std::size_t domain_size = 253;
constexpr std::size_t host_name_size = 64;

bool is_label(const std::string& text, const std::string& characters) {
    return !text.empty() && text.size() <= label_size && text.front() != '-' &&
           text.back() != '-' && text.find_first_not_of(characters) == std::string::npos;
}

bool is_name(const std::string& text, std::size_t size, const std::string& characters) {
    if (text.size() > size) {
        return false;
    }
    for (std::size_t from = 0;;) {
        const std::size_t dot = text.find('.', from);
        if (!is_label(text.substr(from, dot - from), characters)) {
            return false;
        }
        if (dot == std::string::npos) {
            return true;
        }
        from = dot + 1;
    }
}

std::string any_case() {
    return std::string(digits_and_small) + capitals + "-_";
}

std::string lower_case() {
    return std::string(digits_and_small) + "-";
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
    return is_name(text, host_name_size, any_case());
}

bool is_domain_name(const std::string& text) {
    return is_name(text, domain_size, any_case());
}

bool is_dns_label(const std::string& text) {
    return is_label(text, lower_case());
}

bool is_dns_name(const std::string& text) {
    return is_name(text, domain_size, lower_case());
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

bool is_plain_path(const std::string& path) {
    return !path.empty() && path.front() == '/' && path.back() != ' ' && printable(path) == path;
}

std::string shell_quoted(const std::string& text) {
    const std::string plain = std::string(digits_and_small) + capitals + "-_./:=,@+";
    if (!text.empty() && text.find_first_not_of(plain) == std::string::npos) {
        return text;
    }
    std::string quoted = "'";
    for (const char c : text) {
        quoted += c == '\'' ? "'\\''" : std::string(1, c);
    }
    return quoted + "'";
}

std::string unit_quoted(const std::string& path) {
    std::string quoted = "\"";
    for (const char c : with_backslashes(path, "\"\\")) {
        quoted.append(c == '%' ? 2 : 1, c);
    }
    return quoted + "\"";
}

std::string nspawn_escaped(const std::string& path) {
    return with_backslashes(path, ":\\");
}

std::string fstab_escaped(const std::string& path) {
    std::string escaped;
    for (const char c : path) {
        escaped += c == ' ' ? "\\040" : c == '\\' ? "\\134" : std::string(1, c);
    }
    return escaped;
}

// A backslash only escapes where the pattern has a wildcard at all, an escaped one too.
std::string rsync_pattern(const std::string& path, const std::string& suffix) {
    const bool is_wild = (path + suffix).find_first_of("*?[") != std::string::npos;
    return (is_wild ? with_backslashes(path, "*?[\\") : path) + suffix;
}
