/*
 * Binder objects: classes (an interface descriptor plus callbacks), local and remote binders,
 * reference counting, weak references and transactions.
 */
#pragma once

#include <android/binder_parcel.h>
#include <android/binder_status.h>
#include <stdbool.h>
#include <stdint.h>
#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef uint32_t transaction_code_t;
typedef uint32_t binder_flags_t;

#define B_PACK_CHARS(c1, c2, c3, c4)                                                 \
    ((((uint32_t)(c1)) << 24) | (((uint32_t)(c2)) << 16) | (((uint32_t)(c3)) << 8) | \
     ((uint32_t)(c4)))

enum {
    FIRST_CALL_TRANSACTION = 0x00000001,
    LAST_CALL_TRANSACTION = 0x00ffffff,
};

enum {
    // The caller does not wait for (or receive) a reply.
    FLAG_ONEWAY = 0x01,
};

struct AIBinder;
typedef struct AIBinder AIBinder;

struct AIBinder_Weak;
typedef struct AIBinder_Weak AIBinder_Weak;

struct AIBinder_Class;
typedef struct AIBinder_Class AIBinder_Class;

// Called by AIBinder_new with its args; the result becomes the binder's user data.
typedef void* (*AIBinder_Class_onCreate)(void* args);
// Called with the user data when the last strong reference to a local binder goes away.
typedef void (*AIBinder_Class_onDestroy)(void* userData);
// Handles one incoming transaction on a local binder.
typedef binder_status_t (*AIBinder_Class_onTransact)(AIBinder* binder, transaction_code_t code,
                                                     const AParcel* in, AParcel* out);
// Writes diagnostic output for the binder to fd.
typedef binder_status_t (*AIBinder_onDump)(AIBinder* binder, int fd, const char** args,
                                           uint32_t numArgs);

// The class and its descriptor must outlive every binder that uses it (normally static).
AIBinder_Class* AIBinder_Class_define(const char* interfaceDescriptor,
                                      AIBinder_Class_onCreate onCreate,
                                      AIBinder_Class_onDestroy onDestroy,
                                      AIBinder_Class_onTransact onTransact);
void AIBinder_Class_setOnDump(AIBinder_Class* clazz, AIBinder_onDump onDump);
const char* AIBinder_Class_getDescriptor(const AIBinder_Class* clazz);

// A new local binder with one strong reference.
AIBinder* AIBinder_new(const AIBinder_Class* clazz, void* args);

bool AIBinder_isRemote(const AIBinder* binder);
bool AIBinder_isAlive(const AIBinder* binder);
binder_status_t AIBinder_ping(AIBinder* binder);
binder_status_t AIBinder_dump(AIBinder* binder, int fd, const char** args, uint32_t numArgs);

// Credentials of the caller of the transaction running on this thread, or of this process.
uid_t AIBinder_getCallingUid(void);
pid_t AIBinder_getCallingPid(void);

void AIBinder_incStrong(AIBinder* binder);
void AIBinder_decStrong(AIBinder* binder);
int32_t AIBinder_debugGetRefCount(AIBinder* binder);

bool AIBinder_associateClass(AIBinder* binder, const AIBinder_Class* clazz);
const AIBinder_Class* AIBinder_getClass(AIBinder* binder);
void* AIBinder_getUserData(AIBinder* binder);

// Creates *in holding the interface token of the binder's class.
binder_status_t AIBinder_prepareTransaction(AIBinder* binder, AParcel** in);
// Consumes *in (it is deleted and set to null) and on success sets *out to the reply.
binder_status_t AIBinder_transact(AIBinder* binder, transaction_code_t code, AParcel** in,
                                  AParcel** out, binder_flags_t flags);

AIBinder_Weak* AIBinder_Weak_new(AIBinder* binder);
void AIBinder_Weak_delete(AIBinder_Weak* weakBinder);
// A new strong reference, or null when the binder is gone.
AIBinder* AIBinder_Weak_promote(AIBinder_Weak* weakBinder);

#ifdef __cplusplus
}  // extern "C"
#endif
