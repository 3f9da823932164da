/*
 * The binder thread pool. Pool threads and joined threads all wait on the transport's event
 * loop; the transport's gate keeps the number running transactions at once to the configured
 * maximum, joined threads included.
 */
#include <android-base/logging.h>
#include <android/binder_process.h>

#include <mutex>
#include <thread>

#include "server.h"

namespace {

// The platform's default when the count is never set.
constexpr uint32_t kDefaultMaxThreads = 15;

struct ThreadPool {
    std::mutex mutex;
    uint32_t maxThreads = kDefaultMaxThreads;
    bool started = false;
    bool limitApplied = false;
};

ThreadPool& threadPool() {
    static ThreadPool* pool = new ThreadPool;
    return *pool;
}

// Fixes the transaction limit the first time any thread starts serving.
void applyLimitLocked(ThreadPool& pool) {
    if (pool.limitApplied) return;
    pool.limitApplied = true;
    host_binder::setMaxConcurrentTransactions(pool.maxThreads);
}

}  // namespace

bool ABinderProcess_setThreadPoolMaxThreadCount(uint32_t numThreads) {
    ThreadPool& pool = threadPool();
    std::lock_guard<std::mutex> lock(pool.mutex);
    if (pool.limitApplied || numThreads == 0) return false;
    pool.maxThreads = numThreads;
    return true;
}

void ABinderProcess_startThreadPool() {
    ThreadPool& pool = threadPool();
    std::lock_guard<std::mutex> lock(pool.mutex);
    if (pool.started) return;
    pool.started = true;
    applyLimitLocked(pool);
    for (uint32_t i = 0; i < pool.maxThreads; ++i) {
        std::thread(host_binder::serveForever).detach();
    }
}

void ABinderProcess_joinThreadPool() {
    {
        ThreadPool& pool = threadPool();
        std::lock_guard<std::mutex> lock(pool.mutex);
        applyLimitLocked(pool);
    }
    host_binder::serveForever();
    LOG(ERROR) << "binder: thread pool event loop stopped";
}
