// Writes one entry into a hosts file. No external function calls it: replacing the system's
// hosts file needs rights a FileMaker client does not have.
#pragma once

#include <cstdint>
#include <string>

namespace slib {

inline constexpr char kHostsPath[] = "/private/etc/hosts";
inline constexpr char kHostsBackupPath[] = "/Users/shared/hosts.backup";

// Rewrites the hosts file so that it holds one line for `entry`: under a mode up to 2 every line
// holding `entry` becomes "entry<TAB>value<TAB># modifyed by ..." ; under a higher mode those
// lines are dropped. When no line was replaced, "entry<TAB>value<TAB># added by ..." is appended.
// The new file is written to `backupPath` and then takes the hosts file's place, read-only.
// Returns 0; -1 when the hosts file is missing or empty; -2 when the backup cannot be written.
std::int32_t CheckIp(const std::string& entry, const std::string& value, std::int32_t mode,
                     const std::string& hostsPath = kHostsPath,
                     const std::string& backupPath = kHostsBackupPath);

}  // namespace slib
