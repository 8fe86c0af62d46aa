// kelpctl/quiet_log.h - the platform's log in a command line tool.
#pragma once

namespace kelpctl {

/// Starts the log as the environment says; without KELP_LOG_LEVEL it stays silent: what
/// failed is said once, in kelpctl's own line.
void QuietLog();

}  // namespace kelpctl
