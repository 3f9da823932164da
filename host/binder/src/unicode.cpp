/*
 * Strict UTF-8 <-> UTF-16 conversion for parcel strings. Malformed input (overlong forms,
 * surrogates encoded in UTF-8, unpaired UTF-16 surrogates, truncated sequences, code points past
 * U+10FFFF) is rejected rather than repaired.
 */
#include "binder_internal.h"

namespace host_binder {

namespace {

constexpr char32_t kMaxCodePoint = 0x10FFFF;

bool isHighSurrogate(char32_t c) {
    return c >= 0xD800 && c <= 0xDBFF;
}
bool isLowSurrogate(char32_t c) {
    return c >= 0xDC00 && c <= 0xDFFF;
}

// Decodes one code point starting at data[*index]; advances *index past it.
bool decodeUtf8(const unsigned char* data, size_t size, size_t* index, char32_t* out) {
    const unsigned char lead = data[*index];
    size_t extra;
    char32_t min;
    char32_t c;
    if (lead < 0x80) {
        *out = lead;
        ++*index;
        return true;
    } else if ((lead & 0xE0) == 0xC0) {
        extra = 1;
        min = 0x80;
        c = lead & 0x1F;
    } else if ((lead & 0xF0) == 0xE0) {
        extra = 2;
        min = 0x800;
        c = lead & 0x0F;
    } else if ((lead & 0xF8) == 0xF0) {
        extra = 3;
        min = 0x10000;
        c = lead & 0x07;
    } else {
        return false;
    }
    if (size - *index <= extra) return false;
    for (size_t i = 1; i <= extra; ++i) {
        const unsigned char next = data[*index + i];
        if ((next & 0xC0) != 0x80) return false;
        c = (c << 6) | (next & 0x3F);
    }
    if (c < min || c > kMaxCodePoint || isHighSurrogate(c) || isLowSurrogate(c)) return false;
    *index += extra + 1;
    *out = c;
    return true;
}

void appendUtf8(char32_t c, std::string* out) {
    if (c < 0x80) {
        out->push_back(static_cast<char>(c));
    } else if (c < 0x800) {
        out->push_back(static_cast<char>(0xC0 | (c >> 6)));
        out->push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
        out->push_back(static_cast<char>(0xE0 | (c >> 12)));
        out->push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out->push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
        out->push_back(static_cast<char>(0xF0 | (c >> 18)));
        out->push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
        out->push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out->push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
}

}  // namespace

bool utf8ToUtf16(const char* data, size_t size, std::u16string* out) {
    out->clear();
    out->reserve(size);
    const auto* bytes = reinterpret_cast<const unsigned char*>(data);
    size_t index = 0;
    while (index < size) {
        char32_t c;
        if (!decodeUtf8(bytes, size, &index, &c)) return false;
        if (c >= 0x10000) {
            c -= 0x10000;
            out->push_back(static_cast<char16_t>(0xD800 + (c >> 10)));
            out->push_back(static_cast<char16_t>(0xDC00 + (c & 0x3FF)));
        } else {
            out->push_back(static_cast<char16_t>(c));
        }
    }
    return true;
}

bool utf16ToUtf8(const char16_t* data, size_t size, std::string* out) {
    out->clear();
    out->reserve(size);
    for (size_t i = 0; i < size; ++i) {
        char32_t c = data[i];
        if (isHighSurrogate(c)) {
            if (i + 1 >= size || !isLowSurrogate(data[i + 1])) return false;
            c = 0x10000 + ((c - 0xD800) << 10) + (data[i + 1] - 0xDC00);
            ++i;
        } else if (isLowSurrogate(c)) {
            return false;
        }
        appendUtf8(c, out);
    }
    return true;
}

}  // namespace host_binder
