/*
 * RAII owners for binder objects, parcels, statuses and file descriptors.
 */
#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_parcel.h>
#include <android/binder_status.h>
#include <unistd.h>

#include <cstddef>
#include <string>

namespace ndk {

// Holds one strong reference to a binder.
class SpAIBinder {
  public:
    SpAIBinder() : mBinder(nullptr) {}
    // Adopts the reference the caller owns.
    explicit SpAIBinder(AIBinder* binder) : mBinder(binder) {}
    SpAIBinder(std::nullptr_t) : SpAIBinder() {}  // NOLINT(google-explicit-constructor)
    SpAIBinder(const SpAIBinder& other) : mBinder(other.mBinder) {
        if (mBinder != nullptr) AIBinder_incStrong(mBinder);
    }
    SpAIBinder(SpAIBinder&& other) noexcept : mBinder(other.mBinder) { other.mBinder = nullptr; }
    ~SpAIBinder() { set(nullptr); }

    SpAIBinder& operator=(const SpAIBinder& other) {
        if (this == &other) return *this;
        if (other.mBinder != nullptr) AIBinder_incStrong(other.mBinder);
        set(other.mBinder);
        return *this;
    }
    SpAIBinder& operator=(SpAIBinder&& other) noexcept {
        if (this == &other) return *this;
        set(other.mBinder);
        other.mBinder = nullptr;
        return *this;
    }

    // Drops the current reference and adopts binder's.
    void set(AIBinder* binder) {
        AIBinder* old = mBinder;
        mBinder = binder;
        if (old != nullptr) AIBinder_decStrong(old);
    }
    AIBinder* get() const { return mBinder; }
    AIBinder** getR() { return &mBinder; }

    bool operator==(const SpAIBinder& rhs) const { return mBinder == rhs.mBinder; }
    bool operator!=(const SpAIBinder& rhs) const { return mBinder != rhs.mBinder; }
    bool operator<(const SpAIBinder& rhs) const { return mBinder < rhs.mBinder; }

  private:
    AIBinder* mBinder;
};

namespace impl {

// Owns a T, released with Destroy; Default marks the empty state.
template <typename T, void (*Destroy)(T), T Default>
class ScopedAResource {
  public:
    explicit ScopedAResource(T t = Default) : mT(t) {}
    ~ScopedAResource() { set(Default); }
    ScopedAResource(const ScopedAResource&) = delete;
    ScopedAResource& operator=(const ScopedAResource&) = delete;
    ScopedAResource(ScopedAResource&& other) noexcept : mT(other.release()) {}
    ScopedAResource& operator=(ScopedAResource&& other) noexcept {
        set(other.release());
        return *this;
    }

    void set(T t) {
        if (t == mT) return;
        T old = mT;
        mT = t;
        if (old != Default) Destroy(old);
    }
    const T get() const { return mT; }
    T get() { return mT; }
    T* getR() { return &mT; }
    T release() {
        T t = mT;
        mT = Default;
        return t;
    }

  private:
    T mT;
};

inline void deleteParcel(AParcel* parcel) {
    AParcel_delete(parcel);
}
inline void deleteStatus(AStatus* status) {
    AStatus_delete(status);
}
inline void deleteWeak(AIBinder_Weak* weak) {
    AIBinder_Weak_delete(weak);
}
inline void closeFd(int fd) {
    close(fd);
}

}  // namespace impl

class ScopedAParcel : public impl::ScopedAResource<AParcel*, impl::deleteParcel, nullptr> {
  public:
    explicit ScopedAParcel(AParcel* a = nullptr) : ScopedAResource(a) {}
    ScopedAParcel(ScopedAParcel&&) = default;
    ScopedAParcel& operator=(ScopedAParcel&&) = default;
};

class ScopedAStatus : public impl::ScopedAResource<AStatus*, impl::deleteStatus, nullptr> {
  public:
    explicit ScopedAStatus(AStatus* a = nullptr) : ScopedAResource(a) {}
    ScopedAStatus(ScopedAStatus&&) = default;
    ScopedAStatus& operator=(ScopedAStatus&&) = default;

    // A status that was never set counts as not OK.
    bool isOk() const { return get() != nullptr && AStatus_isOk(get()); }
    binder_exception_t getExceptionCode() const { return AStatus_getExceptionCode(get()); }
    int32_t getServiceSpecificError() const { return AStatus_getServiceSpecificError(get()); }
    binder_status_t getStatus() const { return AStatus_getStatus(get()); }
    const char* getMessage() const { return AStatus_getMessage(get()); }
    std::string getDescription() const {
        const char* description = AStatus_getDescription(get());
        std::string result(description);
        AStatus_deleteDescription(description);
        return result;
    }

    static ScopedAStatus ok() { return ScopedAStatus(AStatus_newOk()); }
    static ScopedAStatus fromExceptionCode(binder_exception_t exception) {
        return ScopedAStatus(AStatus_fromExceptionCode(exception));
    }
    static ScopedAStatus fromExceptionCodeWithMessage(binder_exception_t exception,
                                                      const char* message) {
        return ScopedAStatus(AStatus_fromExceptionCodeWithMessage(exception, message));
    }
    static ScopedAStatus fromServiceSpecificError(int32_t serviceSpecific) {
        return ScopedAStatus(AStatus_fromServiceSpecificError(serviceSpecific));
    }
    static ScopedAStatus fromServiceSpecificErrorWithMessage(int32_t serviceSpecific,
                                                             const char* message) {
        return ScopedAStatus(AStatus_fromServiceSpecificErrorWithMessage(serviceSpecific, message));
    }
    static ScopedAStatus fromStatus(binder_status_t status) {
        return ScopedAStatus(AStatus_fromStatus(status));
    }
};

class ScopedAIBinder_Weak : public impl::ScopedAResource<AIBinder_Weak*, impl::deleteWeak, nullptr> {
  public:
    explicit ScopedAIBinder_Weak(AIBinder_Weak* a = nullptr) : ScopedAResource(a) {}
    ScopedAIBinder_Weak(ScopedAIBinder_Weak&&) = default;
    ScopedAIBinder_Weak& operator=(ScopedAIBinder_Weak&&) = default;

    SpAIBinder promote() const {
        return SpAIBinder(AIBinder_Weak_promote(const_cast<AIBinder_Weak*>(get())));
    }
};

class ScopedFileDescriptor : public impl::ScopedAResource<int, impl::closeFd, -1> {
  public:
    explicit ScopedFileDescriptor(int a = -1) : ScopedAResource(a) {}
    ScopedFileDescriptor(ScopedFileDescriptor&&) = default;
    ScopedFileDescriptor& operator=(ScopedFileDescriptor&&) = default;
};

}  // namespace ndk
