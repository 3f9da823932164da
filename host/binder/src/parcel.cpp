/*
 * Parcel encoding. Every item is padded to 4 bytes; booleans, chars and bytes travel as int32;
 * strings are UTF-16 with an int32 length in char16 units (-1 for null) and a NUL terminator;
 * arrays carry an int32 element count (-1 for null).
 *
 * Parcels may come from another process, so every read checks the remaining data before it
 * touches or allocates anything: reading past the end is STATUS_NOT_ENOUGH_DATA, a length that
 * cannot fit in what is left is STATUS_BAD_VALUE.
 */
#include <android/binder_parcel.h>

#include <cstring>
#include <limits>
#include <string>

#include "binder_internal.h"

using host_binder::kMaxParcelSize;

namespace {

constexpr size_t pad4(size_t n) {
    return (n + 3) & ~static_cast<size_t>(3);
}

size_t remaining(const AParcel* parcel) {
    return parcel->position < parcel->data.size() ? parcel->data.size() - parcel->position : 0;
}

// Reserves a padded region of n bytes at the current position and returns it.
uint8_t* writeInplace(AParcel* parcel, size_t n) {
    const size_t padded = pad4(n);
    if (padded < n || parcel->position > kMaxParcelSize ||
        padded > kMaxParcelSize - parcel->position) {
        return nullptr;
    }
    const size_t end = parcel->position + padded;
    if (end > parcel->data.size()) parcel->data.resize(end);
    uint8_t* out = parcel->data.data() + parcel->position;
    // Zero the padding so equal values always encode to equal bytes.
    if (padded > n) memset(out + n, 0, padded - n);
    parcel->position = end;
    return out;
}

binder_status_t writeRaw(AParcel* parcel, const void* src, size_t n) {
    uint8_t* out = writeInplace(parcel, n);
    if (out == nullptr) return STATUS_NO_MEMORY;
    if (n > 0) memcpy(out, src, n);
    return STATUS_OK;
}

const uint8_t* readInplace(const AParcel* parcel, size_t n) {
    const size_t padded = pad4(n);
    if (padded < n || padded > remaining(parcel)) return nullptr;
    const uint8_t* in = parcel->data.data() + parcel->position;
    parcel->position += padded;
    return in;
}

template <typename T>
binder_status_t writeValue(AParcel* parcel, T value) {
    if (parcel == nullptr) return STATUS_UNEXPECTED_NULL;
    return writeRaw(parcel, &value, sizeof(T));
}

template <typename T>
binder_status_t readValue(const AParcel* parcel, T* value) {
    if (parcel == nullptr || value == nullptr) return STATUS_UNEXPECTED_NULL;
    const uint8_t* in = readInplace(parcel, sizeof(T));
    if (in == nullptr) return STATUS_NOT_ENOUGH_DATA;
    memcpy(value, in, sizeof(T));
    return STATUS_OK;
}

// Reads an element count and checks that count elements of at least minSize bytes each can
// still be present. -1 (null) is returned as is.
binder_status_t readCount(const AParcel* parcel, size_t minSize, int32_t* count) {
    binder_status_t status = readValue(parcel, count);
    if (status != STATUS_OK) return status;
    if (*count < -1) return STATUS_BAD_VALUE;
    if (*count > 0 && static_cast<size_t>(*count) > remaining(parcel) / minSize) {
        return STATUS_BAD_VALUE;
    }
    return STATUS_OK;
}

binder_status_t writeString16(AParcel* parcel, const char16_t* data, int32_t length) {
    binder_status_t status = writeValue(parcel, length);
    if (status != STATUS_OK || length < 0) return status;
    const size_t bytes = (static_cast<size_t>(length) + 1) * sizeof(char16_t);
    uint8_t* out = writeInplace(parcel, bytes);
    if (out == nullptr) return STATUS_NO_MEMORY;
    memcpy(out, data, static_cast<size_t>(length) * sizeof(char16_t));
    memset(out + bytes - sizeof(char16_t), 0, sizeof(char16_t));
    return STATUS_OK;
}

// Reads a UTF-16 string as UTF-8; *isNull is set for a null string.
binder_status_t readString16AsUtf8(const AParcel* parcel, std::string* out, bool* isNull) {
    int32_t length;
    binder_status_t status = readValue(parcel, &length);
    if (status != STATUS_OK) return status;
    *isNull = length == -1;
    if (*isNull) return STATUS_OK;
    if (length < 0) return STATUS_BAD_VALUE;
    const size_t units = static_cast<size_t>(length) + 1;
    if (units > remaining(parcel) / sizeof(char16_t)) return STATUS_BAD_VALUE;
    const uint8_t* in = readInplace(parcel, units * sizeof(char16_t));
    if (in == nullptr) return STATUS_NOT_ENOUGH_DATA;
    std::u16string chars(static_cast<size_t>(length), u'\0');
    memcpy(&chars[0], in, chars.size() * sizeof(char16_t));
    char16_t terminator;
    memcpy(&terminator, in + chars.size() * sizeof(char16_t), sizeof(terminator));
    if (terminator != 0) return STATUS_BAD_VALUE;
    if (!host_binder::utf16ToUtf8(chars.data(), chars.size(), out)) return STATUS_BAD_VALUE;
    return STATUS_OK;
}

binder_status_t writeUtf8AsString16(AParcel* parcel, const char* string, int32_t length) {
    if (parcel == nullptr) return STATUS_UNEXPECTED_NULL;
    if (string == nullptr) {
        if (length != -1) return STATUS_UNEXPECTED_NULL;
        return writeString16(parcel, nullptr, -1);
    }
    if (length < 0) return STATUS_BAD_VALUE;
    std::u16string utf16;
    if (!host_binder::utf8ToUtf16(string, static_cast<size_t>(length), &utf16)) {
        return STATUS_BAD_VALUE;
    }
    if (utf16.size() > static_cast<size_t>(std::numeric_limits<int32_t>::max())) {
        return STATUS_BAD_VALUE;
    }
    return writeString16(parcel, utf16.data(), static_cast<int32_t>(utf16.size()));
}

// Hands a decoded string to an allocator callback that supplies the destination buffer.
template <typename Allocate>
binder_status_t readStringWith(const AParcel* parcel, Allocate allocate) {
    std::string utf8;
    bool isNull = false;
    binder_status_t status = readString16AsUtf8(parcel, &utf8, &isNull);
    if (status != STATUS_OK) return status;
    char* buffer = nullptr;
    if (isNull) return allocate(-1, &buffer) ? STATUS_OK : STATUS_UNEXPECTED_NULL;
    if (utf8.size() >= static_cast<size_t>(std::numeric_limits<int32_t>::max())) {
        return STATUS_BAD_VALUE;
    }
    if (!allocate(static_cast<int32_t>(utf8.size() + 1), &buffer) || buffer == nullptr) {
        return STATUS_NO_MEMORY;
    }
    memcpy(buffer, utf8.data(), utf8.size());
    buffer[utf8.size()] = '\0';
    return STATUS_OK;
}

// Arrays of fixed-size values stored back to back.
template <typename T>
binder_status_t writePackedArray(AParcel* parcel, const T* arrayData, int32_t length) {
    if (parcel == nullptr) return STATUS_UNEXPECTED_NULL;
    if (length < -1) return STATUS_BAD_VALUE;
    if (length > 0 && arrayData == nullptr) return STATUS_UNEXPECTED_NULL;
    binder_status_t status = writeValue(parcel, length);
    if (status != STATUS_OK || length <= 0) return status;
    return writeRaw(parcel, arrayData, static_cast<size_t>(length) * sizeof(T));
}

template <typename T>
binder_status_t readPackedArray(const AParcel* parcel, void* arrayData,
                                bool (*allocator)(void*, int32_t, T**)) {
    if (parcel == nullptr || allocator == nullptr) return STATUS_UNEXPECTED_NULL;
    int32_t length;
    binder_status_t status = readCount(parcel, sizeof(T), &length);
    if (status != STATUS_OK) return status;
    T* buffer = nullptr;
    if (length == -1) return allocator(arrayData, -1, &buffer) ? STATUS_OK : STATUS_UNEXPECTED_NULL;
    if (!allocator(arrayData, length, &buffer)) return STATUS_NO_MEMORY;
    if (length == 0) return STATUS_OK;
    if (buffer == nullptr) return STATUS_NO_MEMORY;
    const size_t bytes = static_cast<size_t>(length) * sizeof(T);
    const uint8_t* in = readInplace(parcel, bytes);
    if (in == nullptr) return STATUS_NOT_ENOUGH_DATA;
    memcpy(buffer, in, bytes);
    return STATUS_OK;
}

// Arrays whose elements each take one int32 slot (chars).
template <typename T>
binder_status_t writeWideArray(AParcel* parcel, const T* arrayData, int32_t length) {
    if (parcel == nullptr) return STATUS_UNEXPECTED_NULL;
    if (length < -1) return STATUS_BAD_VALUE;
    if (length > 0 && arrayData == nullptr) return STATUS_UNEXPECTED_NULL;
    binder_status_t status = writeValue(parcel, length);
    for (int32_t i = 0; status == STATUS_OK && i < length; ++i) {
        status = writeValue(parcel, static_cast<int32_t>(arrayData[i]));
    }
    return status;
}

template <typename T>
binder_status_t readWideArray(const AParcel* parcel, void* arrayData,
                              bool (*allocator)(void*, int32_t, T**)) {
    if (parcel == nullptr || allocator == nullptr) return STATUS_UNEXPECTED_NULL;
    int32_t length;
    binder_status_t status = readCount(parcel, sizeof(int32_t), &length);
    if (status != STATUS_OK) return status;
    T* buffer = nullptr;
    if (length == -1) return allocator(arrayData, -1, &buffer) ? STATUS_OK : STATUS_UNEXPECTED_NULL;
    if (!allocator(arrayData, length, &buffer)) return STATUS_NO_MEMORY;
    if (length > 0 && buffer == nullptr) return STATUS_NO_MEMORY;
    for (int32_t i = 0; i < length; ++i) {
        int32_t value;
        status = readValue(parcel, &value);
        if (status != STATUS_OK) return status;
        buffer[i] = static_cast<T>(value);
    }
    return STATUS_OK;
}

constexpr int32_t kNullBinder = 0;
constexpr int32_t kLocalObject = 1;

}  // namespace

