#include "Arguments.h"

#include <charconv>
#include <string>
#include <system_error>

namespace perfctl {
namespace {

template <typename T>
bool ParseDecimal(std::string_view word, T* value) {
    // from_chars takes a leading '-' but no '+', and nothing else before the digits.
    const bool plus = !word.empty() && word.front() == '+';
    if (plus) word.remove_prefix(1);
    const size_t firstDigit = !plus && !word.empty() && word.front() == '-' ? 1 : 0;
    if (word.size() <= firstDigit) return false;
    for (size_t i = firstDigit; i < word.size(); ++i) {
        if (word[i] < '0' || word[i] > '9') return false;
    }
    T parsed;
    const char* end = word.data() + word.size();
    const auto [ptr, error] = std::from_chars(word.data(), end, parsed, 10);
    if (error != std::errc() || ptr != end) return false;
    *value = parsed;
    return true;
}

}  // namespace

bool ParseInt32(std::string_view word, int32_t* value) {
    return ParseDecimal(word, value);
}

bool ParseInt64(std::string_view word, int64_t* value) {
    return ParseDecimal(word, value);
}

bool ParseBoolean(std::string_view word, bool* value) {
    if (word == "true" || word == "1") {
        *value = true;
    } else if (word == "false" || word == "0") {
        *value = false;
    } else {
        return false;
    }
    return true;
}

bool ParseIntArray(std::string_view word, std::vector<int32_t>* values) {
    std::vector<int32_t> parsed;
    while (!word.empty()) {
        const size_t comma = word.find(',');
        int32_t item;
        if (!ParseInt32(word.substr(0, comma), &item)) return false;
        parsed.push_back(item);
        if (comma == std::string_view::npos) break;
        word.remove_prefix(comma + 1);
        // A trailing comma leaves an empty last item, which is not a number.
        if (word.empty()) return false;
    }
    *values = std::move(parsed);
    return true;
}

std::optional<Value> ParseArgument(ArgType type, std::string_view word) {
    switch (type) {
        case ArgType::kString:
            return Value(std::string(word));
        case ArgType::kInt: {
            int32_t value;
            if (ParseInt32(word, &value)) return Value(value);
            break;
        }
        case ArgType::kLong: {
            int64_t value;
            if (ParseInt64(word, &value)) return Value(value);
            break;
        }
        case ArgType::kBoolean: {
            bool value;
            if (ParseBoolean(word, &value)) return Value(value);
            break;
        }
        case ArgType::kIntArray: {
            std::vector<int32_t> values;
            if (ParseIntArray(word, &values)) return Value(std::move(values));
            break;
        }
    }
    return std::nullopt;
}

}  // namespace perfctl
