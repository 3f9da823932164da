/*
 * Binder objects: classes, local binders, proxies, references and transactions.
 */
#include <android/binder_ibinder.h>
#include <unistd.h>

#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "binder_internal.h"
#include "remote.h"
#include "wire.h"

namespace host_binder {

CallingIdentity& currentCallingIdentity() {
    thread_local CallingIdentity identity;
    return identity;
}

ScopedCallingIdentity::ScopedCallingIdentity(uid_t uid, pid_t pid)
    : mSaved(currentCallingIdentity()) {
    CallingIdentity& identity = currentCallingIdentity();
    identity.remote = true;
    identity.uid = uid;
    identity.pid = pid;
}

ScopedCallingIdentity::~ScopedCallingIdentity() {
    currentCallingIdentity() = mSaved;
}

binder_status_t checkInterfaceToken(const AIBinder_Class* clazz, const AParcel* in) {
    if (clazz == nullptr) return STATUS_BAD_TYPE;
    int32_t strictPolicy;
    int32_t workSource;
    int32_t header;
    if (AParcel_readInt32(in, &strictPolicy) != STATUS_OK ||
        AParcel_readInt32(in, &workSource) != STATUS_OK ||
        AParcel_readInt32(in, &header) != STATUS_OK || header != kVendorHeader) {
        return STATUS_BAD_TYPE;
    }
    std::string descriptor;
    binder_status_t status = AParcel_readString(in, &descriptor, stdStringAllocator);
    if (status != STATUS_OK || descriptor != clazz->descriptor) return STATUS_BAD_TYPE;
    return STATUS_OK;
}

binder_status_t transactLocal(AIBinder* binder, transaction_code_t code, const AParcel* in,
                              AParcel* out, binder_flags_t /*flags*/) {
    const AIBinder_Class* clazz = binder->clazz.load();
    AParcel_setDataPosition(in, 0);
    binder_status_t status;
    if (code >= FIRST_CALL_TRANSACTION && code <= LAST_CALL_TRANSACTION) {
        status = checkInterfaceToken(clazz, in);
        if (status == STATUS_OK) status = clazz->onTransact(binder, code, in, out);
    } else if (code == kPingTransaction) {
        status = STATUS_OK;
    } else if (code == kInterfaceTransaction) {
        status = AParcel_writeString(out, clazz->descriptor.c_str(),
                                     static_cast<int32_t>(clazz->descriptor.size()));
    } else {
        status = STATUS_UNKNOWN_TRANSACTION;
    }
    AParcel_setDataPosition(out, 0);
    return status;
}

AIBinder* newRemoteBinder(std::shared_ptr<RemoteEndpoint> endpoint) {
    AIBinder* binder = new AIBinder;
    binder->anchor = std::make_shared<WeakAnchor>();
    binder->anchor->binder = binder;
    binder->remote = std::move(endpoint);
    return binder;
}

}  // namespace host_binder

using host_binder::RemoteEndpoint;

namespace {

// Asks a remote binder for its interface descriptor.
bool queryRemoteDescriptor(AIBinder* binder, std::string* descriptor) {
    ndk::ScopedAParcel in(AParcel_create());
    ndk::ScopedAParcel reply(AParcel_create());
    if (binder->remote->transact(host_binder::kInterfaceTransaction, in.get(), reply.get(), 0) !=
        STATUS_OK) {
        return false;
    }
    return AParcel_readString(reply.get(), descriptor, host_binder::stdStringAllocator) == STATUS_OK;
}

}  // namespace

AIBinder_Class* AIBinder_Class_define(const char* interfaceDescriptor,
                                      AIBinder_Class_onCreate onCreate,
                                      AIBinder_Class_onDestroy onDestroy,
                                      AIBinder_Class_onTransact onTransact) {
    if (interfaceDescriptor == nullptr || onTransact == nullptr) return nullptr;
    AIBinder_Class* clazz = new AIBinder_Class;
    clazz->descriptor = interfaceDescriptor;
    clazz->onCreate = onCreate;
    clazz->onDestroy = onDestroy;
    clazz->onTransact = onTransact;
    return clazz;
}

