// One writer for each engine, each in a file of its own. For limits_text() alone.
#pragma once

#include "plan/limits/limits.h"

LimitsText write_systemd(const LimitSheet& sheet);
LimitsText write_nspawn(const LimitSheet& sheet);
LimitsText write_lxc(const LimitSheet& sheet);
LimitsText write_podman(const LimitSheet& sheet);
LimitsText write_kubernetes(const LimitSheet& sheet);
LimitsText write_rsync(const LimitSheet& sheet);
