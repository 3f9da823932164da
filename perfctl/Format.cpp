#include "Format.h"

namespace perfctl {

void AppendJsonString(std::string* out, std::string_view text) {
    static constexpr char kHex[] = "0123456789abcdef";
    out->push_back('"');
    for (const char c : text) {
        switch (c) {
            case '"':
                out->append("\\\"");
                break;
            case '\\':
                out->append("\\\\");
                break;
            case '\b':
                out->append("\\b");
                break;
            case '\f':
                out->append("\\f");
                break;
            case '\n':
                out->append("\\n");
                break;
            case '\r':
                out->append("\\r");
                break;
            case '\t':
                out->append("\\t");
                break;
            default:
                if (static_cast<unsigned char>(c) < 0x20) {
                    out->append("\\u00");
                    out->push_back(kHex[static_cast<unsigned char>(c) >> 4]);
                    out->push_back(kHex[static_cast<unsigned char>(c) & 0xf]);
                } else {
                    out->push_back(c);
                }
        }
    }
    out->push_back('"');
}

void AppendJsonNumber(std::string* out, int64_t value) {
    out->append(std::to_string(value));
}

void AppendJsonBool(std::string* out, bool value) {
    out->append(value ? "true" : "false");
}

void FormatResult(int32_t value, std::string* out) {
    out->append(std::to_string(value)).push_back('\n');
}

void FormatResult(int64_t value, std::string* out) {
    out->append(std::to_string(value)).push_back('\n');
}

void FormatResult(bool value, std::string* out) {
    out->append(value ? "true\n" : "false\n");
}

void FormatResult(const std::string& value, std::string* out) {
    out->append(value);
}

}  // namespace perfctl