void AIBinder_Class_setOnDump(AIBinder_Class* clazz, AIBinder_onDump onDump) {
    if (clazz != nullptr) clazz->onDump = onDump;
}

const char* AIBinder_Class_getDescriptor(const AIBinder_Class* clazz) {
    return clazz == nullptr ? nullptr : clazz->descriptor.c_str();
}

AIBinder* AIBinder_new(const AIBinder_Class* clazz, void* args) {
    if (clazz == nullptr) return nullptr;
    AIBinder* binder = new AIBinder;
    binder->anchor = std::make_shared<host_binder::WeakAnchor>();
    binder->anchor->binder = binder;
    binder->clazz = clazz;
    binder->userData = clazz->onCreate != nullptr ? clazz->onCreate(args) : args;
    return binder;
}

bool AIBinder_isRemote(const AIBinder* binder) {
    return binder != nullptr && binder->remote != nullptr;
}

bool AIBinder_isAlive(const AIBinder* binder) {
    if (binder == nullptr) return false;
    if (binder->remote == nullptr) return true;
    return binder->remote->isAlive();
}

binder_status_t AIBinder_ping(AIBinder* binder) {
    if (binder == nullptr) return STATUS_UNEXPECTED_NULL;
    if (binder->remote == nullptr) return STATUS_OK;
    ndk::ScopedAParcel in(AParcel_create());
    ndk::ScopedAParcel reply(AParcel_create());
    return binder->remote->transact(host_binder::kPingTransaction, in.get(), reply.get(), 0);
}

binder_status_t AIBinder_dump(AIBinder* binder, int fd, const char** args, uint32_t numArgs) {
    if (binder == nullptr) return STATUS_UNEXPECTED_NULL;
    if (numArgs > 0 && args == nullptr) return STATUS_UNEXPECTED_NULL;
    if (binder->remote == nullptr) {
        const AIBinder_Class* clazz = binder->clazz.load();
        if (clazz->onDump == nullptr) return STATUS_OK;
        return clazz->onDump(binder, fd, args, numArgs);
    }
    if (fd < 0) return STATUS_BAD_VALUE;
    ndk::ScopedAParcel in(AParcel_create());
    binder_status_t status = host_binder::writeDumpArgs(in.get(), args, numArgs);
    if (status != STATUS_OK) return status;
    ndk::ScopedAParcel reply(AParcel_create());
    return binder->remote->transact(host_binder::kDumpTransaction, in.get(), reply.get(), 0, fd);
}

uid_t AIBinder_getCallingUid() {
    const host_binder::CallingIdentity& identity = host_binder::currentCallingIdentity();
    return identity.remote ? identity.uid : getuid();
}

pid_t AIBinder_getCallingPid() {
    const host_binder::CallingIdentity& identity = host_binder::currentCallingIdentity();
    return identity.remote ? identity.pid : getpid();
}

void AIBinder_incStrong(AIBinder* binder) {
    if (binder != nullptr) binder->strong.fetch_add(1, std::memory_order_relaxed);
}

