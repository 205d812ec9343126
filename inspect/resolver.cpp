#include "inspect/resolver.h"

#include <cstddef>
#include <vector>

#include "inspect/host_file.h"
#include "kiln/strings.h"

namespace {

using Kiln::blanks_in_line;

constexpr std::size_t npos = std::string::npos;

void append_words(const std::string& text, std::vector<std::string>& words) {
    std::size_t begin = text.find_first_not_of(blanks_in_line);
    while (begin != npos) {
        const std::size_t end = text.find_first_of(blanks_in_line, begin);
        words.push_back(text.substr(begin, end - begin));
        begin = text.find_first_not_of(blanks_in_line, end);
    }
}

}  // namespace

// Lines read:
// search a.example b.example
// nameserver 10.0.0.1
NSAttrs parse_resolver(const std::string& text) {
    NSAttrs attrs;
    for (std::string line : Kiln::split("\n", text, 0)) {
        Kiln::strip(line);
        const std::size_t keyword_end = line.find_first_of(blanks_in_line);
        if (keyword_end == npos) {  // a keyword without a value, or nothing
            continue;
        }
        const std::string keyword = line.substr(0, keyword_end);
        std::string rest = line.substr(keyword_end);
        if (keyword == "nameserver") {
            Kiln::collapse(rest);  // words behind the address are glued to it, as required
            attrs.nameservers.push_back(rest);
        } else if (keyword == "search") {
            append_words(rest, attrs.search_domains);
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
