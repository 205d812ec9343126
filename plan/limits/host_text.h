// A host's texts in the formats of the engines: what each can carry, and how it is quoted. Pure.
#pragma once

#include <optional>
#include <string>

// Up to 64 bytes: labels of letters, digits, "-" and "_", with "." between them. What the kernel
// and every engine but Kubernetes take for a host name.
bool is_host_name(const std::string& text);
// A name of up to 253 bytes of the same kind.
bool is_domain_name(const std::string& text);
// Up to 63 lower-case letters, digits and "-": what Kubernetes takes.
bool is_dns_label(const std::string& text);
// Such labels with "." between them, up to 253 bytes.
bool is_dns_name(const std::string& text);
// Up to its first ".".
std::string first_label(const std::string& host_name);

// In figures; no zone behind it.
bool is_ip_address(const std::string& text);

// The directory whose contents the calculator leaves out: "/mnt" of "/mnt/*". A path whose own last
// component is called "*" looks the same; that is taken for the former, too.
std::optional<std::string> directory_of_contents(const std::string& path);

// An absolute path that every format can carry once it is quoted: UTF-8 without control characters
// or blanks at its end.
bool is_plain_path(const std::string& path);

// For a shell: in single quotes where it needs any.
std::string shell_quoted(const std::string& text);
// For a list of paths in a unit: in double quotes, without specifiers.
std::string unit_quoted(const std::string& path);
// For the paths of a bind mount in a .nspawn file: ":" would part them.
std::string nspawn_escaped(const std::string& path);
// For a line like those of fstab: blanks and backslashes in octal.
std::string fstab_escaped(const std::string& path);
// For a pattern of rsync that has a wildcard of its own or none: "*", "?", "[" of the path stand
// for themselves. `suffix` is kept as it is.
std::string rsync_pattern(const std::string& path, const std::string& suffix);
