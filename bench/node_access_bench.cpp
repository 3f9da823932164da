// The cost of the node-access conventions against the bare system calls they wrap, on a
// temporary node root: what an operation adds over open, read or write, and close.

#include <android-base/file.h>
#include <android-base/unique_fd.h>
#include <android/log.h>
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>

#include "Performance.h"

namespace aidl::vendor::vyren::hardware::performance {
namespace {

class NodeRoot {
  public:
    NodeRoot() {
        char templ[] = "/tmp/performance-bench-XXXXXX";
        root_ = mkdtemp(templ);
        std::filesystem::create_directories(root_ + "/proc/vyren_mem/memleak_detect");
        android::base::WriteStringToFile("Linux version 5.15.94 #1 SMP\n", root_ + "/proc/version");
        android::base::WriteStringToFile("VmallocUsed: 123456 kB\n", path(kReport));
        android::base::WriteStringToFile("0", path(kSwitch));
        // Logging is not what is measured.
        __android_log_set_minimum_priority(ANDROID_LOG_SILENT);
        service_ = ndk::SharedRefBase::make<Performance>(DeviceContext{root_});
    }
    ~NodeRoot() { std::filesystem::remove_all(root_); }

    std::string path(const char* node) const { return root_ + node; }
    Performance& service() { return *service_; }

    static constexpr char kReport[] = "/proc/vyren_mem/memleak_detect/vmalloc_used";
    static constexpr char kSwitch[] = "/proc/vyren_mem/memleak_detect/kmalloc_debug_enable";

  private:
    std::string root_;
    std::shared_ptr<Performance> service_;
};

NodeRoot& nodeRoot() {
    static NodeRoot root;
    return root;
}

void BM_RawRead(benchmark::State& state) {
    const std::string path = nodeRoot().path(NodeRoot::kReport);
    char buffer[128];
    for (auto _ : state) {
        android::base::unique_fd fd(open(path.c_str(), O_RDONLY | O_CLOEXEC));
        benchmark::DoNotOptimize(read(fd, buffer, sizeof(buffer)));
    }
}
BENCHMARK(BM_RawRead);

void BM_NodeRead(benchmark::State& state) {
    std::string text;
    for (auto _ : state) {
        nodeRoot().service().getVmallocUsed(&text);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(BM_NodeRead);

void BM_RawWrite(benchmark::State& state) {
    const std::string path = nodeRoot().path(NodeRoot::kSwitch);
    for (auto _ : state) {
        android::base::unique_fd fd(open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC));
        benchmark::DoNotOptimize(write(fd, "1", 1));
    }
}
BENCHMARK(BM_RawWrite);

void BM_SwitchWrite(benchmark::State& state) {
    int32_t result = 0;
    for (auto _ : state) {
        nodeRoot().service().enableKmallocDebug(&result);
        benchmark::DoNotOptimize(result);
    }
}
BENCHMARK(BM_SwitchWrite);

}  // namespace
}  // namespace aidl::vendor::vyren::hardware::performance

BENCHMARK_MAIN();
