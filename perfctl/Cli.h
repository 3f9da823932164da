// perfctl's command line, kept apart from main() so that it runs in tests against a service in
// the same process.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace perfctl {

// Exit statuses.
inline constexpr int kExitOk = 0;
inline constexpr int kExitCallFailed = 1;
inline constexpr int kExitUsage = 2;

// Runs one command line (args excludes the program name). Results, --list, --help and dumps go
// to outFd; messages go to err. Returns the exit status.
int Run(const std::vector<std::string>& args, int outFd, std::ostream& err);

}  // namespace perfctl
