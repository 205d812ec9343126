// The report as one page that stands alone: markup, style and script, Chart.js, and the fleet as
// JSON between them.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "plan/report_model.h"

// Writes a piece of text somewhere; false when it cannot.
using TextSink = std::function<bool(std::string_view)>;

// Whether this program was built with the page: not where Chart.js was missing or too old.
bool has_page();

// Hands the page to `sink`, piece by piece. False as soon as the sink says so. Whatever the
// strings of the fleet hold, none of it can leave the JSON: every "<" is written as an escape.
bool write_page(const ReportFleet& fleet, const TextSink& sink);
