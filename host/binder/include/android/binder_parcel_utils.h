/*
 * C++ helpers over the parcel API for std::string, std::optional and std::vector, as used by
 * generated interface code.
 */
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_parcel.h>

#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace ndk {

namespace parcel_detail {

inline bool stdStringAllocator(void* stringData, int32_t length, char** buffer) {
    if (length <= 0) return false;  // null (-1) is not representable in std::string
    auto* str = static_cast<std::string*>(stringData);
    str->resize(static_cast<size_t>(length) - 1);
    *buffer = &(*str)[0];
    return true;
}

inline bool optionalStringAllocator(void* stringData, int32_t length, char** buffer) {
    auto* str = static_cast<std::optional<std::string>*>(stringData);
    if (length < 0) {
        *str = std::nullopt;
        return true;
    }
    if (length == 0) return false;
    *str = std::string(static_cast<size_t>(length) - 1, '\0');
    *buffer = &(**str)[0];
    return true;
}

// Array allocators for the two vector forms, keyed on the element type.
template <typename T>
bool vectorAllocator(void* vectorData, int32_t length, T** outBuffer) {
    if (length < 0) return false;
    auto* vec = static_cast<std::vector<T>*>(vectorData);
    vec->resize(static_cast<size_t>(length));
    *outBuffer = vec->data();
    return true;
}

template <typename T>
bool optionalVectorAllocator(void* vectorData, int32_t length, T** outBuffer) {
    auto* vec = static_cast<std::optional<std::vector<T>>*>(vectorData);
    if (length < 0) {
        *vec = std::nullopt;
        return true;
    }
    *vec = std::vector<T>(static_cast<size_t>(length));
    *outBuffer = (*vec)->data();
    return true;
}

template <typename V>
bool vectorSizeAllocator(void* vectorData, int32_t length) {
    if (length < 0) return false;
    static_cast<V*>(vectorData)->resize(static_cast<size_t>(length));
    return true;
}

template <typename V>
bool optionalVectorSizeAllocator(void* vectorData, int32_t length) {
    auto* vec = static_cast<std::optional<V>*>(vectorData);
    if (length < 0) {
        *vec = std::nullopt;
        return true;
    }
    *vec = V(static_cast<size_t>(length));
    return true;
}

inline bool boolGetter(const void* vectorData, size_t index) {
    return (*static_cast<const std::vector<bool>*>(vectorData))[index];
}
inline void boolSetter(void* vectorData, size_t index, bool value) {
    (*static_cast<std::vector<bool>*>(vectorData))[index] = value;
}
inline void optionalBoolSetter(void* vectorData, size_t index, bool value) {
    (**static_cast<std::optional<std::vector<bool>>*>(vectorData))[index] = value;
}

inline const char* stringGetter(const void* vectorData, size_t index, int32_t* outLength) {
    const std::string& str = (*static_cast<const std::vector<std::string>*>(vectorData))[index];
    *outLength = static_cast<int32_t>(str.size());
    return str.c_str();
}
inline const char* optionalStringGetter(const void* vectorData, size_t index, int32_t* outLength) {
    const std::optional<std::string>& str =
        (*static_cast<const std::vector<std::optional<std::string>>*>(vectorData))[index];
    if (!str) {
        *outLength = -1;
        return nullptr;
    }
    *outLength = static_cast<int32_t>(str->size());
    return str->c_str();
}

template <typename V>
bool stringElementAllocator(void* vectorData, size_t index, int32_t length, char** buffer) {
    return stdStringAllocator(&(*static_cast<V*>(vectorData))[index], length, buffer);
}
template <typename V>
bool optionalStringElementAllocator(void* vectorData, size_t index, int32_t length, char** buffer) {
    return optionalStringAllocator(&(*static_cast<V*>(vectorData))[index], length, buffer);
}
template <typename V>
bool stringElementAllocatorInOptional(void* vectorData, size_t index, int32_t length,
                                      char** buffer) {
    return stdStringAllocator(&(**static_cast<std::optional<V>*>(vectorData))[index], length,
                              buffer);
}
template <typename V>
bool optionalStringElementAllocatorInOptional(void* vectorData, size_t index, int32_t length,
                                              char** buffer) {
    return optionalStringAllocator(&(**static_cast<std::optional<V>*>(vectorData))[index], length,
                                   buffer);
}

template <typename P>
binder_status_t writeParcelableElement(AParcel* parcel, const void* vectorData, size_t index) {
    return (*static_cast<const std::vector<P>*>(vectorData))[index].writeToParcel(parcel);
}
template <typename P>
binder_status_t readParcelableElement(const AParcel* parcel, void* vectorData, size_t index) {
    return (*static_cast<std::vector<P>*>(vectorData))[index].readFromParcel(parcel);
}
template <typename P>
binder_status_t readParcelableElementInOptional(const AParcel* parcel, void* vectorData,
                                                size_t index) {
    return (**static_cast<std::optional<std::vector<P>>*>(vectorData))[index].readFromParcel(parcel);
}

template <typename T>
int32_t lengthOf(const std::vector<T>& vec) {
    return static_cast<int32_t>(vec.size());
}

}  // namespace parcel_detail

