// The operations perfctl can call: one entry per method of IPerformance, generated from the
// interface definition, with what it takes from the command line and what it prints.
#pragma once

#include <aidl/vendor/vyren/hardware/performance/IPerformance.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace perfctl {

// The types an operation takes from the command line, one word each.
enum class ArgType { kString, kInt, kLong, kBoolean, kIntArray };

// One parsed argument; the alternative matches the argument's ArgType.
using Value = std::variant<std::string, int32_t, int64_t, bool, std::vector<int32_t>>;

// Calls the method with arguments already parsed to its types. On an OK status the result is
// appended to out in its printed form; a failed status leaves out untouched.
using CallFn =
    ::ndk::ScopedAStatus (*)(::aidl::vendor::vyren::hardware::performance::IPerformance& service,
                             const std::vector<Value>& args, std::string* out);

struct Operation {
    int slot;          // declaration order, which fixes the transaction code
    const char* name;  // method name
    const ArgType* args;
    size_t argCount;
    const char* result;  // AIDL result type, e.g. "int", "void" or "ProcReqHal"
    CallFn call;
};

// Every operation, in slot order.
struct OperationTable {
    const Operation* first;
    size_t size;

    const Operation* begin() const { return first; }
    const Operation* end() const { return first + size; }
};
OperationTable Operations();

// The operation of that name, or nullptr.
const Operation* FindOperation(std::string_view name);

// AIDL spelling of an argument type: "String", "int", "long", "boolean" or "int[]".
const char* ArgTypeName(ArgType type);

// "addAcmDirName String long -> int": how the operation is called from the command line.
std::string Signature(const Operation& op);

// "0 addAcmDirName(String, long) -> int": one line of --list, without the newline.
std::string ListLine(const Operation& op);

}  // namespace perfctl
