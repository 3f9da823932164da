// Command-line words to AIDL argument values. Each parser accepts exactly its type's spelling
// and nothing around it, so a typo is reported instead of reaching the service as another value.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "Operation.h"

namespace perfctl {

// Decimal with an optional sign and at least one digit, within the type's range.
bool ParseInt32(std::string_view word, int32_t* value);
bool ParseInt64(std::string_view word, int64_t* value);
// "true", "false", "1" or "0".
bool ParseBoolean(std::string_view word, bool* value);
// Comma-separated ParseInt32 words; the empty word is the empty list.
bool ParseIntArray(std::string_view word, std::vector<int32_t>* values);

std::optional<Value> ParseArgument(ArgType type, std::string_view word);

}  // namespace perfctl
