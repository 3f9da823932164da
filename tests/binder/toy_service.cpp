#include "toy_service.h"

#include <android/binder_ibinder.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <string>

namespace toy {

ndk::ScopedAStatus ToyService::makeRecord(int32_t count, const std::string& label,
                                          Record* _aidl_return) {
    Record record;
    record.status = count;
    for (int32_t i = 0; i < count; ++i) {
        record.items.push_back(Item{i, label + std::to_string(i), int64_t{1} << (i % 63)});
    }
    record.name = label;
    record.small = -7;
    record.ratio = 0.25f;
    record.precise = 1e-300;
    record.flag = true;
    record.letter = u'\u00e9';
    record.longs = {INT64_MIN, -1, 0, INT64_MAX};
    record.names = {"", label, "\xf0\x9f\x99\x82"};
    record.note = std::nullopt;
    *_aidl_return = std::move(record);
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus ToyService::fail(int32_t exceptionCode, int32_t serviceError,
                                    const std::string& message, int32_t* _aidl_return) {
    *_aidl_return = 0;
    if (exceptionCode == EX_SERVICE_SPECIFIC) {
        return ndk::ScopedAStatus::fromServiceSpecificErrorWithMessage(serviceError,
                                                                       message.c_str());
    }
    if (exceptionCode == EX_TRANSACTION_FAILED) {
        return ndk::ScopedAStatus::fromStatus(serviceError);
    }
    return ndk::ScopedAStatus::fromExceptionCodeWithMessage(exceptionCode, message.c_str());
}

ndk::ScopedAStatus ToyService::sleepMillis(int32_t millis, int32_t* _aidl_return) {
    std::unique_lock<std::mutex> lock(mMutex);
    mMostSleeping = std::max(mMostSleeping, ++mSleeping);
    const uint64_t generation = mWakeGeneration;
    const bool woken = mWake.wait_for(lock, std::chrono::milliseconds(millis),
                                      [&] { return mWakeGeneration != generation; });
    --mSleeping;
    *_aidl_return = woken ? 1 : 0;
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus ToyService::sleepStats(std::vector<int32_t>* _aidl_return) {
    std::lock_guard<std::mutex> lock(mMutex);
    *_aidl_return = {mSleeping, mMostSleeping};
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus ToyService::wakeSleepers() {
    std::lock_guard<std::mutex> lock(mMutex);
    ++mWakeGeneration;
    mWake.notify_all();
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus ToyService::callerIdentity(std::vector<int32_t>* _aidl_return) {
    *_aidl_return = {static_cast<int32_t>(AIBinder_getCallingUid()),
                     static_cast<int32_t>(AIBinder_getCallingPid())};
    return ndk::ScopedAStatus::ok();
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
