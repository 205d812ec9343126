// From a recording to what the report shows of its server. Pure.
#pragma once

#include <string>

#include "calc/container_config.h"
#include "plan/recording/combined_scan.h"
#include "plan/report/report_model.h"

// The server of a recording: what the verdict on it says, failed where nothing was counted.
ReportServer report_server(const std::string& name, NamedRecording recording, ConfigScales scales);

// A server of which there is nothing but the reason.
ReportServer failed_server(const std::string& name, const std::string& reason);

// Says why a server is not done though there is a recording of it; one that was done is so partly.
void add_reason(ReportServer& server, const std::string& reason);

// Servers that call themselves the same get a warning each: they may be one, counted twice.
void warn_of_same_hosts(std::vector<ReportServer>& servers);
