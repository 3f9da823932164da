#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "KernelNodes.h"

namespace aidl::vendor::vyren::hardware::performance {

// Swap tuning: the nandswap control files and the hybrid-swap zram and memory-cgroup parameters.
class SwapTuning {
  public:
    // memcgRootPath is the memory cgroup root, ending in '/'.
    SwapTuning(const KernelNodes& nodes, std::string memcgRootPath)
        : mNodes(nodes), mMemcgRootPath(std::move(memcgRootPath)) {}

    std::string hybridswap_memcg_para_read(int32_t action, const std::string& cgroup) const;
    int32_t hybridswap_memcg_para_write(int32_t action, const std::string& cgroup,
                                        const std::string& value) const;
    std::string hybridswap_zram_para_read(int32_t action) const;
    int32_t hybridswap_zram_para_write(int32_t action, const std::string& value) const;
    std::string readNandswapProc(const std::string& name) const;
    int32_t writeNandswapProc(const std::string& name, const std::string& value) const;

  private:
    std::string hybridswapGlobalFile(int32_t action) const;
    void get_memcg_para_file(int32_t action, const std::string& cgroup, std::string* path) const;
    void get_memcg_para_file_dfl(int32_t action, const std::string& cgroup, std::string* path) const;
    int hybridswapWrite(int32_t action, const std::string& path, const std::string& value) const;
    std::string hybridswapRead(int32_t action, const std::string& path,
                               const std::string& invalidText) const;

    const KernelNodes mNodes;
    const std::string mMemcgRootPath;
};

}  // namespace aidl::vendor::vyren::hardware::performance
