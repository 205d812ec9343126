#include "inspect/resolver.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kiln/strings.h"

namespace {

std::string show(const NSAttrs& attrs) {
    const auto& servers = attrs.nameservers;
    const auto& domains = attrs.search_domains;
    return Kiln::join(",", servers.begin(), servers.end()) + "|" +
           Kiln::join(",", domains.begin(), domains.end());
}

TEST(Resolver, KeepsServersAndSearchDomains) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"nameserver\nsearch \n\nsearch", "|"},
        {"  nameserver\t10.0.0.1 \r\nnameserver ::1", "10.0.0.1,::1|"},
        {"nameserver 10.0.0.1 # x", "10.0.0.1#x|"},
        {"search a.b\t c.d\nnameserver 1\nsearch  e", "1|a.b,c.d,e"},
        {"domain d\noptions o\n# nameserver 1\n;search x\nNameserver 2\nsearches y z", "|"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(show(parse_resolver(text)), expected) << text;
    }
}

}  // namespace