AParcel* AParcel_create() {
    return new AParcel;
}

void AParcel_delete(AParcel* parcel) {
    delete parcel;
}

binder_status_t AParcel_setDataPosition(const AParcel* parcel, int32_t position) {
    if (parcel == nullptr) return STATUS_UNEXPECTED_NULL;
    if (position < 0) return STATUS_BAD_VALUE;
    // A position past the end is allowed; reads from there report missing data.
    parcel->position = static_cast<size_t>(position);
    return STATUS_OK;
}

int32_t AParcel_getDataPosition(const AParcel* parcel) {
    return parcel == nullptr ? 0 : static_cast<int32_t>(parcel->position);
}

int32_t AParcel_getDataSize(const AParcel* parcel) {
    return parcel == nullptr ? 0 : static_cast<int32_t>(parcel->data.size());
}

binder_status_t AParcel_reset(AParcel* parcel) {
    if (parcel == nullptr) return STATUS_UNEXPECTED_NULL;
    parcel->data.clear();
    parcel->position = 0;
    parcel->objects.clear();
    return STATUS_OK;
}

binder_status_t AParcel_marshal(const AParcel* parcel, uint8_t* buffer, size_t start, size_t len) {
    if (parcel == nullptr || (buffer == nullptr && len > 0)) return STATUS_UNEXPECTED_NULL;
    if (!parcel->objects.empty()) return STATUS_INVALID_OPERATION;
    if (start > parcel->data.size() || len > parcel->data.size() - start) return STATUS_BAD_VALUE;
    if (len > 0) memcpy(buffer, parcel->data.data() + start, len);
    return STATUS_OK;
}

