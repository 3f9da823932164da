// How perfctl prints results: scalars as plain text and parcelables as one line of JSON. The
// parcelable printers themselves are generated beside the operation table and build on these.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace perfctl {

// A JSON string literal: quotes, backslashes and control characters escaped, all other bytes
// (UTF-8 included) copied as they are.
void AppendJsonString(std::string* out, std::string_view text);
void AppendJsonNumber(std::string* out, int64_t value);
void AppendJsonBool(std::string* out, bool value);

// Results as perfctl prints them: numbers and booleans on a line of their own, strings as their
// exact bytes with nothing added.
void FormatResult(int32_t value, std::string* out);
void FormatResult(int64_t value, std::string* out);
void FormatResult(bool value, std::string* out);
void FormatResult(const std::string& value, std::string* out);

}  // namespace perfctl
