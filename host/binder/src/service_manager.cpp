/*
 * Service registry: a directory of Unix domain sockets, one per instance name.
 *
 * The directory is $HOST_BINDER_DIR, else $XDG_RUNTIME_DIR/host-binder, else
 * /tmp/host-binder-<uid>. Whoever can write to it could take names or stand in for services, so
 * services and clients alike refuse one that is a symbolic link, belongs to another user than
 * themselves or root, or is writable by group or others. An instance name maps to a file name
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
#include <cstdio>
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

constexpr auto kLookupTimeout = std::chrono::seconds(5);
constexpr auto kLookupRetryInterval = std::chrono::milliseconds(20);
// Registration waits this long at most for another process registering in the same directory.
constexpr auto kLockTimeout = std::chrono::seconds(5);

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
    if (dir != nullptr && dir[0] != '\0') return dir;
    const char* runtime = getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && runtime[0] != '\0') return std::string(runtime) + "/host-binder";
    return "/tmp/host-binder-" + std::to_string(geteuid());
}

enum class Directory { kTrusted, kMissing, kRefused };

// Checks that only this user or root can change what dir holds; logs why not when asked to.
Directory checkDirectory(const std::string& dir, bool logRefusal) {
    struct stat st;
    if (lstat(dir.c_str(), &st) != 0) {
        if (errno == ENOENT) return Directory::kMissing;
        if (logRefusal) PLOG(ERROR) << "binder: cannot use service directory " << dir;
        return Directory::kRefused;
    }
    std::string problem;
    if (S_ISLNK(st.st_mode)) {
        problem = "it is a symbolic link";
    } else if (!S_ISDIR(st.st_mode)) {
        problem = "it is not a directory";
    } else if (st.st_uid != geteuid() && st.st_uid != 0) {
        problem = "it belongs to uid " + std::to_string(st.st_uid) + ", neither this user (uid " +
                  std::to_string(geteuid()) + ") nor root";
    } else if ((st.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        char mode[8];
        snprintf(mode, sizeof(mode), "%04o", st.st_mode & 07777);
        problem = std::string("it is writable by group or others (mode ") + mode + ")";
    } else {
        return Directory::kTrusted;
    }
    if (logRefusal) {
        LOG(ERROR) << "binder: refusing service directory " << dir << ": " << problem
                   << ". Set HOST_BINDER_DIR to a directory of your own, or to the directory of "
                      "the service you want to reach.";
    }
    return Directory::kRefused;
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

// Creates what is missing of dir: parents as any directory, dir itself private to this user,
// or searchable by the other uids allowed to call.
bool makeDirectories(const std::string& dir) {
    for (size_t slash = dir.find('/', 1);; slash = dir.find('/', slash + 1)) {
        const std::string prefix = dir.substr(0, slash);
        const bool last = slash == std::string::npos;
        const mode_t mode = !last ? 0755 : host_binder::otherUidsAllowed() ? 0711 : 0700;
        if (mkdir(prefix.c_str(), mode) != 0 && errno != EEXIST) return false;
        if (last) break;
    }
    return true;
}

// Takes the directory's registration lock, waiting a bounded time for another process.
unique_fd lockDirectory(const std::string& dir) {
    const std::string lockPath = dir + "/.lock";
    unique_fd fd(open(lockPath.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!fd.ok()) {
        PLOG(ERROR) << "binder: cannot open " << lockPath;
        return {};
    }
    const auto deadline = std::chrono::steady_clock::now() + kLockTimeout;
    while (flock(fd.get(), LOCK_EX | LOCK_NB) != 0) {
        if ((errno != EWOULDBLOCK && errno != EINTR) ||
            std::chrono::steady_clock::now() >= deadline) {
            PLOG(ERROR) << "binder: cannot lock " << lockPath;
            return {};
        }
        std::this_thread::sleep_for(kLookupRetryInterval);
    }
    return fd;
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
    if (!fd.ok()) {
        PLOG(ERROR) << "binder: cannot create a socket for " << path;
        return {};
    }
    // The socket is private to this user unless other uids may call; the transport checks each
    // caller's uid as well. Connections inherit SO_PASSCRED, so even a request sent before the
    // connection is accepted carries its sender's credentials.
    const int on = 1;
    const mode_t saved = umask(host_binder::otherUidsAllowed() ? 0111 : 0177);
    const int bound = bind(fd.get(), reinterpret_cast<sockaddr*>(&addr), sizeof(addr));
    umask(saved);
    if (bound != 0 || setsockopt(fd.get(), SOL_SOCKET, SO_PASSCRED, &on, sizeof(on)) != 0) {
        PLOG(ERROR) << "binder: cannot bind " << path;
        if (bound == 0) unlink(path.c_str());
        return {};
    }
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
        // A refused directory stays refused; it was reported once already.
        if (checkDirectory(serviceDirectory(), false) == Directory::kRefused) return nullptr;
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
    if (checkDirectory(dir, true) != Directory::kTrusted) return EX_ILLEGAL_STATE;
    // Serialises the probe-and-replace against other processes registering in the directory.
    unique_fd lockFd = lockDirectory(dir);
    if (!lockFd.ok()) return EX_ILLEGAL_STATE;
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
    if (path.empty() || checkDirectory(serviceDirectory(), true) != Directory::kTrusted) {
        return nullptr;
    }
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
