#include "Operation.h"

#include <iterator>

#include "perfctl_table.h"

namespace perfctl {

OperationTable Operations() {
    return {kOperations, std::size(kOperations)};
}

const Operation* FindOperation(std::string_view name) {
    for (const Operation& op : Operations()) {
        if (name == op.name) return &op;
    }
    return nullptr;
}

const char* ArgTypeName(ArgType type) {
    switch (type) {
        case ArgType::kString:
            return "String";
        case ArgType::kInt:
            return "int";
        case ArgType::kLong:
            return "long";
        case ArgType::kBoolean:
            return "boolean";
        case ArgType::kIntArray:
            return "int[]";
    }
    return "?";
}

std::string Signature(const Operation& op) {
    std::string text = op.name;
    for (size_t i = 0; i < op.argCount; ++i) {
        text += ' ';
        text += ArgTypeName(op.args[i]);
    }
    text += " -> ";
    text += op.result;
    return text;
}

std::string ListLine(const Operation& op) {
    std::string text = std::to_string(op.slot) + ' ' + op.name + '(';
    for (size_t i = 0; i < op.argCount; ++i) {
        if (i != 0) text += ", ";
        text += ArgTypeName(op.args[i]);
    }
    text += ") -> ";
    text += op.result;
    return text;
}

}  // namespace perfctl
