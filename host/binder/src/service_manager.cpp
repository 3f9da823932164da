/*
 * Service registry: a directory of Unix domain sockets, one per instance name.
 *
 * The directory is $HOST_BINDER_DIR, or /tmp/host-binder. An instance name maps to a file name
 * by keeping ASCII letters, digits, '_', '-' and '.' (except a leading '.') and writing every
 * other byte as %XX, so "pkg.IFoo/default" becomes "pkg.IFoo%2Fdefault". Services registered
 * by this process are also kept in a local table and handed out directly.
 */
#include <android-base/logging.h>
#include <android-base/unique_fd.h>
#include <android/binder_manager.h>
#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "binder_internal.h"
#include "remote.h"
#include "server.h"
#include "wire.h"

namespace {

using android::base::unique_fd;

constexpr char kDefaultDirectory[] = "/tmp/host-binder";
constexpr auto kLookupTimeout = std::chrono::seconds(5);
constexpr auto kLookupRetryInterval = std::chrono::milliseconds(20);

struct LocalService {
    ndk::SpAIBinder binder;
    std::string socketPath;
    pid_t owner;
};

struct LocalServices {
    std::mutex mutex;
    std::map<std::string, LocalService> byName;
};

LocalServices& localServices() {
    static LocalServices* services = new LocalServices;
    return *services;
}

// Removes this process's sockets at exit so the names are free at once. Children forked by
// the process share the table but not the sockets, hence the owner check.
void removeSocketsAtExit() {
    LocalServices& services = localServices();
    std::lock_guard<std::mutex> lock(services.mutex);
    for (const auto& [name, service] : services.byName) {
        if (service.owner == getpid()) unlink(service.socketPath.c_str());
    }
}

std::string serviceDirectory() {
    const char* dir = getenv("HOST_BINDER_DIR");
    return dir != nullptr && dir[0] != '\0' ? dir : kDefaultDirectory;
}

std::string encodeName(const std::string& name) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string encoded;
    for (size_t i = 0; i < name.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(name[i]);
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                           (c >= '0' && c <= '9') || c == '_' || c == '-' || (c == '.' && i > 0);
        if (plain) {
            encoded.push_back(static_cast<char>(c));
        } else {
            encoded.push_back('%');
            encoded.push_back(kHex[c >> 4]);
            encoded.push_back(kHex[c & 0xf]);
        }
    }
    return encoded;
}

// The socket path for instance, or empty (with a log) when it does not fit in sun_path.
std::string socketPathFor(const char* instance) {
    std::string path = serviceDirectory() + "/" + encodeName(instance);
    if (path.size() >= sizeof(sockaddr_un::sun_path)) {
        LOG(ERROR) << "binder: socket path for '" << instance << "' is too long (" << path.size()
                   << " bytes, limit " << sizeof(sockaddr_un::sun_path) - 1 << "): " << path;
        return {};
    }
    return path;
}

