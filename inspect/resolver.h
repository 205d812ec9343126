// The resolver's settings, parsed from the text of its configuration file.
#pragma once

#include <string>

#include "inspect/host.h"
#include "inspect/records.h"

// The name servers and search domains of a resolver configuration, in its order. A line counts only
// with a keyword and a value; every "search" line adds to the domains.
NSAttrs parse_resolver(const std::string& text);

// Those of the host; empty when its file cannot be read.
NSAttrs read_resolver(const Host& host);