binder_status_t AParcel_unmarshal(AParcel* parcel, const uint8_t* buffer, size_t len) {
    if (parcel == nullptr || (buffer == nullptr && len > 0)) return STATUS_UNEXPECTED_NULL;
    if (len > kMaxParcelSize) return STATUS_NO_MEMORY;
    parcel->data.assign(buffer, buffer + len);
    parcel->position = 0;
    parcel->objects.clear();
    return STATUS_OK;
}

binder_status_t AParcel_writeStrongBinder(AParcel* parcel, AIBinder* binder) {
    if (parcel == nullptr) return STATUS_UNEXPECTED_NULL;
    if (binder == nullptr) return writeValue(parcel, kNullBinder);
    if (parcel->objects.size() >= static_cast<size_t>(std::numeric_limits<int32_t>::max())) {
        return STATUS_NO_MEMORY;
    }
    binder_status_t status = writeValue(parcel, kLocalObject);
    if (status != STATUS_OK) return status;
    status = writeValue(parcel, static_cast<int32_t>(parcel->objects.size()));
    if (status != STATUS_OK) return status;
    AIBinder_incStrong(binder);
    parcel->objects.emplace_back(binder);
    return STATUS_OK;
}

binder_status_t AParcel_readStrongBinder(const AParcel* parcel, AIBinder** binder) {
    if (parcel == nullptr || binder == nullptr) return STATUS_UNEXPECTED_NULL;
    int32_t kind;
    binder_status_t status = readValue(parcel, &kind);
    if (status != STATUS_OK) return status;
    if (kind == kNullBinder) {
        *binder = nullptr;
        return STATUS_OK;
    }
    if (kind != kLocalObject) return STATUS_BAD_VALUE;
    int32_t index;
    status = readValue(parcel, &index);
    if (status != STATUS_OK) return status;
    if (index < 0 || static_cast<size_t>(index) >= parcel->objects.size()) {
        return STATUS_BAD_VALUE;
    }
    AIBinder* found = parcel->objects[static_cast<size_t>(index)].get();
    AIBinder_incStrong(found);
    *binder = found;
    return STATUS_OK;
}

