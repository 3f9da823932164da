#include "host_service_options.h"

#include <android-base/logging.h>
#include <android-base/parseint.h>
#include <android-base/properties.h>
#include <android-base/strings.h>
#include <android/log.h>
#include <host_binder.h>
#include <processgroup_host.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "host_logger.h"

namespace {

[[noreturn]] void usage(const char* program, const char* problem) {
    fprintf(stderr, "%s: %s\nusage: %s --root DIR [--property KEY=VALUE]... [--allow-uid LIST]...\n",
            program, problem, program);
    exit(2);
}

// "10000-19999,1000": single uids and inclusive ranges.
bool allowUids(const std::string& list) {
    for (const std::string& item : android::base::Split(list, ",")) {
        const size_t dash = item.find('-');
        uid_t first;
        uid_t last;
        if (dash == std::string::npos) {
            if (!android::base::ParseUint(item, &first)) return false;
            last = first;
        } else if (!android::base::ParseUint(item.substr(0, dash), &first) ||
                   !android::base::ParseUint(item.substr(dash + 1), &last) || first > last) {
            return false;
        }
        host_binder::allowCallerUids(first, last);
    }
    return true;
}

}  // namespace

aidl::vendor::vyren::hardware::performance::DeviceContext ApplyHostServiceOptions(int argc,
                                                                                  char** argv) {
    // A device's logcat shows every priority, and most of the service's success messages are
    // DEBUG; a host shows them too unless the libbase convention narrows it.
    if (getenv("ANDROID_LOG_TAGS") != nullptr) {
        android::base::InitLogging(argv);
    } else {
        __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    }
    // Every line of a message gets its own header, as in logcat, so logged caller text cannot
    // forge lines.
    __android_log_set_logger(host_logger::StderrLogger);

    std::string root;
    bool haveRoot = false;
    for (int i = 1; i < argc; ++i) {
        const char* option = argv[i];
        if (i + 1 >= argc) usage(argv[0], "missing value or unknown option");
        const std::string value = argv[++i];
        if (strcmp(option, "--root") == 0) {
            // Kernel paths are appended to the root, so it carries no trailing slash, and "/"
            // becomes the empty root.
            root = value;
            while (!root.empty() && root.back() == '/') root.pop_back();
            haveRoot = !value.empty();
        } else if (strcmp(option, "--property") == 0) {
            const size_t equals = value.find('=');
            if (equals == std::string::npos || equals == 0) usage(argv[0], "bad --property");
            android::base::SetProperty(value.substr(0, equals), value.substr(equals + 1));
        } else if (strcmp(option, "--allow-uid") == 0) {
            if (!allowUids(value)) usage(argv[0], "bad --allow-uid: want UID or FIRST-LAST, ...");
        } else {
            usage(argv[0], "unknown option");
        }
    }
    if (!haveRoot) {
        usage(argv[0],
              "no --root given. To serve a simulated device, run tools/serve.sh, or pass --root "
              "with a copy of a tree under sim/ (e.g. sim/kernel-5.15). To serve this machine's "
              "real /proc and /sys, pass --root /.");
    }
    aidl::vendor::vyren::hardware::performance::DeviceContext context;
    context.nodeRoot = root;
    context.cgroupControllerPath = [root](const std::string& controller, std::string* path) {
        return HostCgroupControllerPath(root, controller, path);
    };
    return context;
}