// Strings.

inline binder_status_t AParcel_writeString(AParcel* parcel, const std::string& str) {
    return ::AParcel_writeString(parcel, str.c_str(), static_cast<int32_t>(str.size()));
}

inline binder_status_t AParcel_readString(const AParcel* parcel, std::string* str) {
    return ::AParcel_readString(parcel, str, parcel_detail::stdStringAllocator);
}

inline binder_status_t AParcel_writeString(AParcel* parcel, const std::optional<std::string>& str) {
    if (!str) return ::AParcel_writeString(parcel, nullptr, -1);
    return AParcel_writeString(parcel, *str);
}

inline binder_status_t AParcel_readString(const AParcel* parcel, std::optional<std::string>* str) {
    return ::AParcel_readString(parcel, str, parcel_detail::optionalStringAllocator);
}

// Scalar arrays: std::vector<T> and std::optional<std::vector<T>>.

#define NDK_PARCEL_SCALAR_VECTOR(T, Name)                                                           \
    inline binder_status_t AParcel_writeVector(AParcel* parcel, const std::vector<T>& vec) {        \
        return ::AParcel_write##Name##Array(parcel, vec.data(), parcel_detail::lengthOf(vec));      \
    }                                                                                               \
    inline binder_status_t AParcel_readVector(const AParcel* parcel, std::vector<T>* vec) {         \
        return ::AParcel_read##Name##Array(parcel, vec, parcel_detail::vectorAllocator<T>);         \
    }                                                                                               \
    inline binder_status_t AParcel_writeVector(AParcel* parcel,                                     \
                                               const std::optional<std::vector<T>>& vec) {          \
        if (!vec) return ::AParcel_write##Name##Array(parcel, nullptr, -1);                         \
        return AParcel_writeVector(parcel, *vec);                                                   \
    }                                                                                               \
    inline binder_status_t AParcel_readVector(const AParcel* parcel,                                \
                                              std::optional<std::vector<T>>* vec) {                 \
        return ::AParcel_read##Name##Array(parcel, vec, parcel_detail::optionalVectorAllocator<T>); \
    }

NDK_PARCEL_SCALAR_VECTOR(int32_t, Int32)
NDK_PARCEL_SCALAR_VECTOR(uint32_t, Uint32)
NDK_PARCEL_SCALAR_VECTOR(int64_t, Int64)
NDK_PARCEL_SCALAR_VECTOR(uint64_t, Uint64)
NDK_PARCEL_SCALAR_VECTOR(float, Float)
NDK_PARCEL_SCALAR_VECTOR(double, Double)
NDK_PARCEL_SCALAR_VECTOR(char16_t, Char)
NDK_PARCEL_SCALAR_VECTOR(int8_t, Byte)

#undef NDK_PARCEL_SCALAR_VECTOR

inline binder_status_t AParcel_writeVector(AParcel* parcel, const std::vector<uint8_t>& vec) {
    return ::AParcel_writeByteArray(parcel, reinterpret_cast<const int8_t*>(vec.data()),
                                    parcel_detail::lengthOf(vec));
}

inline binder_status_t AParcel_readVector(const AParcel* parcel, std::vector<uint8_t>* vec) {
    return ::AParcel_readByteArray(parcel, vec, [](void* data, int32_t length, int8_t** out) {
        uint8_t* buffer = nullptr;
        if (!parcel_detail::vectorAllocator<uint8_t>(data, length, &buffer)) return false;
        *out = reinterpret_cast<int8_t*>(buffer);
        return true;
    });
}

// Booleans.

inline binder_status_t AParcel_writeVector(AParcel* parcel, const std::vector<bool>& vec) {
    return ::AParcel_writeBoolArray(parcel, &vec, parcel_detail::lengthOf(vec),
                                    parcel_detail::boolGetter);
}

inline binder_status_t AParcel_readVector(const AParcel* parcel, std::vector<bool>* vec) {
    return ::AParcel_readBoolArray(parcel, vec,
                                   parcel_detail::vectorSizeAllocator<std::vector<bool>>,
                                   parcel_detail::boolSetter);
}

inline binder_status_t AParcel_writeVector(AParcel* parcel,
                                           const std::optional<std::vector<bool>>& vec) {
    if (!vec) return ::AParcel_writeBoolArray(parcel, nullptr, -1, parcel_detail::boolGetter);
    return AParcel_writeVector(parcel, *vec);
}

inline binder_status_t AParcel_readVector(const AParcel* parcel,
                                          std::optional<std::vector<bool>>* vec) {
    return ::AParcel_readBoolArray(parcel, vec,
                                   parcel_detail::optionalVectorSizeAllocator<std::vector<bool>>,
                                   parcel_detail::optionalBoolSetter);
}

// Strings arrays.

