#include "host_service_options.h"

#include <android-base/properties.h>
#include <processgroup_host.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

[[noreturn]] void usage(const char* program, const char* problem) {
    fprintf(stderr, "%s: %s\nusage: %s [--root DIR] [--property KEY=VALUE]...\n", program, problem,
            program);
    exit(2);
}

}  // namespace

std::string ApplyHostServiceOptions(int argc, char** argv) {
    std::string root;
    for (int i = 1; i < argc; ++i) {
        const char* option = argv[i];
        if (i + 1 >= argc) usage(argv[0], "missing value or unknown option");
        const std::string value = argv[++i];
        if (strcmp(option, "--root") == 0) {
            // Kernel paths are appended to the root, so it carries no trailing slash.
            root = value;
            while (root.size() > 1 && root.back() == '/') root.pop_back();
        } else if (strcmp(option, "--property") == 0) {
            const size_t equals = value.find('=');
            if (equals == std::string::npos || equals == 0) usage(argv[0], "bad --property");
            android::base::SetProperty(value.substr(0, equals), value.substr(equals + 1));
        } else {
            usage(argv[0], "unknown option");
        }
    }
    CgroupSetHostNodeRoot(root);
    return root;
}
