/*
 * mpio.h - libtavrenix: multipathed SCSI logical units, their paths, and how the driver uses them.
 *
 * Conventions (those of ob.h hold as well)
 *  1. A handle stands for one logical unit or one path. It is an object: retain, release and
 *     compare it with the functions of ob.h. It stays valid as long as it is retained.
 *  2. Functions fail for a handle whose device is gone. There are three exceptions:
 *     MPIOLogicalUnitCopyPaths and MPIOLogicalUnitPathCopyProperties return what the handle still
 *     holds, and MPIOLogicalUnitPathDisable sends its request all the same.
 *  3. Ownership: every array and dictionary that is returned is a copy, which the caller releases.
 *     A returned array retains the handles in it.
 *  4. Errors: a failed function returns NULL, false or 0. It may also store an error object in
 *     *error, which the caller releases. Some failures store none, on purpose, and *error then
 *     keeps its value. A caller that wants no error passes NULL.
 *  5. If the driver does not answer a read of counters, the library prints one line on standard
 *     error. Looking for changes and copying statistics read counters.
 *  6. Thread safety: the client serialises its calls. Any thread may make them.
 */
#ifndef TAVRENIX_MPIO_H
#define TAVRENIX_MPIO_H

#include <tavrenix/ob.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef const struct MPIOLogicalUnitHandle* MPIOLogicalUnitRef;
typedef const struct MPIOLogicalUnitPathHandle* MPIOLogicalUnitPathRef;
/* An entry of the device registry, borrowed from the registry's own interface; 0 is none. No host
 * hands such entries to other programs today, so only code inside the library has them. */
typedef uint32_t MPIORegistryObject;

/* ---- Error codes ---- */

enum {
  /* The handle is of the wrong kind, or the batch count is 0. */
  kMPIOErrorBadArgument = 0x08000001,
  /* The device registry does not have the entry. */
  kMPIOErrorServiceNotFound = 0x08000002,
  /* The driver refused the change. With kMPIOErrorResultCodeKey. */
  kMPIOErrorPropertyWriteFailed = 0x08000003,
  /* No path of the request has an identifier. */
  kMPIOErrorPathsLackIdentifiers = 0x08000004,
  /* Reserved: no function below stores it. */
  kMPIOErrorStatisticsUnavailable = 0x08000005,
  /* The device registry refused the registration. With kMPIOErrorResultCodeKey. */
  kMPIOErrorNotificationFailed = 0x08000006,
  /* Memory ran out, or there is no notification port or no queue. */
  kMPIOErrorNoResources = 0x08000007
};

/* ---- Keys and values: one constant string object each ---- */

/* Kinds of notification. The first two are reserved and never delivered. */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitStatusChangedNotification;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitInvalidatedNotification;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitAppearedNotification;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathAppearedNotification;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitDisappearedNotification;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathDisappearedNotification;

/* Properties of a logical unit. */
OB_EXPORT extern const ObStringRef
    kMPIOLogicalUnitIdentifierKey;                           /* string: upper-case hexadecimal */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitAliasKey; /* string; absent if it has none */
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
    kMPIOLogicalUnitPathAccessStateKey; /* equal to the path state key */

/* Path state values, named after the asymmetric access states of SPC. Unavailable also stands for
 * every state without a value of its own, such as offline and transitioning. */
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

/* Statistics of a logical unit: the date of the read, and unsigned 64-bit counters of bytes and
 * commands since the device appeared. Sent bytes go to the storage, received bytes come from it.
 * The total is their sum modulo 2 to the power 64. */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitStatisticsSamplingDateKey;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitStatisticsBytesSentKey;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitStatisticsBytesReceivedKey;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitStatisticsTotalBytesKey;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitStatisticsTotalCommandsKey;

/* Statistics of a path: the same, and a number, the driver's state byte. Bits 0 to 3 are the
 * asymmetric access state of SPC (0 active/optimized, 1 active/non-optimized, 2 standby,
 * 3 unavailable; other values as in SPC). Bit 7 is set if the path is disabled. */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathStatisticsSamplingDateKey;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathStatisticsPathStateKey;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathStatisticsBytesSentKey;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathStatisticsBytesReceivedKey;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathStatisticsTotalBytesKey;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathStatisticsTotalCommandsKey;

/* In the user information of an error. number: the platform's result code. On Linux it is a
 * negative error number, such as -114 for EALREADY. */
OB_EXPORT extern const ObStringRef kMPIOErrorResultCodeKey;

/* ---- Kinds of handles ---- */

OB_EXPORT ObTypeID MPIOLogicalUnitGetTypeID(void);
OB_EXPORT ObTypeID MPIOLogicalUnitPathGetTypeID(void);

/* ---- Queries and changes ---- */

/* Looks for changes and returns all logical units, in no particular order. Errors: NULL after the
 * library's teardown at exit. */
OB_EXPORT ObArrayRef MPIOCopyLogicalUnits(void);
/* Reads and returns the properties of a unit that is present. */
OB_EXPORT ObDictionaryRef MPIOLogicalUnitCopyProperties(MPIOLogicalUnitRef unit);
/* Looks for changes of the unit and returns the paths that this handle holds. The paths of a unit
 * that is gone stay in its handle. */
