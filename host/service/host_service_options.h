#pragma once

#include <string>

// Host only: applies the daemon's host options and returns the node root to serve.
//   --root DIR            serve the simulated device tree at DIR (default: the host's own nodes)
//   --property KEY=VALUE  set a system property before the service object is built
// Exits with status 2 and a usage message on anything else.
std::string ApplyHostServiceOptions(int argc, char** argv);