binder_status_t AParcel_writeStatusHeader(AParcel* parcel, const AStatus* status) {
    if (parcel == nullptr || status == nullptr) return STATUS_UNEXPECTED_NULL;
    // Transport failures are not marshalled: they become the transaction's own result.
    if (status->exception == EX_TRANSACTION_FAILED) {
        return status->status == STATUS_OK ? STATUS_FAILED_TRANSACTION : status->status;
    }
    binder_status_t result = writeValue(parcel, status->exception);
    if (result != STATUS_OK || status->exception == EX_NONE) return result;
    result = writeUtf8AsString16(parcel, status->message.c_str(),
                                 static_cast<int32_t>(status->message.size()));
    if (result != STATUS_OK) return result;
    // No remote stack trace.
    result = writeValue(parcel, int32_t{0});
    if (result != STATUS_OK) return result;
    if (status->exception == EX_SERVICE_SPECIFIC) {
        result = writeValue(parcel, status->serviceSpecific);
    }
    return result;
}

binder_status_t AParcel_readStatusHeader(const AParcel* parcel, AStatus** status) {
    if (parcel == nullptr || status == nullptr) return STATUS_UNEXPECTED_NULL;
    int32_t exception;
    binder_status_t result = readValue(parcel, &exception);
    if (result != STATUS_OK) return result;
    if (exception == EX_HAS_REPLY_HEADER) {
        // A reply header precedes an otherwise successful reply; skip it.
        int32_t headerSize;
        result = readValue(parcel, &headerSize);
        if (result != STATUS_OK) return result;
        if (headerSize < 4 || static_cast<size_t>(headerSize - 4) > remaining(parcel)) {
            return STATUS_BAD_VALUE;
        }
        parcel->position += static_cast<size_t>(headerSize - 4);
        exception = EX_NONE;
    }
    if (exception == EX_NONE) {
        *status = AStatus_newOk();
        return STATUS_OK;
    }
    std::string message;
    bool isNull = false;
    result = readString16AsUtf8(parcel, &message, &isNull);
    if (result != STATUS_OK) return result;
    int32_t stackTraceSize;
    result = readValue(parcel, &stackTraceSize);
    if (result != STATUS_OK) return result;
    if (stackTraceSize < 0 || static_cast<size_t>(stackTraceSize) > remaining(parcel)) {
        return STATUS_BAD_VALUE;
    }
    parcel->position += static_cast<size_t>(stackTraceSize);
    int32_t serviceSpecific = 0;
    if (exception == EX_SERVICE_SPECIFIC) {
        result = readValue(parcel, &serviceSpecific);
        if (result != STATUS_OK) return result;
    }
    AStatus* read;
    if (exception == EX_SERVICE_SPECIFIC) {
        read = AStatus_fromServiceSpecificErrorWithMessage(serviceSpecific, message.c_str());
    } else {
        read = AStatus_fromExceptionCodeWithMessage(exception, message.c_str());
    }
    *status = read;
    return STATUS_OK;
}

