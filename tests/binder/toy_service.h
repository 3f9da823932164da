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
    using Record = aidl::vendor::test::toy::Record;
    using Status = ndk::ScopedAStatus;

    Status makeRecord(int32_t count, const std::string& label, Record* out) override;
    Status echoString(const std::string& s, std::string* out) override { return give(out, s); }
    Status reverseInts(const std::vector<int32_t>& values, std::vector<int32_t>* out) override {
        return give(out, std::vector<int32_t>(values.rbegin(), values.rend()));
    }
    Status addLong(int64_t a, int64_t b, int64_t* out) override { return give(out, a + b); }
    Status negate(bool value, bool* out) override { return give(out, !value); }
    Status nextChar(char16_t c, char16_t* out) override { return give<char16_t>(out, c + 1); }
    Status doNothing() override { return Status::ok(); }
    Status fail(int32_t exceptionCode, int32_t serviceError, const std::string& message,
                int32_t* out) override;
    // Waits until woken or until millis pass; returns 1 when woken.
    Status sleepMillis(int32_t millis, int32_t* out) override;
    // {calls sleeping now, most calls ever sleeping at once}
    Status sleepStats(std::vector<int32_t>* out) override;
    Status wakeSleepers() override;
    Status callerIdentity(std::vector<int32_t>* out) override;
    binder_status_t dump(int fd, const char** args, uint32_t numArgs) override;

  private:
    template <typename T>
    static Status give(T* out, T value) {
        *out = std::move(value);
        return Status::ok();
    }

    std::mutex mMutex;
    std::condition_variable mWake;
    uint64_t mWakeGeneration = 0;
    int32_t mSleeping = 0;
    int32_t mMostSleeping = 0;
};

}  // namespace toy
