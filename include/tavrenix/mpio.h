/*
 * mpio.h - libtavrenix: multipathed SCSI logical units, their paths, and how the driver uses them.
 *
 * Conventions (those of ob.h hold as well)
 *  1. A handle stands for one logical unit or one path. It is an object: retain, release and
 *     compare it with the functions of ob.h. It stays valid as long as it is retained, even when
 *     its device is gone. Functions then return their failure value, except that
 *     MPIOLogicalUnitCopyPaths and MPIOLogicalUnitPathCopyProperties tell what the handle still
 *     holds, and MPIOLogicalUnitPathDisable tries.
 *  2. Every array and dictionary returned is a copy of its own that the caller releases. Handles
 *     inside a returned array are held by the array.
 *  3. Failure values are NULL, false and 0. A function with an error argument writes it only where
 *     there is an error to tell; the caller then releases it. Some failures tell none, on purpose.
 *     NULL may be passed where the error is not wanted.
 *  4. Calls from several threads must be serialised by the client.
 */
#ifndef TAVRENIX_MPIO_H
#define TAVRENIX_MPIO_H

#include <tavrenix/ob.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef const struct MPIOLogicalUnitHandle* MPIOLogicalUnitRef;
typedef const struct MPIOLogicalUnitPathHandle* MPIOLogicalUnitPathRef;
/* An entry of the device registry, borrowed from the registry's own interface; 0 is none. */
typedef uint32_t MPIORegistryObject;

/* ---- Error codes ---- */

enum {
  kMPIOErrorBadArgument = 0x08000001,
  kMPIOErrorServiceNotFound = 0x08000002,
  kMPIOErrorPropertyWriteFailed = 0x08000003, /* with kMPIOErrorResultCodeKey */
  kMPIOErrorPathsLackIdentifiers = 0x08000004,
  kMPIOErrorStatisticsUnavailable = 0x08000005, /* with kMPIOErrorResultCodeKey */
  kMPIOErrorNotificationFailed = 0x08000006,    /* with kMPIOErrorResultCodeKey */
  kMPIOErrorNoResources = 0x08000007
};

/* ---- Keys and values: one constant string object each ---- */

/* Kinds of notification. The first two are never delivered. */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitStatusChangedNotification;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitInvalidatedNotification;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitAppearedNotification;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathAppearedNotification;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitDisappearedNotification;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathDisappearedNotification;

/* Properties of a logical unit. */
OB_EXPORT extern const ObStringRef
    kMPIOLogicalUnitIdentifierKey;                           /* string: upper-case hexadecimal */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitAliasKey; /* string; absent when it has none */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitAlgorithmKey; /* one of the three values below */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitVendorIDKey;  /* string */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitProductIDKey; /* string */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitVolumesKey;   /* array of volume dictionaries */

/* A volume dictionary. */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitVolumeNameKey; /* string */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitVolumeSizeKey; /* number: bytes */
OB_EXPORT extern const ObStringRef
    kMPIOLogicalUnitVolumeMountPointKey; /* string: the device's name */

/* Properties of a path. */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathIdentifierKey;   /* string: hexadecimal */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathStateKey;        /* a path state value */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathInterconnectKey; /* string */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathHostPortIdentifierKey; /* data */
OB_EXPORT extern const ObStringRef
    kMPIOLogicalUnitPathAccessStateKey; /* text of the path state key */

/* Path state values: asymmetric access states of SPC. Unavailable stands for all other states too.
 */
OB_EXPORT extern const ObStringRef kMPIOPathStateActiveOptimized;
OB_EXPORT extern const ObStringRef kMPIOPathStateActiveNonOptimized;
OB_EXPORT extern const ObStringRef kMPIOPathStateStandby;
OB_EXPORT extern const ObStringRef kMPIOPathStateUnavailable;

OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathEnabledKey; /* boolean */

/* Algorithm values. */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitAlgorithmRoundRobin;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitAlgorithmLeastQueueDepth;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitAlgorithmLeastBytes;

OB_EXPORT extern const ObStringRef kMPIOLogicalUnitBatchCountKey; /* number: requests in a row */

/* Statistics of a logical unit: a date, and unsigned 64-bit numbers that only grow. */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitStatisticsSamplingDateKey;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitStatisticsBytesSentKey;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitStatisticsBytesReceivedKey;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitStatisticsTotalBytesKey;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitStatisticsTotalCommandsKey;

/* Statistics of a path: the same, and the state byte (bits 0 to 3 access state, bit 7 disabled). */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathStatisticsSamplingDateKey;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathStatisticsPathStateKey;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathStatisticsBytesSentKey;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathStatisticsBytesReceivedKey;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathStatisticsTotalBytesKey;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathStatisticsTotalCommandsKey;

/* In the user information of an error: number, the platform's result code. */
OB_EXPORT extern const ObStringRef kMPIOErrorResultCodeKey;

/* ---- Kinds of handles ---- */

OB_EXPORT ObTypeID MPIOLogicalUnitGetTypeID(void);
OB_EXPORT ObTypeID MPIOLogicalUnitPathGetTypeID(void);

/* ---- Queries and changes ---- */

/* All logical units, in no particular order, after looking for changes. NULL after the library's
 * teardown at exit. */
