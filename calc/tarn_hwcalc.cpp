#include "calc/tarn_hwcalc.h"

#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <optional>

#include "calc/container_config.h"
#include "calc/counts.h"
#include "calc/memory_scan.h"
#include "calc/scan.h"
#include "inspect/distribution.h"
#include "inspect/excludes.h"
#include "inspect/net_ifaces.h"
#include "inspect/quota_count.h"
#include "inspect/resolver.h"
#include "kiln/numbers.h"
#include "kiln/strings.h"

namespace {

void append(const TarnHWCalc::Warnings& found, TarnHWCalc::Warnings& warnings) {
    warnings.insert(warnings.end(), found.begin(), found.end());
}

}  // namespace

int TarnHWCalc::calcPhysParams(PhysParams* params) {
    Warnings& warnings = params->notes.warnings;

    // The order is fixed: it is that of the warnings, and the reiserfs rule of the last step
    // replaces a count of the first.
    int code = calcProcParams(params);
    if (code == 0) {
        code = calcQuotaUGIDLimit(params);
    }
    if (code == 0) {
        code = getNetIfaces(warnings, params->ifaces);
    }
    if (code != 0) {
        return code;
    }
    // From here on nothing can fail: what goes wrong becomes a warning.
    params->distribution = getDistribution(warnings);
    params->hostname = host.host_name().value_or(params->hostname);  // kept when there is none
    params->ns_attrs = getNSAttrs(warnings);
    params->notes.excludes = calcExcludes(params, warnings);
    return 0;
}

int TarnHWCalc::calcProcParams(PhysParams* params) {
    const std::optional<SampleFailure> failure =
        run_scan(host, clock, {scan_time, scan_period}, scan_observer, *params);
    if (!failure) {
        return 0;
    }
    const bool of_command = failure->source == SampleFailure::Source::command;
    return setError(of_command ? ERR_EXEC : ERR_PROC, "%s", failure->text.c_str());
}

int TarnHWCalc::calcMemInfoByVmSize(PhysParams* params) {
    const Kiln::Done done = raise_memory(host, params->privvmpages, params->lockedpages);
    return done ? 0 : setError(ERR_PROC, "%s", done.reason().c_str());
}

int TarnHWCalc::calcQuotaUGIDLimit(PhysParams* params) {
    const Kiln::Result<std::uint32_t> ids = count_quota_ids(host);
    if (!ids) {
        return setError(ERR_MTAB, "%s", ids.reason().c_str());
    }
    params->quotaugidlimit = static_cast<std::int32_t>(*ids);
    return 0;
}

int TarnHWCalc::getNetIfaces(Warnings& /*warnings*/, NetIfaceList& ifaces) {
    const Kiln::Result<NetIfaceList> found = list_net_ifaces();
    if (!found) {
        return setError(ERR_NETCONF, "%s", found.reason().c_str());
    }
    ifaces.insert(ifaces.end(), found->begin(), found->end());
    return 0;
}

std::string TarnHWCalc::getDistribution(Warnings& warnings) const {
    const DistributionFinding found = detect_distribution(host, dist_detect_scripts);
    append(found.warnings, warnings);
    return found.name;
}

TarnHWCalc::NSAttrs TarnHWCalc::getNSAttrs(Warnings& /*warnings*/) const {
    return read_resolver(host);
}

TarnHWCalc::Excludes TarnHWCalc::calcExcludes(PhysParams* params, Warnings& warnings) const {
    const ExcludeFindings found = find_excludes(host);
    append(found.warnings, warnings);
    if (found.nfs_found) {
        params->nfs_used = true;
    }
    if (found.reiserfs_found) {
        params->diskinodes = reiserfs_diskinodes;
    }
    return found.excludes;
}

TarnHWCalc::Excludes TarnHWCalc::compressExcludes(const Excludes& /*excludes*/) const {
    return {};
}

int TarnHWCalc::calcVPSConf(const PhysParams& params, EnvConfig& config) const {
    write_config(compute_config(params, {mem_scale, disk_scale}, getpagesize()), config);
    return 0;
}

// Without the average, the pseudo-terminals and the dentry cache, as required.
void TarnHWCalc::printPhysParams(const PhysParams& params) const {
    const auto count = [](const char* name, std::int32_t value) {
        std::printf("%s: %u\n", name, static_cast<unsigned>(value));
    };
    for (const Count& sampled : sampled_counts) {
        count(sampled.name, params.*sampled.field);
    }
    count(quota_count.name, params.quotaugidlimit);
    std::printf("distribution: %s\nhostname: %s\nnameservers: %s\nsearch_domains: %s\n",
                params.distribution.c_str(), params.hostname.c_str(),
                Kiln::join(" ", params.ns_attrs.nameservers).c_str(),
                Kiln::join(" ", params.ns_attrs.search_domains).c_str());
}

void TarnHWCalc::set_max(std::int32_t& counter, std::int32_t value) {
    raise_to(counter, value);
}

int TarnHWCalc::check_overflow_parameter(const char* /*name*/, float value) {
    return Kiln::truncate_to_int32(value);
}

int TarnHWCalc::setError(ec_t code, const char* format, ...) {
    va_list args;
    va_start(args, format);
    std::vsnprintf(error_text, sizeof(error_text), format, args);
    va_end(args);
    return code;
}
