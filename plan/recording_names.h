// The names in a recording's lines, and its findings as JSON. Used by the reader and the writer of
// recordings and by the recorder, which hands findings from one process to another.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "plan/recording.h"

namespace recording_names {

constexpr const char* format_name = "recording_format";
constexpr const char* version_name = "version";
constexpr const char* host_name = "host";
constexpr const char* machine_name = "machine";
constexpr const char* kernel_name = "kernel";
constexpr const char* page_size_name = "page_size";
constexpr const char* start_name = "start";
constexpr const char* time_name = "scan_time";
constexpr const char* period_name = "scan_period";

constexpr const char* continued_name = "continued";

constexpr const char* pass_name = "pass";
constexpr const char* at_name = "at_ms";
constexpr const char* took_name = "took_ms";
constexpr const char* counts_name = "counts";
constexpr const char* failed_name = "failed";

constexpr const char* interrupted_name = "interrupted";
constexpr const char* findings_name = "findings";
constexpr const char* quota_ids_name = "quotaugidlimit";
constexpr const char* interfaces_name = "interfaces";
constexpr const char* name_name = "name";
constexpr const char* kind_name = "kind";
constexpr const char* addresses_name = "addresses";
constexpr const char* dhcp_name = "dhcp";
constexpr const char* distribution_name = "distribution";
constexpr const char* hostname_name = "hostname";
constexpr const char* nameservers_name = "nameservers";
constexpr const char* search_domains_name = "search_domains";
constexpr const char* warnings_name = "warnings";
constexpr const char* code_name = "code";
constexpr const char* message_name = "message";
constexpr const char* excludes_name = "excludes";
constexpr const char* flag_name = "flag";
constexpr const char* path_name = "path";
constexpr const char* nfs_name = "nfs";
constexpr const char* reiserfs_name = "reiserfs";
constexpr const char* failures_name = "failures";
constexpr const char* step_name = "step";
constexpr const char* text_name = "text";
constexpr const char* messages_name = "messages";

constexpr const char* utc_format = "%Y-%m-%dT%H:%M:%SZ";

}  // namespace recording_names

nlohmann::ordered_json findings_to_json(const Findings& findings);

// Throws JsonDamage for what is no findings.
Findings findings_from_json(const nlohmann::json& object);
