// The smaps walk over a large process (10 000 mappings, about the size of a system_server's
// smaps) against the floor for the same bytes: read them and find every newline.

#include <android-base/file.h>
#include <android-base/stringprintf.h>
#include <android-base/unique_fd.h>
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <quilbex/proc-memstat.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <vector>

namespace {

constexpr int kMappings = 10000;

class Smaps {
  public:
    Smaps() {
        char templ[] = "/tmp/smaps-bench-XXXXXX";
        root_ = mkdtemp(templ);
        constexpr const char* kNames[] = {"[anon:dalvik-main space]", "[anon:libc_malloc]",
                                          "/system/lib64/libc.so", "[anon:dalvik-zygote space]"};
        std::string text;
        for (int i = 0; i < kMappings; ++i) {
            android::base::StringAppendF(
                &text,
                "%08x-%08x rw-p 00000000 00:00 0\nName:           %s\nSize:                 "
                "16 kB\nKernelPageSize:        4 kB\nRss:                  12 kB\nPss:        "
                "           8 kB\nPss_Anon:              8 kB\nShared_Clean:          0 kB\n"
                "Private_Dirty:         8 kB\nAnonymous:             8 kB\nSwap:             "
                "     4 kB\nSwapPss:               4 kB\nLocked:                0 kB\n"
                "THPeligible:    0\nVmFlags: rd wr mr mw me ac\n",
                i * 0x4000, i * 0x4000 + 0x4000, kNames[i % 4]);
        }
        path_ = root_ + "/smaps";
        android::base::WriteStringToFile(text, path_);
        bytes_ = text.size();
    }
    ~Smaps() { std::filesystem::remove_all(root_); }

    const std::string& path() const { return path_; }
    size_t bytes() const { return bytes_; }

  private:
    std::string root_;
    std::string path_;
    size_t bytes_ = 0;
};

Smaps& smaps() {
    static Smaps file;
    return file;
}

void BM_ReadAndFindLines(benchmark::State& state) {
    std::vector<char> buffer(64 * 1024);
    for (auto _ : state) {
        android::base::unique_fd fd(open(smaps().path().c_str(), O_RDONLY | O_CLOEXEC));
        size_t lines = 0;
        for (ssize_t count; (count = read(fd, buffer.data(), buffer.size())) > 0;) {
            for (const char *p = buffer.data(), *end = p + count;
                 (p = static_cast<const char*>(memchr(p, '\n', end - p))) != nullptr; ++p) {
                ++lines;
            }
        }
        benchmark::DoNotOptimize(lines);
    }
    state.SetBytesProcessed(state.iterations() * smaps().bytes());
}
BENCHMARK(BM_ReadAndFindLines);

void BM_SmapsWalk(benchmark::State& state) {
    const unsigned int flags = static_cast<unsigned int>(state.range(0));
    for (auto _ : state) {
        vyren::quilbex::memstat::proc_ms ms = {};
        benchmark::DoNotOptimize(
            vyren::quilbex::memstat::iterate_vma_file(smaps().path().c_str(), flags, &ms));
        benchmark::DoNotOptimize(ms);
    }
    state.SetBytesProcessed(state.iterations() * smaps().bytes());
}
// The total alone, and with both heap splits.
BENCHMARK(BM_SmapsWalk)->Arg(0x4000)->Arg(0x1c000);

}  // namespace

BENCHMARK_MAIN();