OB_EXPORT ObArrayRef MPIOLogicalUnitCopyPaths(MPIOLogicalUnitRef unit);
/* Looks for changes of the unit and returns the properties of the path as last read. */
OB_EXPORT ObDictionaryRef MPIOLogicalUnitPathCopyProperties(MPIOLogicalUnitPathRef path);
/* Returns the unit of a path that is present, or NULL if that unit is gone. */
OB_EXPORT MPIOLogicalUnitRef MPIOLogicalUnitPathCopyLogicalUnit(MPIOLogicalUnitPathRef path);

/* Asks the driver to use a path that is present. */
OB_EXPORT bool MPIOLogicalUnitPathEnable(MPIOLogicalUnitPathRef path, ObErrorRef* error);
/* Asks the driver not to use a path, present or not. */
OB_EXPORT bool MPIOLogicalUnitPathDisable(MPIOLogicalUnitPathRef path, ObErrorRef* error);
/* Do the same for all paths of a unit that is present, in one request. */
OB_EXPORT bool MPIOLogicalUnitEnableAllPaths(MPIOLogicalUnitRef unit, ObErrorRef* error);
OB_EXPORT bool MPIOLogicalUnitDisableAllPaths(MPIOLogicalUnitRef unit, ObErrorRef* error);

/* algorithm: one of the kMPIOLogicalUnitAlgorithm values, compared as text. Errors: false, without
 * an error object, for any other text. */
OB_EXPORT bool MPIOLogicalUnitSetAlgorithm(MPIOLogicalUnitRef unit, ObStringRef algorithm,
                                           ObErrorRef* error);
/* newBatchCount: the number of requests on one path, 1 to 4,294,967,295, before round robin uses
 * the next. */
OB_EXPORT bool MPIOLogicalUnitSetBatchCount(MPIOLogicalUnitRef unit, uint32_t newBatchCount,
                                            ObErrorRef* error);

/* Returns the counters of a unit that is present. All are 0 if they cannot be read. */
OB_EXPORT ObDictionaryRef MPIOLogicalUnitCopyStatistics(MPIOLogicalUnitRef unit);
/* Returns the counters of a path that is present. Errors: NULL if they cannot be read. */
OB_EXPORT ObDictionaryRef MPIOLogicalUnitPathCopyStatistics(MPIOLogicalUnitPathRef path);

/* Return the handle for an entry of the registry, or NULL if it is no known unit or path. */
OB_EXPORT MPIOLogicalUnitRef MPIOCopyLogicalUnitForService(MPIORegistryObject service);
OB_EXPORT MPIOLogicalUnitPathRef MPIOCopyLogicalUnitPathForService(MPIORegistryObject service);

/* ---- Notifications: units and paths that appear and disappear ---- */

/*
 * kind is one of the constants above, to be compared by identity or as text. handle is a logical
 * unit or a path, which is valid during the call: retain it to keep it.
 * A new registration first receives every unit and path that is present, as appeared. A
 * disappearance comes with the handle that the client knows. A call may use every function of this
 * interface, and may end its own registration.
 */

/* The beginning of the client's block (see ob.h). context is NULL. */
typedef struct MPIONotificationBlock MPIONotificationBlock;
struct MPIONotificationBlock {
  void (*invoke)(MPIONotificationBlock* block, ObStringRef kind, ObTypeRef handle, void* context);
};
typedef void (*MPIONotificationCallback)(ObStringRef kind, ObTypeRef handle, void* context);
/* A registration on a dispatch queue. It is no object: MPIONotificationDestroy ends it. */
typedef struct MPIONotification* MPIONotificationRef;

/*
 * Registers the block, to be called on the queue.
 * Ownership: the block is neither copied nor freed. It must live until the registration is
 * destroyed and the queue drained.
 * Errors: stores NULL in *error first. If it returns NULL, *error is kMPIOErrorNoResources,
 * kMPIOErrorServiceNotFound or kMPIOErrorNotificationFailed. Unlike every other error of this
 * interface it belongs to the caller's pool (ObPoolCreate) and must not be released. A failure
 * undoes nothing: calls that were queued before it still come, so drain the queue before the block
 * is freed.
 */
OB_EXPORT MPIONotificationRef MPIONotificationCreateWithDispatchQueue(MPIONotificationBlock* block,
                                                                      ObDispatchQueueRef queue,
                                                                      ObErrorRef* error);
/* Ends the registration. Does not wait for a call in progress on the queue: the block is called no
 * more once the queue has been drained after this. Ignores NULL and anything else that is no
 * registration. The pointer may name a newer registration afterwards, so destroy it only once.
 * Thread safety: any thread, also within a call of the block. */
OB_EXPORT void MPIONotificationDestroy(MPIONotificationRef notification);

/*
 * Returns a run-loop source. Adding it to a loop registers: the add itself calls the callback for
 * every unit and path that is present, and later calls come from that loop in that mode. Adding it
 * to a second loop or mode registers nothing more. Removing it from any of them, or invalidating
 * it, ends the registration. A removed source may be added again.
 * Errors: NULL if memory ran out. An add that cannot register fails silently.
 * Thread safety: any thread may retain and release the source.
 */
OB_EXPORT ObRunLoopSourceRef MPIONotificationCreateRunLoopSource(MPIONotificationCallback callback,
                                                                 void* context);

#ifdef __cplusplus
}
#endif

#endif