binder_status_t AParcel_writeString(AParcel* parcel, const char* string, int32_t length) {
    return writeUtf8AsString16(parcel, string, length);
}

binder_status_t AParcel_readString(const AParcel* parcel, void* stringData,
                                   AParcel_stringAllocator allocator) {
    if (parcel == nullptr || allocator == nullptr) return STATUS_UNEXPECTED_NULL;
    return readStringWith(parcel, [&](int32_t length, char** buffer) {
        return allocator(stringData, length, buffer);
    });
}

binder_status_t AParcel_writeStringArray(AParcel* parcel, const void* arrayData, int32_t length,
                                         AParcel_stringArrayElementGetter getter) {
    if (parcel == nullptr) return STATUS_UNEXPECTED_NULL;
    if (length < -1) return STATUS_BAD_VALUE;
    if (length > 0 && getter == nullptr) return STATUS_UNEXPECTED_NULL;
    binder_status_t status = writeValue(parcel, length);
    for (int32_t i = 0; status == STATUS_OK && i < length; ++i) {
        int32_t elementLength = 0;
        const char* element = getter(arrayData, static_cast<size_t>(i), &elementLength);
        status = writeUtf8AsString16(parcel, element, elementLength);
    }
    return status;
}

binder_status_t AParcel_readStringArray(const AParcel* parcel, void* arrayData,
                                        AParcel_stringArrayAllocator allocator,
                                        AParcel_stringArrayElementAllocator elementAllocator) {
    if (parcel == nullptr || allocator == nullptr || elementAllocator == nullptr) {
        return STATUS_UNEXPECTED_NULL;
    }
    int32_t length;
    binder_status_t status = readCount(parcel, sizeof(int32_t), &length);
    if (status != STATUS_OK) return status;
    if (length == -1) return allocator(arrayData, -1) ? STATUS_OK : STATUS_UNEXPECTED_NULL;
    if (!allocator(arrayData, length)) return STATUS_NO_MEMORY;
    for (int32_t i = 0; i < length; ++i) {
        status = readStringWith(parcel, [&](int32_t elementLength, char** buffer) {
            return elementAllocator(arrayData, static_cast<size_t>(i), elementLength, buffer);
        });
        if (status != STATUS_OK) return status;
    }
    return STATUS_OK;
}

binder_status_t AParcel_writeParcelableArray(AParcel* parcel, const void* arrayData, int32_t length,
                                             AParcel_writeParcelableElement elementWriter) {
    if (parcel == nullptr) return STATUS_UNEXPECTED_NULL;
    if (length < -1) return STATUS_BAD_VALUE;
    if (length > 0 && elementWriter == nullptr) return STATUS_UNEXPECTED_NULL;
    binder_status_t status = writeValue(parcel, length);
    for (int32_t i = 0; status == STATUS_OK && i < length; ++i) {
        status = elementWriter(parcel, arrayData, static_cast<size_t>(i));
    }
    return status;
}

binder_status_t AParcel_readParcelableArray(const AParcel* parcel, void* arrayData,
                                            AParcel_parcelableArrayAllocator allocator,
                                            AParcel_readParcelableElement elementReader) {
    if (parcel == nullptr || allocator == nullptr || elementReader == nullptr) {
        return STATUS_UNEXPECTED_NULL;
    }
    int32_t length;
    binder_status_t status = readCount(parcel, sizeof(int32_t), &length);
    if (status != STATUS_OK) return status;
    if (length == -1) return allocator(arrayData, -1) ? STATUS_OK : STATUS_UNEXPECTED_NULL;
    if (!allocator(arrayData, length)) return STATUS_NO_MEMORY;
    for (int32_t i = 0; i < length; ++i) {
        status = elementReader(parcel, arrayData, static_cast<size_t>(i));
        if (status != STATUS_OK) return status;
    }
    return STATUS_OK;
}

