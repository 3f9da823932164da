/*
 * Service registry. Services registered by this process are kept in a local table and handed
 * out directly.
 */
#include <android/binder_manager.h>

#include <map>
#include <mutex>
#include <string>

#include "binder_internal.h"

namespace {

struct LocalServices {
    std::mutex mutex;
    std::map<std::string, ndk::SpAIBinder> byName;
};

LocalServices& localServices() {
    static LocalServices* services = new LocalServices;
    return *services;
}

AIBinder* findLocal(const char* instance) {
    LocalServices& services = localServices();
    std::lock_guard<std::mutex> lock(services.mutex);
    auto it = services.byName.find(instance);
    if (it == services.byName.end()) return nullptr;
    AIBinder* binder = it->second.get();
    AIBinder_incStrong(binder);
    return binder;
}

}  // namespace

binder_exception_t AServiceManager_addService(AIBinder* binder, const char* instance) {
    if (binder == nullptr || instance == nullptr || instance[0] == '\0') {
        return EX_ILLEGAL_ARGUMENT;
    }
    if (AIBinder_isRemote(binder)) return EX_UNSUPPORTED_OPERATION;
    LocalServices& services = localServices();
    std::lock_guard<std::mutex> lock(services.mutex);
    if (services.byName.count(instance) != 0) return EX_ILLEGAL_STATE;
    AIBinder_incStrong(binder);
    services.byName.emplace(instance, ndk::SpAIBinder(binder));
    return EX_NONE;
}

AIBinder* AServiceManager_checkService(const char* instance) {
    if (instance == nullptr) return nullptr;
    return findLocal(instance);
}

AIBinder* AServiceManager_getService(const char* instance) {
    return AServiceManager_checkService(instance);
}

AIBinder* AServiceManager_waitForService(const char* instance) {
    return AServiceManager_checkService(instance);
}
