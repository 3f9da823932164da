/*
 * The binder thread pool.
 */
#include <android/binder_process.h>

#include <condition_variable>
#include <mutex>

namespace {

struct ThreadPool {
    std::mutex mutex;
    std::condition_variable stopped;
    uint32_t maxThreads = 15;
    bool started = false;
};

ThreadPool& threadPool() {
    static ThreadPool* pool = new ThreadPool;
    return *pool;
}

}  // namespace

bool ABinderProcess_setThreadPoolMaxThreadCount(uint32_t numThreads) {
    ThreadPool& pool = threadPool();
    std::lock_guard<std::mutex> lock(pool.mutex);
    if (pool.started || numThreads == 0) return false;
    pool.maxThreads = numThreads;
    return true;
}

void ABinderProcess_startThreadPool() {
    ThreadPool& pool = threadPool();
    std::lock_guard<std::mutex> lock(pool.mutex);
    pool.started = true;
}

void ABinderProcess_joinThreadPool() {
    ThreadPool& pool = threadPool();
    std::unique_lock<std::mutex> lock(pool.mutex);
    pool.started = true;
    // In-process calls run on the caller's thread, so the joined thread only waits.
    pool.stopped.wait(lock, [] { return false; });
}