bool makeDirectories(const std::string& dir) {
    for (size_t slash = dir.find('/', 1);; slash = dir.find('/', slash + 1)) {
        const std::string prefix = dir.substr(0, slash);
        if (mkdir(prefix.c_str(), 0755) != 0 && errno != EEXIST) return false;
        if (slash == std::string::npos) break;
    }
    struct stat st;
    return stat(dir.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

// Makes path free for a new socket: fine if absent or a stale socket nobody answers on.
binder_exception_t claimSocketPath(const std::string& path) {
    struct stat st;
    if (lstat(path.c_str(), &st) != 0) {
        return errno == ENOENT ? EX_NONE : EX_ILLEGAL_STATE;
    }
    if (!S_ISSOCK(st.st_mode)) {
        LOG(ERROR) << "binder: " << path << " exists and is not a socket";
        return EX_ILLEGAL_STATE;
    }
    if (host_binder::connectToSocket(path).ok()) {
        LOG(ERROR) << "binder: a service is already registered at " << path;
        return EX_ILLEGAL_STATE;
    }
    if (errno != ECONNREFUSED) {
        PLOG(ERROR) << "binder: cannot probe " << path;
        return EX_ILLEGAL_STATE;
    }
    if (unlink(path.c_str()) != 0 && errno != ENOENT) {
        PLOG(ERROR) << "binder: cannot remove stale socket " << path;
        return EX_ILLEGAL_STATE;
    }
    return EX_NONE;
}

unique_fd listenOn(const std::string& path) {
    sockaddr_un addr = {};
    addr.sun_family = AF_UNIX;
    memcpy(addr.sun_path, path.c_str(), path.size() + 1);
    unique_fd fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!fd.ok() || bind(fd.get(), reinterpret_cast<sockaddr*>(&addr), sizeof(addr)) != 0) {
        PLOG(ERROR) << "binder: cannot bind " << path;
        return {};
    }
    // Callers of any uid may connect; the service sees who they are through SO_PEERCRED.
    chmod(path.c_str(), 0666);
    if (listen(fd.get(), SOMAXCONN) != 0) {
        PLOG(ERROR) << "binder: cannot listen on " << path;
        unlink(path.c_str());
        return {};
    }
    return fd;
}

AIBinder* findLocal(const char* instance) {
    LocalServices& services = localServices();
    std::lock_guard<std::mutex> lock(services.mutex);
    auto it = services.byName.find(instance);
    if (it == services.byName.end()) return nullptr;
    AIBinder* binder = it->second.binder.get();
    AIBinder_incStrong(binder);
    return binder;
}

AIBinder* lookupWithRetry(const char* instance) {
    const auto deadline = std::chrono::steady_clock::now() + kLookupTimeout;
    for (;;) {
        AIBinder* binder = AServiceManager_checkService(instance);
        if (binder != nullptr || std::chrono::steady_clock::now() >= deadline) return binder;
        std::this_thread::sleep_for(kLookupRetryInterval);
    }
}

}  // namespace

binder_exception_t AServiceManager_addService(AIBinder* binder, const char* instance) {
    if (binder == nullptr || instance == nullptr || instance[0] == '\0') {
        return EX_ILLEGAL_ARGUMENT;
    }
    if (AIBinder_isRemote(binder)) return EX_UNSUPPORTED_OPERATION;
    const std::string path = socketPathFor(instance);
    if (path.empty()) return EX_ILLEGAL_ARGUMENT;

    LocalServices& services = localServices();
    std::lock_guard<std::mutex> lock(services.mutex);
    if (services.byName.count(instance) != 0) return EX_ILLEGAL_STATE;

    const std::string dir = serviceDirectory();
    if (!makeDirectories(dir)) {
        PLOG(ERROR) << "binder: cannot create " << dir;
        return EX_ILLEGAL_STATE;
    }
    // Serialises the probe-and-replace against other processes registering in the directory.
    const std::string lockPath = dir + "/.lock";
    unique_fd lockFd(open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
    if (!lockFd.ok() || TEMP_FAILURE_RETRY(flock(lockFd.get(), LOCK_EX)) != 0) {
        PLOG(ERROR) << "binder: cannot lock " << lockPath;
        return EX_ILLEGAL_STATE;
    }
    binder_exception_t claimed = claimSocketPath(path);
    if (claimed != EX_NONE) return claimed;
    unique_fd listener = listenOn(path);
    if (!listener.ok()) return EX_ILLEGAL_STATE;

    static std::once_flag atExitRegistered;
    std::call_once(atExitRegistered, [] { atexit(removeSocketsAtExit); });
    AIBinder_incStrong(binder);
    services.byName.emplace(instance, LocalService{ndk::SpAIBinder(binder), path, getpid()});
    host_binder::serveOnSocket(std::move(listener), binder);
    return EX_NONE;
}

AIBinder* AServiceManager_checkService(const char* instance) {
    if (instance == nullptr || instance[0] == '\0') return nullptr;
    AIBinder* local = findLocal(instance);
    if (local != nullptr) return local;
    const std::string path = socketPathFor(instance);
    if (path.empty()) return nullptr;
    unique_fd connection = host_binder::connectToSocket(path);
    if (!connection.ok()) return nullptr;
    auto endpoint = std::make_shared<host_binder::RemoteEndpoint>(path);
    endpoint->addIdleConnection(std::move(connection));
    return host_binder::newRemoteBinder(std::move(endpoint));
}

AIBinder* AServiceManager_getService(const char* instance) {
    return lookupWithRetry(instance);
}

AIBinder* AServiceManager_waitForService(const char* instance) {
    return lookupWithRetry(instance);
}
