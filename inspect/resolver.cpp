#include "inspect/resolver.h"

#include "inspect/host_file.h"
#include "kiln/strings.h"

// Lines read:
// search a.example b.example
// nameserver 10.0.0.1
NSAttrs parse_resolver(const std::string& text) {
    NSAttrs attrs;
    for (std::string line : Kiln::split("\n", text, 0)) {
        Kiln::strip(line);
        const std::size_t keyword_end = line.find_first_of(Kiln::blanks_in_line);
        if (keyword_end == std::string::npos) {  // a keyword without a value, or nothing
            continue;
        }
        const std::string keyword = line.substr(0, keyword_end);
        std::string rest = line.substr(keyword_end);
        if (keyword == "nameserver") {
            Kiln::collapse(rest);  // words behind the address are glued to it, as required
            attrs.nameservers.push_back(rest);
        } else if (keyword == "search") {
            for (const std::string_view word : Kiln::words_of(rest)) {
                attrs.search_domains.emplace_back(word);
            }
        }
    }
    return attrs;
}

NSAttrs read_resolver(const Host& host) {
    std::string text;
    if (read_host_file(host.paths.resolv_conf, text) != 0) {
        return {};
    }
    return parse_resolver(text);
}
