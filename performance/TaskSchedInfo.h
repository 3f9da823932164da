#pragma once

#include <string>

#include "KernelNodes.h"

namespace aidl::vendor::vyren::hardware::performance {

// The kernel's task-scheduling information: its switches, watched tasks, threshold and reports,
// passed through as text both ways.
class TaskSchedInfo {
  public:
    explicit TaskSchedInfo(const KernelNodes& nodes) : mNodes(nodes) {}

    void writeTaskSchedInfo(const std::string& value) const;
    void writePidsSet(const std::string& value) const;
    void writeSchedInfoThreshold(const std::string& value) const;
    void writeTidsSet(const std::string& value) const;
    void writeDBacktrace(const std::string& value) const;
    void writeIOBacktrace(const std::string& value) const;
    std::string readTaskSchedInfo() const;
    std::string readPidsSet() const;
    std::string readSchedInfoThreshold() const;
    std::string readTidsSet() const;
    std::string readDBacktrace() const;
    std::string readIOBacktrace() const;
    std::string readDConvert() const;
    std::string readVersion() const;
    std::string readLimitTable() const;

  private:
    // Writes the value as it stands; the answer is dropped.
    void writeSchedNode(const char* node, const std::string& value) const;
    std::string readSchedNode(const char* node) const;

    const KernelNodes mNodes;
};

}  // namespace aidl::vendor::vyren::hardware::performance