OB_EXPORT ObArrayRef MPIOCopyLogicalUnits(void);
/* The properties of a unit that is present, read afresh. */
OB_EXPORT ObDictionaryRef MPIOLogicalUnitCopyProperties(MPIOLogicalUnitRef unit);
/* The paths that this very handle holds, after looking for changes of its unit. */
OB_EXPORT ObArrayRef MPIOLogicalUnitCopyPaths(MPIOLogicalUnitRef unit);
/* The properties of a path as last read, after looking for changes of its unit. */
OB_EXPORT ObDictionaryRef MPIOLogicalUnitPathCopyProperties(MPIOLogicalUnitPathRef path);
/* The unit that a present path belongs to, or NULL where that unit is gone. */
OB_EXPORT MPIOLogicalUnitRef MPIOLogicalUnitPathCopyLogicalUnit(MPIOLogicalUnitPathRef path);

/* Asks the driver to use a path that is present. */
OB_EXPORT bool MPIOLogicalUnitPathEnable(MPIOLogicalUnitPathRef path, ObErrorRef* error);
/* Asks the driver not to use a path, whether it is present or not. */
OB_EXPORT bool MPIOLogicalUnitPathDisable(MPIOLogicalUnitPathRef path, ObErrorRef* error);
/* Ask for all paths of a unit in one request. */
OB_EXPORT bool MPIOLogicalUnitEnableAllPaths(MPIOLogicalUnitRef unit, ObErrorRef* error);
OB_EXPORT bool MPIOLogicalUnitDisableAllPaths(MPIOLogicalUnitRef unit, ObErrorRef* error);

/* algorithm: one of the kMPIOLogicalUnitAlgorithm values, compared as text. Any other fails
 * silently. */
OB_EXPORT bool MPIOLogicalUnitSetAlgorithm(MPIOLogicalUnitRef unit, ObStringRef algorithm,
                                           ObErrorRef* error);
/* newBatchCount: 1 to 4,294,967,295 requests on a path before round robin goes on to the next. */
OB_EXPORT bool MPIOLogicalUnitSetBatchCount(MPIOLogicalUnitRef unit, uint32_t newBatchCount,
                                            ObErrorRef* error);

/* Counters as the driver has them now. For a unit whose counters cannot be read they are zeros. */
OB_EXPORT ObDictionaryRef MPIOLogicalUnitCopyStatistics(MPIOLogicalUnitRef unit);
/* The same for a path; NULL where its counters cannot be read. */
OB_EXPORT ObDictionaryRef MPIOLogicalUnitPathCopyStatistics(MPIOLogicalUnitPathRef path);

/* The handle for an entry of the registry. NULL where the entry stands for no known unit or path.
 */
OB_EXPORT MPIOLogicalUnitRef MPIOCopyLogicalUnitForService(MPIORegistryObject service);
OB_EXPORT MPIOLogicalUnitPathRef MPIOCopyLogicalUnitPathForService(MPIORegistryObject service);

/* ---- Notifications: units and paths that appear and disappear ---- */

/*
 * kind is one of the constants above, to be compared by identity or as text; handle is a logical
 * unit or a path, valid during the call: retain it to keep it. What is present at the registration
 * is told of first, as appeared. What has disappeared is told of with the handle that the client
 * knows. A call may use every function of this interface, and may end its own registration.
 */

/* A block of the client's (see ob.h): a structure of its own that begins with this one. context is
 * NULL. */
typedef struct MPIONotificationBlock MPIONotificationBlock;
struct MPIONotificationBlock {
  void (*invoke)(MPIONotificationBlock* block, ObStringRef kind, ObTypeRef handle, void* context);
};
typedef void (*MPIONotificationCallback)(ObStringRef kind, ObTypeRef handle, void* context);
/* A registration on a dispatch queue. It is no object: it is given back with
 * MPIONotificationDestroy. */
typedef struct MPIONotification* MPIONotificationRef;

/*
 * Has the block called on the queue. The block is neither copied nor freed: it must live until the
 * registration is destroyed and the queue drained.
 * *error is set to NULL first. Where the result is NULL it holds one of kMPIOErrorNoResources,
 * kMPIOErrorServiceNotFound and kMPIOErrorNotificationFailed; unlike every other error of this
 * interface it belongs to the caller's pool (ObPoolCreate) and is not to be released. A creation
 * that fails undoes nothing: calls that were queued by then are still made, so drain the queue
 * before the block goes.
 */
OB_EXPORT MPIONotificationRef MPIONotificationCreateWithDispatchQueue(MPIONotificationBlock* block,
                                                                      ObDispatchQueueRef queue,
                                                                      ObErrorRef* error);
/* Ends the registration, on any thread, also within a call of its block. A call that is being made
 * on the queue is not waited for: once the queue has drained afterwards, the block is no longer
 * called. Does nothing for NULL and for what is no such registration. */
OB_EXPORT void MPIONotificationDestroy(MPIONotificationRef notification);

/*
 * A run-loop source, owned by the caller; NULL where memory ran out. Adding it to a run loop
 * registers, and calls the callback within the add for all that is present; later calls are made
 * where that loop runs in that mode. Adding it to a second loop or mode registers nothing more.
 * Removing it from any of them, or invalidating it, ends the registration; it may be added again
 * after a removal. Failures to register are silent. Retain and release it on any thread.
 */
OB_EXPORT ObRunLoopSourceRef MPIONotificationCreateRunLoopSource(MPIONotificationCallback callback,
                                                                 void* context);

#ifdef __cplusplus
}
#endif

#endif
