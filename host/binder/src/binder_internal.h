/*
 * Internal layout of the binder objects shared by the library's sources.
 */
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_parcel.h>
#include <android/binder_status.h>
#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace host_binder {

class RemoteEndpoint;

// Upper bound on what a parcel may grow to; writes beyond it fail with STATUS_NO_MEMORY.
constexpr size_t kMaxParcelSize = 64 * 1024 * 1024;

// Marker in the interface token that identifies a vendor-partition caller.
constexpr int32_t kVendorHeader = B_PACK_CHARS('V', 'N', 'D', 'R');
// Work-source uid meaning "not set".
constexpr int32_t kUnsetWorkSource = -1;

constexpr transaction_code_t kPingTransaction = B_PACK_CHARS('_', 'P', 'N', 'G');
constexpr transaction_code_t kDumpTransaction = B_PACK_CHARS('_', 'D', 'M', 'P');
constexpr transaction_code_t kInterfaceTransaction = B_PACK_CHARS('_', 'N', 'T', 'F');

// Lets weak references find out whether their binder still exists.
struct WeakAnchor {
    std::mutex mutex;
    AIBinder* binder;
};

// Caller identity of the remote transaction running on this thread.
struct CallingIdentity {
    bool remote = false;
    uid_t uid = 0;
    pid_t pid = 0;
};

CallingIdentity& currentCallingIdentity();

// Sets the calling identity for the lifetime of the object and restores the previous one.
class ScopedCallingIdentity {
  public:
    ScopedCallingIdentity(uid_t uid, pid_t pid);
    ~ScopedCallingIdentity();
    ScopedCallingIdentity(const ScopedCallingIdentity&) = delete;
    ScopedCallingIdentity& operator=(const ScopedCallingIdentity&) = delete;

  private:
    CallingIdentity mSaved;
};

// Checks the interface token at the start of in against the binder's class.
binder_status_t checkInterfaceToken(const AIBinder_Class* clazz, const AParcel* in);

// Runs one transaction on a local binder; in is rewound first, out is rewound afterwards.
binder_status_t transactLocal(AIBinder* binder, transaction_code_t code, const AParcel* in,
                              AParcel* out, binder_flags_t flags);

// Creates a proxy binder with one strong reference that talks to endpoint.
AIBinder* newRemoteBinder(std::shared_ptr<RemoteEndpoint> endpoint);

// AParcel_readString allocator filling the std::string that data points to.
bool stdStringAllocator(void* data, int32_t length, char** buffer);

// UTF-8 <-> UTF-16 conversion; false for malformed input.
bool utf8ToUtf16(const char* data, size_t size, std::u16string* out);
bool utf16ToUtf8(const char16_t* data, size_t size, std::string* out);

}  // namespace host_binder

struct AIBinder_Class {
    std::string descriptor;
    AIBinder_Class_onCreate onCreate = nullptr;
    AIBinder_Class_onDestroy onDestroy = nullptr;
    AIBinder_Class_onTransact onTransact = nullptr;
    AIBinder_onDump onDump = nullptr;
};

struct AIBinder {
    std::atomic<int32_t> strong{1};
    std::shared_ptr<host_binder::WeakAnchor> anchor;
    std::atomic<const AIBinder_Class*> clazz{nullptr};
    void* userData = nullptr;
    // Set for proxies; null for local binders.
    std::shared_ptr<host_binder::RemoteEndpoint> remote;
};

struct AIBinder_Weak {
    std::shared_ptr<host_binder::WeakAnchor> anchor;
};

struct AParcel {
    std::vector<uint8_t> data;
    // Reads take a const parcel but advance the position.
    mutable size_t position = 0;
    // Binder objects written into this parcel; they only travel within the process.
    std::vector<ndk::SpAIBinder> objects;
    // The binder this parcel was prepared for by AIBinder_prepareTransaction.
    AIBinder* target = nullptr;
};

struct AStatus {
    binder_exception_t exception = EX_NONE;
    binder_status_t status = STATUS_OK;
    int32_t serviceSpecific = 0;
    std::string message;
};