void AIBinder_decStrong(AIBinder* binder) {
    if (binder == nullptr) return;
    if (binder->strong.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    {
        // Weak references stop seeing the binder before it is destroyed.
        std::lock_guard<std::mutex> lock(binder->anchor->mutex);
        binder->anchor->binder = nullptr;
    }
    const AIBinder_Class* clazz = binder->clazz.load();
    if (binder->remote == nullptr && clazz != nullptr && clazz->onDestroy != nullptr) {
        clazz->onDestroy(binder->userData);
    }
    delete binder;
}

int32_t AIBinder_debugGetRefCount(AIBinder* binder) {
    return binder == nullptr ? -1 : binder->strong.load(std::memory_order_relaxed);
}

bool AIBinder_associateClass(AIBinder* binder, const AIBinder_Class* clazz) {
    if (binder == nullptr || clazz == nullptr) return false;
    const AIBinder_Class* current = binder->clazz.load();
    if (current == clazz) return true;
    if (current != nullptr) return current->descriptor == clazz->descriptor;
    // Only proxies start without a class; learn what the other side implements.
    std::string descriptor;
    if (binder->remote == nullptr || !queryRemoteDescriptor(binder, &descriptor) ||
        descriptor != clazz->descriptor) {
        return false;
    }
    const AIBinder_Class* expected = nullptr;
    if (binder->clazz.compare_exchange_strong(expected, clazz)) return true;
    return expected->descriptor == clazz->descriptor;
}

const AIBinder_Class* AIBinder_getClass(AIBinder* binder) {
    return binder == nullptr ? nullptr : binder->clazz.load();
}

void* AIBinder_getUserData(AIBinder* binder) {
    return binder == nullptr ? nullptr : binder->userData;
}

binder_status_t AIBinder_prepareTransaction(AIBinder* binder, AParcel** in) {
    if (binder == nullptr || in == nullptr) return STATUS_UNEXPECTED_NULL;
    const AIBinder_Class* clazz = binder->clazz.load();
    if (clazz == nullptr) return STATUS_INVALID_OPERATION;
    std::unique_ptr<AParcel> parcel(AParcel_create());
    parcel->target = binder;
    binder_status_t status = AParcel_writeInt32(parcel.get(), 0);  // strict-mode policy
    if (status == STATUS_OK)
        status = AParcel_writeInt32(parcel.get(), host_binder::kUnsetWorkSource);
    if (status == STATUS_OK) status = AParcel_writeInt32(parcel.get(), host_binder::kVendorHeader);
    if (status == STATUS_OK) {
        status = AParcel_writeString(parcel.get(), clazz->descriptor.c_str(),
                                     static_cast<int32_t>(clazz->descriptor.size()));
    }
    if (status != STATUS_OK) return status;
    *in = parcel.release();
    return STATUS_OK;
}

binder_status_t AIBinder_transact(AIBinder* binder, transaction_code_t code, AParcel** in,
                                  AParcel** out, binder_flags_t flags) {
    if (in == nullptr) return STATUS_UNEXPECTED_NULL;
    // The input parcel is consumed whatever happens.
    std::unique_ptr<AParcel> input(*in);
    *in = nullptr;
    if (binder == nullptr || input == nullptr || out == nullptr) return STATUS_UNEXPECTED_NULL;
    if (input->target != binder) return STATUS_BAD_VALUE;
    if ((flags & ~static_cast<binder_flags_t>(FLAG_ONEWAY)) != 0) return STATUS_BAD_VALUE;
    if (code < FIRST_CALL_TRANSACTION || code > LAST_CALL_TRANSACTION) {
        return STATUS_UNKNOWN_TRANSACTION;
    }
    std::unique_ptr<AParcel> reply(AParcel_create());
    binder_status_t status;
    if (binder->remote == nullptr) {
        status = host_binder::transactLocal(binder, code, input.get(), reply.get(), flags);
    } else {
        status = binder->remote->transact(code, input.get(), reply.get(), flags);
    }
    if (status != STATUS_OK) return status;
    *out = reply.release();
    return STATUS_OK;
}

AIBinder_Weak* AIBinder_Weak_new(AIBinder* binder) {
    if (binder == nullptr) return nullptr;
    return new AIBinder_Weak{binder->anchor};
}

void AIBinder_Weak_delete(AIBinder_Weak* weakBinder) {
    delete weakBinder;
}

AIBinder* AIBinder_Weak_promote(AIBinder_Weak* weakBinder) {
    if (weakBinder == nullptr) return nullptr;
    std::lock_guard<std::mutex> lock(weakBinder->anchor->mutex);
    AIBinder* binder = weakBinder->anchor->binder;
    if (binder == nullptr) return nullptr;
    // Only revive a binder whose strong count has not already dropped to zero.
    int32_t count = binder->strong.load(std::memory_order_relaxed);
    while (count > 0) {
        if (binder->strong.compare_exchange_weak(count, count + 1, std::memory_order_acq_rel)) {
            return binder;
        }
    }
    return nullptr;
}
