/*
 * AStatus: construction, accessors and the readable description.
 */
#include <android/binder_status.h>

#include <cstring>
#include <string>

#include "binder_internal.h"

namespace {

AStatus* newStatus(binder_exception_t exception, binder_status_t status, int32_t serviceSpecific,
                   const char* message) {
    AStatus* result = new AStatus;
    result->exception = exception;
    result->status = status;
    result->serviceSpecific = serviceSpecific;
    if (message != nullptr) result->message = message;
    return result;
}

const char* exceptionName(binder_exception_t exception) {
    switch (exception) {
        case EX_NONE:
            return "EX_NONE";
        case EX_SECURITY:
            return "EX_SECURITY";
        case EX_BAD_PARCELABLE:
            return "EX_BAD_PARCELABLE";
        case EX_ILLEGAL_ARGUMENT:
            return "EX_ILLEGAL_ARGUMENT";
        case EX_NULL_POINTER:
            return "EX_NULL_POINTER";
        case EX_ILLEGAL_STATE:
            return "EX_ILLEGAL_STATE";
        case EX_NETWORK_MAIN_THREAD:
            return "EX_NETWORK_MAIN_THREAD";
        case EX_UNSUPPORTED_OPERATION:
            return "EX_UNSUPPORTED_OPERATION";
        case EX_SERVICE_SPECIFIC:
            return "EX_SERVICE_SPECIFIC";
        case EX_PARCELABLE:
            return "EX_PARCELABLE";
        case EX_HAS_REPLY_HEADER:
            return "EX_HAS_REPLY_HEADER";
        case EX_TRANSACTION_FAILED:
            return "EX_TRANSACTION_FAILED";
        default:
            return "UNKNOWN_EXCEPTION";
    }
}

const char* statusName(binder_status_t status) {
    switch (status) {
        case STATUS_OK:
            return "STATUS_OK";
        case STATUS_UNKNOWN_ERROR:
            return "STATUS_UNKNOWN_ERROR";
        case STATUS_NO_MEMORY:
            return "STATUS_NO_MEMORY";
        case STATUS_INVALID_OPERATION:
            return "STATUS_INVALID_OPERATION";
        case STATUS_BAD_VALUE:
            return "STATUS_BAD_VALUE";
        case STATUS_BAD_TYPE:
            return "STATUS_BAD_TYPE";
        case STATUS_NAME_NOT_FOUND:
            return "STATUS_NAME_NOT_FOUND";
        case STATUS_PERMISSION_DENIED:
            return "STATUS_PERMISSION_DENIED";
        case STATUS_NO_INIT:
            return "STATUS_NO_INIT";
        case STATUS_ALREADY_EXISTS:
            return "STATUS_ALREADY_EXISTS";
        case STATUS_DEAD_OBJECT:
            return "STATUS_DEAD_OBJECT";
        case STATUS_FAILED_TRANSACTION:
            return "STATUS_FAILED_TRANSACTION";
        case STATUS_BAD_INDEX:
            return "STATUS_BAD_INDEX";
        case STATUS_NOT_ENOUGH_DATA:
            return "STATUS_NOT_ENOUGH_DATA";
        case STATUS_WOULD_BLOCK:
            return "STATUS_WOULD_BLOCK";
        case STATUS_TIMED_OUT:
            return "STATUS_TIMED_OUT";
        case STATUS_UNKNOWN_TRANSACTION:
            return "STATUS_UNKNOWN_TRANSACTION";
        case STATUS_FDS_NOT_ALLOWED:
            return "STATUS_FDS_NOT_ALLOWED";
        case STATUS_UNEXPECTED_NULL:
            return "STATUS_UNEXPECTED_NULL";
        default:
            return "UNKNOWN_STATUS";
    }
}

}  // namespace

AStatus* AStatus_newOk() {
    return newStatus(EX_NONE, STATUS_OK, 0, nullptr);
}

AStatus* AStatus_fromExceptionCode(binder_exception_t exception) {
    return AStatus_fromExceptionCodeWithMessage(exception, nullptr);
}

AStatus* AStatus_fromExceptionCodeWithMessage(binder_exception_t exception, const char* message) {
    if (exception == EX_NONE) return AStatus_newOk();
    // A transport failure without a specific cause.
    binder_status_t status =
        exception == EX_TRANSACTION_FAILED ? STATUS_FAILED_TRANSACTION : STATUS_OK;
    return newStatus(exception, status, 0, message);
}

AStatus* AStatus_fromServiceSpecificError(int32_t serviceSpecific) {
    return AStatus_fromServiceSpecificErrorWithMessage(serviceSpecific, nullptr);
}

AStatus* AStatus_fromServiceSpecificErrorWithMessage(int32_t serviceSpecific, const char* message) {
    return newStatus(EX_SERVICE_SPECIFIC, STATUS_OK, serviceSpecific, message);
}

AStatus* AStatus_fromStatus(binder_status_t status) {
    if (status == STATUS_OK) return AStatus_newOk();
    return newStatus(EX_TRANSACTION_FAILED, status, 0, nullptr);
}

bool AStatus_isOk(const AStatus* status) {
    return status != nullptr && status->exception == EX_NONE;
}

binder_exception_t AStatus_getExceptionCode(const AStatus* status) {
    return status == nullptr ? EX_TRANSACTION_FAILED : status->exception;
}

int32_t AStatus_getServiceSpecificError(const AStatus* status) {
    if (status == nullptr || status->exception != EX_SERVICE_SPECIFIC) return 0;
    return status->serviceSpecific;
}

binder_status_t AStatus_getStatus(const AStatus* status) {
    if (status == nullptr) return STATUS_UNEXPECTED_NULL;
    return status->exception == EX_TRANSACTION_FAILED ? status->status : STATUS_OK;
}

const char* AStatus_getMessage(const AStatus* status) {
    return status == nullptr ? "" : status->message.c_str();
}

const char* AStatus_getDescription(const AStatus* status) {
    std::string text;
    if (status == nullptr) {
        text = "Status(null)";
    } else if (status->exception == EX_NONE) {
        text = "No error";
    } else if (status->exception == EX_TRANSACTION_FAILED) {
        text = std::string("Transaction failed: ") + statusName(status->status) + " (" +
               std::to_string(status->status) + ")";
    } else {
        text = std::string("Exception ") + exceptionName(status->exception) + " (" +
               std::to_string(status->exception) + ")";
        if (status->exception == EX_SERVICE_SPECIFIC) {
            text += ", service-specific error " + std::to_string(status->serviceSpecific);
        }
        if (!status->message.empty()) text += ": '" + status->message + "'";
    }
    return strdup(text.c_str());
}

void AStatus_deleteDescription(const char* description) {
    free(const_cast<char*>(description));
}

void AStatus_delete(AStatus* status) {
    delete status;
}
