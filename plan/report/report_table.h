// The report's table of servers as text.
#pragma once

#include <string>

#include "plan/report/report_model.h"

// For a spreadsheet: RFC 4180, a first row of names, bare numbers. What is not known is an empty
// cell. A text that a spreadsheet would take for a formula gets an apostrophe before it.
std::string csv_table(const ReportFleet& fleet);

// For a terminal: columns aligned, sizes for a person, totals below, every server's reason and
// warnings under it. Ends with a newline.
std::string text_table(const ReportFleet& fleet);
