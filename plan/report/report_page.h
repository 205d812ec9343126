// The report as one page that stands alone: markup, style and script, Chart.js, and the fleet as
// JSON between them.
#pragma once

#include <string>

#include "plan/report/report_model.h"

// Whether this program was built with the page: not where Chart.js was missing or too old.
bool has_page();

// The page. Whatever the strings of the fleet hold, none of it can leave the JSON: every "<" is
// written as an escape.
std::string report_page(const ReportFleet& fleet);