binder_status_t AParcel_writeInt32(AParcel* parcel, int32_t value) {
    return writeValue(parcel, value);
}
binder_status_t AParcel_writeUint32(AParcel* parcel, uint32_t value) {
    return writeValue(parcel, value);
}
binder_status_t AParcel_writeInt64(AParcel* parcel, int64_t value) {
    return writeValue(parcel, value);
}
binder_status_t AParcel_writeUint64(AParcel* parcel, uint64_t value) {
    return writeValue(parcel, value);
}
binder_status_t AParcel_writeFloat(AParcel* parcel, float value) {
    return writeValue(parcel, value);
}
binder_status_t AParcel_writeDouble(AParcel* parcel, double value) {
    return writeValue(parcel, value);
}
binder_status_t AParcel_writeBool(AParcel* parcel, bool value) {
    return writeValue(parcel, static_cast<int32_t>(value));
}
binder_status_t AParcel_writeChar(AParcel* parcel, char16_t value) {
    return writeValue(parcel, static_cast<int32_t>(value));
}
binder_status_t AParcel_writeByte(AParcel* parcel, int8_t value) {
    return writeValue(parcel, static_cast<int32_t>(value));
}

binder_status_t AParcel_readInt32(const AParcel* parcel, int32_t* value) {
    return readValue(parcel, value);
}
binder_status_t AParcel_readUint32(const AParcel* parcel, uint32_t* value) {
    return readValue(parcel, value);
}
binder_status_t AParcel_readInt64(const AParcel* parcel, int64_t* value) {
    return readValue(parcel, value);
}
binder_status_t AParcel_readUint64(const AParcel* parcel, uint64_t* value) {
    return readValue(parcel, value);
}
binder_status_t AParcel_readFloat(const AParcel* parcel, float* value) {
    return readValue(parcel, value);
}
binder_status_t AParcel_readDouble(const AParcel* parcel, double* value) {
    return readValue(parcel, value);
}

binder_status_t AParcel_readBool(const AParcel* parcel, bool* value) {
    if (value == nullptr) return STATUS_UNEXPECTED_NULL;
    int32_t raw;
    binder_status_t status = readValue(parcel, &raw);
    if (status == STATUS_OK) *value = raw != 0;
    return status;
}

binder_status_t AParcel_readChar(const AParcel* parcel, char16_t* value) {
    if (value == nullptr) return STATUS_UNEXPECTED_NULL;
    int32_t raw;
    binder_status_t status = readValue(parcel, &raw);
    if (status == STATUS_OK) *value = static_cast<char16_t>(raw);
    return status;
}

binder_status_t AParcel_readByte(const AParcel* parcel, int8_t* value) {
    if (value == nullptr) return STATUS_UNEXPECTED_NULL;
    int32_t raw;
    binder_status_t status = readValue(parcel, &raw);
    if (status == STATUS_OK) *value = static_cast<int8_t>(raw);
    return status;
}

binder_status_t AParcel_writeInt32Array(AParcel* parcel, const int32_t* arrayData, int32_t length) {
    return writePackedArray(parcel, arrayData, length);
}
binder_status_t AParcel_writeUint32Array(AParcel* parcel, const uint32_t* arrayData,
                                         int32_t length) {
    return writePackedArray(parcel, arrayData, length);
}
binder_status_t AParcel_writeInt64Array(AParcel* parcel, const int64_t* arrayData, int32_t length) {
    return writePackedArray(parcel, arrayData, length);
}
binder_status_t AParcel_writeUint64Array(AParcel* parcel, const uint64_t* arrayData,
                                         int32_t length) {
    return writePackedArray(parcel, arrayData, length);
}
binder_status_t AParcel_writeFloatArray(AParcel* parcel, const float* arrayData, int32_t length) {
    return writePackedArray(parcel, arrayData, length);
}
binder_status_t AParcel_writeDoubleArray(AParcel* parcel, const double* arrayData, int32_t length) {
    return writePackedArray(parcel, arrayData, length);
}
binder_status_t AParcel_writeByteArray(AParcel* parcel, const int8_t* arrayData, int32_t length) {
    return writePackedArray(parcel, arrayData, length);
}
binder_status_t AParcel_writeCharArray(AParcel* parcel, const char16_t* arrayData, int32_t length) {
    return writeWideArray(parcel, arrayData, length);
}

