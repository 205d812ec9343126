// The resolver's settings, parsed from the text of its configuration file.
#pragma once

#include <string>

#include "calc/host_profile.h"

// The name servers and search domains of a resolver configuration, in its order. A line counts only
// with a keyword and a value; every "search" line adds to the domains.
NSAttrs parse_resolver(const std::string& text);
