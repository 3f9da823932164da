/*
 * A local implementation of the toy interface used by the binder tests.
 */
#pragma once

#include <aidl/vendor/test/toy/BnToy.h>
#include <android-base/file.h>
#include <android/binder_ibinder.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

namespace toy {

class ToyService : public aidl::vendor::test::toy::BnToy {
  public:
    using Item = aidl::vendor::test::toy::Item;
    using Record = aidl::vendor::test::toy::Record;
    using Status = ndk::ScopedAStatus;

    Status makeRecord(int32_t count, const std::string& label, Record* out) override {
        std::vector<Item> items;
        for (int32_t i = 0; i < count; ++i) {
            items.push_back(Item{i, label + std::to_string(i), int64_t{1} << (i % 63)});
        }
        return give(out, Record{count,
                                std::move(items),
                                label,
                                -7,
                                0.25f,
                                1e-300,
                                true,
                                u'\u00e9',
                                {INT64_MIN, -1, 0, INT64_MAX},
                                {"", label, "\xf0\x9f\x99\x82"},
                                std::nullopt});
    }
    Status echoString(const std::string& s, std::string* out) override { return give(out, s); }
    Status reverseInts(const std::vector<int32_t>& values, std::vector<int32_t>* out) override {
        return give(out, std::vector<int32_t>(values.rbegin(), values.rend()));
    }
    Status addLong(int64_t a, int64_t b, int64_t* out) override { return give(out, a + b); }
    Status negate(bool value, bool* out) override { return give(out, !value); }
    Status nextChar(char16_t c, char16_t* out) override { return give<char16_t>(out, c + 1); }
    Status doNothing() override { return Status::ok(); }
    Status fail(int32_t exceptionCode, int32_t serviceError, const std::string& message,
                int32_t* out) override {
        *out = 0;
        if (exceptionCode == EX_SERVICE_SPECIFIC) {
            return Status::fromServiceSpecificErrorWithMessage(serviceError, message.c_str());
        }
        if (exceptionCode == EX_TRANSACTION_FAILED) return Status::fromStatus(serviceError);
        return Status::fromExceptionCodeWithMessage(exceptionCode, message.c_str());
    }
    // Waits until woken or until millis pass; returns 1 when woken.
    Status sleepMillis(int32_t millis, int32_t* out) override {
        std::unique_lock<std::mutex> lock(mMutex);
        mMostSleeping = std::max(mMostSleeping, ++mSleeping);
        const uint64_t generation = mWakeGeneration;
        *out = mWake.wait_for(lock, std::chrono::milliseconds(millis),
                              [&] { return mWakeGeneration != generation; });
        --mSleeping;
        return Status::ok();
    }
    // {calls sleeping now, most calls ever sleeping at once}
    Status sleepStats(std::vector<int32_t>* out) override {
        std::lock_guard<std::mutex> lock(mMutex);
        return give(out, std::vector<int32_t>{mSleeping, mMostSleeping});
    }
    Status wakeSleepers() override {
        std::lock_guard<std::mutex> lock(mMutex);
        ++mWakeGeneration;
        mWake.notify_all();
        return Status::ok();
    }
    Status callerIdentity(std::vector<int32_t>* out) override {
        return give(out, std::vector<int32_t>{static_cast<int32_t>(AIBinder_getCallingUid()),
                                              static_cast<int32_t>(AIBinder_getCallingPid())});
    }
    binder_status_t dump(int fd, const char** args, uint32_t numArgs) override {
        std::string text = "toy";
        for (uint32_t i = 0; i < numArgs; ++i) text += std::string(" ") + args[i];
        return android::base::WriteStringToFd(text + "\n", fd) ? STATUS_OK : STATUS_UNKNOWN_ERROR;
    }

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