binder_status_t AParcel_writeBoolArray(AParcel* parcel, const void* arrayData, int32_t length,
                                       AParcel_boolArrayGetter getter) {
    if (parcel == nullptr) return STATUS_UNEXPECTED_NULL;
    if (length < -1) return STATUS_BAD_VALUE;
    if (length > 0 && getter == nullptr) return STATUS_UNEXPECTED_NULL;
    binder_status_t status = writeValue(parcel, length);
    for (int32_t i = 0; status == STATUS_OK && i < length; ++i) {
        status = writeValue(parcel, static_cast<int32_t>(getter(arrayData, static_cast<size_t>(i))));
    }
    return status;
}

binder_status_t AParcel_readInt32Array(const AParcel* parcel, void* arrayData,
                                       AParcel_int32ArrayAllocator allocator) {
    return readPackedArray(parcel, arrayData, allocator);
}
binder_status_t AParcel_readUint32Array(const AParcel* parcel, void* arrayData,
                                        AParcel_uint32ArrayAllocator allocator) {
    return readPackedArray(parcel, arrayData, allocator);
}
binder_status_t AParcel_readInt64Array(const AParcel* parcel, void* arrayData,
                                       AParcel_int64ArrayAllocator allocator) {
    return readPackedArray(parcel, arrayData, allocator);
}
binder_status_t AParcel_readUint64Array(const AParcel* parcel, void* arrayData,
                                        AParcel_uint64ArrayAllocator allocator) {
    return readPackedArray(parcel, arrayData, allocator);
}
binder_status_t AParcel_readFloatArray(const AParcel* parcel, void* arrayData,
                                       AParcel_floatArrayAllocator allocator) {
    return readPackedArray(parcel, arrayData, allocator);
}
binder_status_t AParcel_readDoubleArray(const AParcel* parcel, void* arrayData,
                                        AParcel_doubleArrayAllocator allocator) {
    return readPackedArray(parcel, arrayData, allocator);
}
binder_status_t AParcel_readByteArray(const AParcel* parcel, void* arrayData,
                                      AParcel_byteArrayAllocator allocator) {
    return readPackedArray(parcel, arrayData, allocator);
}
binder_status_t AParcel_readCharArray(const AParcel* parcel, void* arrayData,
                                      AParcel_charArrayAllocator allocator) {
    return readWideArray(parcel, arrayData, allocator);
}

binder_status_t AParcel_readBoolArray(const AParcel* parcel, void* arrayData,
                                      AParcel_boolArrayAllocator allocator,
                                      AParcel_boolArraySetter setter) {
    if (parcel == nullptr || allocator == nullptr || setter == nullptr) {
        return STATUS_UNEXPECTED_NULL;
    }
    int32_t length;
    binder_status_t status = readCount(parcel, sizeof(int32_t), &length);
    if (status != STATUS_OK) return status;
    if (length == -1) return allocator(arrayData, -1) ? STATUS_OK : STATUS_UNEXPECTED_NULL;
    if (!allocator(arrayData, length)) return STATUS_NO_MEMORY;
    for (int32_t i = 0; i < length; ++i) {
        int32_t value;
        status = readValue(parcel, &value);
        if (status != STATUS_OK) return status;
        setter(arrayData, static_cast<size_t>(i), value != 0);
    }
    return STATUS_OK;
}

namespace host_binder {

bool stdStringAllocator(void* data, int32_t length, char** buffer) {
    if (length <= 0) return false;
    auto* str = static_cast<std::string*>(data);
    str->resize(static_cast<size_t>(length) - 1);
    *buffer = &(*str)[0];
    return true;
}

}  // namespace host_binder
