#include "toy_service.h"

#include <android/binder_ibinder.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <string>

namespace toy {

using aidl::vendor::test::toy::Item;

ndk::ScopedAStatus ToyService::makeRecord(int32_t count, const std::string& label, Record* out) {
    std::vector<Item> items;
    for (int32_t i = 0; i < count; ++i) {
        items.push_back(Item{i, label + std::to_string(i), int64_t{1} << (i % 63)});
    }
    std::vector<int64_t> longs = {INT64_MIN, -1, 0, INT64_MAX};
    std::vector<std::string> names = {"", label, "\xf0\x9f\x99\x82"};
    return give(out, Record{count, std::move(items), label, -7, 0.25f, 1e-300, true, u'\u00e9',
                            std::move(longs), std::move(names), std::nullopt});
}

ndk::ScopedAStatus ToyService::fail(int32_t exceptionCode, int32_t serviceError,
                                    const std::string& message, int32_t* out) {
    *out = 0;
    if (exceptionCode == EX_SERVICE_SPECIFIC) {
        return Status::fromServiceSpecificErrorWithMessage(serviceError, message.c_str());
    }
    if (exceptionCode == EX_TRANSACTION_FAILED) return Status::fromStatus(serviceError);
    return Status::fromExceptionCodeWithMessage(exceptionCode, message.c_str());
}

ndk::ScopedAStatus ToyService::sleepMillis(int32_t millis, int32_t* out) {
    std::unique_lock<std::mutex> lock(mMutex);
    mMostSleeping = std::max(mMostSleeping, ++mSleeping);
    const uint64_t generation = mWakeGeneration;
    *out = mWake.wait_for(lock, std::chrono::milliseconds(millis),
                          [&] { return mWakeGeneration != generation; });
    --mSleeping;
    return Status::ok();
}

ndk::ScopedAStatus ToyService::sleepStats(std::vector<int32_t>* out) {
    std::lock_guard<std::mutex> lock(mMutex);
    return give(out, std::vector<int32_t>{mSleeping, mMostSleeping});
}

ndk::ScopedAStatus ToyService::wakeSleepers() {
    std::lock_guard<std::mutex> lock(mMutex);
    ++mWakeGeneration;
    mWake.notify_all();
    return Status::ok();
}

ndk::ScopedAStatus ToyService::callerIdentity(std::vector<int32_t>* out) {
    return give(out, std::vector<int32_t>{static_cast<int32_t>(AIBinder_getCallingUid()),
                                          static_cast<int32_t>(AIBinder_getCallingPid())});
}

binder_status_t ToyService::dump(int fd, const char** args, uint32_t numArgs) {
    std::string text = "toy";
    for (uint32_t i = 0; i < numArgs; ++i) text += std::string(" ") + args[i];
    text += "\n";
    return write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size())
               ? STATUS_OK
               : STATUS_UNKNOWN_ERROR;
}

}  // namespace toy
