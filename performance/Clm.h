#pragma once

#include <cstdint>
#include <string>

#include "KernelNodes.h"

namespace aidl::vendor::vyren::hardware::performance {

// The jank monitor's CPU load monitor (CLM): load thresholds and switches, each node with a reader
// and a writer.
class Clm {
  public:
    explicit Clm(const KernelNodes& nodes) : mNodes(nodes) {}

    std::string readClmEnable() const;
    void writeClmEnable(const std::string& value) const;
    std::string readFgFreqsThreshold() const;
    void writeFgFreqsThreshold(const std::string& value) const;
    std::string readClmHighLoadAll() const;
    void writeClmHighLoadAll(const std::string& value) const;
    std::string readClmHighLoadGrp() const;
    void writeClmHighLoadGrp(const std::string& value) const;
    std::string readClmLowLoadGrp() const;
    void writeClmLowLoadGrp(const std::string& value) const;
    std::string getClmMuxSwitch() const;
    void setClmMuxSwitch(const std::string& value) const;
    std::string getClmThreshold(int32_t which) const;
    void setClmThreshold(const std::string& value, int32_t which) const;

  private:
    std::string readNode(const char* path) const;
    void writeNode(const char* path, const std::string& value) const;

    const KernelNodes mNodes;
};

}  // namespace aidl::vendor::vyren::hardware::performance
