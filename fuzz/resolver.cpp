// The resolver's configuration file.
#include "inspect/resolver.h"

#include "fuzz/support.h"

void try_input(fuzz::Input input) {
    const std::string text = input.text();
    const NSAttrs attrs = parse_resolver(text);
    for (const std::string& server : attrs.nameservers) {
        require(!server.empty(), "a keyword without a value names no server");
        require(server.find_first_of(" \t\r\n") == std::string::npos, "a server is one word");
    }
    for (const std::string& domain : attrs.search_domains) {
        require(!domain.empty(), "no empty search domain");
        require(domain.find_first_of(" \t\n") == std::string::npos, "a domain is one word");
    }
    const NSAttrs twice = parse_resolver(text + "\n" + text);
    require(twice.nameservers.size() == 2 * attrs.nameservers.size() &&
                twice.search_domains.size() == 2 * attrs.search_domains.size(),
            "every line counts by itself");
}
