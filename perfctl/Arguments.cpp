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

// Strict UTF-8: no overlong forms, no surrogates, nothing past U+10FFFF. A String travels as
// UTF-16, and a word that does not decode has no UTF-16 form to send.
bool IsUtf8(std::string_view word) {
    for (size_t i = 0; i < word.size();) {
        const auto lead = static_cast<unsigned char>(word[i]);
        const size_t length = lead < 0x80                   ? 1
                              : lead >= 0xc2 && lead < 0xe0 ? 2
                              : lead >= 0xe0 && lead < 0xf0 ? 3
                              : lead >= 0xf0 && lead < 0xf5 ? 4
                                                            : 0;
        if (length == 0 || word.size() - i < length) return false;
        char32_t c = length == 1 ? lead : lead & (0x7f >> length);
        for (size_t k = 1; k < length; ++k) {
            const auto next = static_cast<unsigned char>(word[i + k]);
            if ((next & 0xc0) != 0x80) return false;
            c = (c << 6) | (next & 0x3f);
        }
        constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
        if (c < kSmallest[length] || c > 0x10ffff || (c >= 0xd800 && c < 0xe000)) return false;
        i += length;
    }
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
            if (IsUtf8(word)) return Value(std::string(word));
            break;
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
