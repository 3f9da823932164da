/*
 * A local implementation of the toy interface used by the binder tests.
 */
#pragma once

#include <aidl/vendor/test/toy/BnToy.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

namespace toy {

class ToyService : public aidl::vendor::test::toy::BnToy {
  public:
    using Item = aidl::vendor::test::toy::Item;
    using Record = aidl::vendor::test::toy::Record;

    ndk::ScopedAStatus makeRecord(int32_t count, const std::string& label,
                                  Record* _aidl_return) override;
    ndk::ScopedAStatus echoString(const std::string& value, std::string* out) override {
        *out = value;
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus reverseInts(const std::vector<int32_t>& values,
                                   std::vector<int32_t>* out) override {
        out->assign(values.rbegin(), values.rend());
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus addLong(int64_t a, int64_t b, int64_t* out) override {
        *out = a + b;
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus negate(bool value, bool* out) override {
        *out = !value;
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus nextChar(char16_t value, char16_t* out) override {
        *out = static_cast<char16_t>(value + 1);
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus doNothing() override { return ndk::ScopedAStatus::ok(); }
    ndk::ScopedAStatus fail(int32_t exceptionCode, int32_t serviceError, const std::string& message,
                            int32_t* _aidl_return) override;
    // Waits until woken or until millis pass; returns 1 when woken.
    ndk::ScopedAStatus sleepMillis(int32_t millis, int32_t* _aidl_return) override;
    // {calls sleeping now, most calls ever sleeping at once}
    ndk::ScopedAStatus sleepStats(std::vector<int32_t>* _aidl_return) override;
    ndk::ScopedAStatus wakeSleepers() override;
    ndk::ScopedAStatus callerIdentity(std::vector<int32_t>* _aidl_return) override;

    binder_status_t dump(int fd, const char** args, uint32_t numArgs) override;

  private:
    std::mutex mMutex;
    std::condition_variable mWake;
    uint64_t mWakeGeneration = 0;
    int32_t mSleeping = 0;
    int32_t mMostSleeping = 0;
};

}  // namespace toy