inline binder_status_t AParcel_writeVector(AParcel* parcel, const std::vector<std::string>& vec) {
    return ::AParcel_writeStringArray(parcel, &vec, parcel_detail::lengthOf(vec),
                                      parcel_detail::stringGetter);
}

inline binder_status_t AParcel_readVector(const AParcel* parcel, std::vector<std::string>* vec) {
    using V = std::vector<std::string>;
    return ::AParcel_readStringArray(parcel, vec, parcel_detail::vectorSizeAllocator<V>,
                                     parcel_detail::stringElementAllocator<V>);
}

inline binder_status_t AParcel_writeVector(AParcel* parcel,
                                           const std::optional<std::vector<std::string>>& vec) {
    if (!vec) return ::AParcel_writeStringArray(parcel, nullptr, -1, parcel_detail::stringGetter);
    return AParcel_writeVector(parcel, *vec);
}

inline binder_status_t AParcel_readVector(const AParcel* parcel,
                                          std::optional<std::vector<std::string>>* vec) {
    using V = std::vector<std::string>;
    return ::AParcel_readStringArray(parcel, vec, parcel_detail::optionalVectorSizeAllocator<V>,
                                     parcel_detail::stringElementAllocatorInOptional<V>);
}

inline binder_status_t AParcel_writeVector(AParcel* parcel,
                                           const std::vector<std::optional<std::string>>& vec) {
    return ::AParcel_writeStringArray(parcel, &vec, parcel_detail::lengthOf(vec),
                                      parcel_detail::optionalStringGetter);
}

inline binder_status_t AParcel_readVector(const AParcel* parcel,
                                          std::vector<std::optional<std::string>>* vec) {
    using V = std::vector<std::optional<std::string>>;
    return ::AParcel_readStringArray(parcel, vec, parcel_detail::vectorSizeAllocator<V>,
                                     parcel_detail::optionalStringElementAllocator<V>);
}

inline binder_status_t AParcel_writeVector(
    AParcel* parcel, const std::optional<std::vector<std::optional<std::string>>>& vec) {
    if (!vec) {
        return ::AParcel_writeStringArray(parcel, nullptr, -1, parcel_detail::optionalStringGetter);
    }
    return AParcel_writeVector(parcel, *vec);
}

inline binder_status_t AParcel_readVector(
    const AParcel* parcel, std::optional<std::vector<std::optional<std::string>>>* vec) {
    using V = std::vector<std::optional<std::string>>;
    return ::AParcel_readStringArray(parcel, vec, parcel_detail::optionalVectorSizeAllocator<V>,
                                     parcel_detail::optionalStringElementAllocatorInOptional<V>);
}

// Arrays of structured parcelables (types with readFromParcel/writeToParcel).

template <typename P>
binder_status_t AParcel_writeVector(AParcel* parcel, const std::vector<P>& vec) {
    return ::AParcel_writeParcelableArray(parcel, &vec, parcel_detail::lengthOf(vec),
                                          parcel_detail::writeParcelableElement<P>);
}

template <typename P>
binder_status_t AParcel_readVector(const AParcel* parcel, std::vector<P>* vec) {
    return ::AParcel_readParcelableArray(parcel, vec,
                                         parcel_detail::vectorSizeAllocator<std::vector<P>>,
                                         parcel_detail::readParcelableElement<P>);
}

template <typename P>
binder_status_t AParcel_writeVector(AParcel* parcel, const std::optional<std::vector<P>>& vec) {
    if (!vec) {
        return ::AParcel_writeParcelableArray(parcel, nullptr, -1,
                                              parcel_detail::writeParcelableElement<P>);
    }
    return AParcel_writeVector(parcel, *vec);
}

template <typename P>
binder_status_t AParcel_readVector(const AParcel* parcel, std::optional<std::vector<P>>* vec) {
    return ::AParcel_readParcelableArray(parcel, vec,
                                         parcel_detail::optionalVectorSizeAllocator<std::vector<P>>,
                                         parcel_detail::readParcelableElementInOptional<P>);
}

// Single structured parcelables.

template <typename P>
binder_status_t AParcel_writeParcelable(AParcel* parcel, const P& p) {
    return p.writeToParcel(parcel);
}

template <typename P>
binder_status_t AParcel_readParcelable(const AParcel* parcel, P* p) {
    return p->readFromParcel(parcel);
}

// Binders.

inline binder_status_t AParcel_writeRequiredStrongBinder(AParcel* parcel, const SpAIBinder& binder) {
    if (binder.get() == nullptr) return STATUS_UNEXPECTED_NULL;
    return ::AParcel_writeStrongBinder(parcel, binder.get());
}

inline binder_status_t AParcel_readRequiredStrongBinder(const AParcel* parcel, SpAIBinder* binder) {
    AIBinder* read = nullptr;
    binder_status_t status = ::AParcel_readStrongBinder(parcel, &read);
    if (status != STATUS_OK) return status;
    binder->set(read);
    return read == nullptr ? STATUS_UNEXPECTED_NULL : STATUS_OK;
}

}  // namespace ndk
