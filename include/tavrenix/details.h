/*
 * details.h - libtavrenix: what a host knows of its storage beyond mpio.h.
 *
 * Conventions (those of ob.h and mpio.h hold as well)
 *  1. Each function returns a dictionary, which the caller releases. Its keys are those that its
 *     section below declares.
 *  2. A key is absent if the host does not know the fact or the device does not have it. The
 *     library guesses nothing. Keys and values mean the same on every host.
 *  3. Each call reads the states from the host again. It reads nothing from the storage itself.
 *  4. Strings have the kernel's words. They come from devices and from configuration: escape them
 *     before they reach a terminal, a document or a query.
 */
#ifndef TAVRENIX_DETAILS_H
#define TAVRENIX_DETAILS_H

#include <tavrenix/mpio.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Version ---- */

/* The version of these headers: 10000 * major + 100 * minor + patch. */
#define MPIO_VERSION 100
/* The version of the library that is loaded, in the same form. */
OB_EXPORT uint32_t MPIOGetVersion(void);

/* ---- A logical unit ---- */

OB_EXPORT extern const ObStringRef kMPIOLogicalUnitDetailDeviceKey; /* string: "dm-3" */
/* string: the name below /dev/mapper */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitDetailMapNameKey;
/* string: the whole WWID, with its first digit, which stands for the kind of identifier */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitDetailWWIDKey;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitDetailSizeKey; /* number: bytes */
/* string: the driver's own name of the path selector, even if mpio.h has no algorithm value for it;
 * absent if the groups of paths have different selectors */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitDetailSelectorKey;
/* boolean: requests are queued (true) or fail (false) while no path is usable */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitDetailQueueingKey;
/* string: the hardware handler, such as "alua"; absent if there is none */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitDetailHardwareHandlerKey;
/* boolean: the map is suspended and holds new requests back */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitDetailSuspendedKey;
/* number: mounts, holders and programs that have the unit open */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitDetailOpenCountKey;
/* array of strings in order of priority, one for each group of paths: "active", "enabled" or
 * "disabled" */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitDetailGroupStatesKey;

/* Returns the details of the unit. Errors: NULL if the unit is not present, if the host knows
 * nothing of it, or if memory ran out. */
OB_EXPORT ObDictionaryRef MPIOLogicalUnitCopyDetails(MPIOLogicalUnitRef unit);

/* ---- A path ---- */

OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathDetailDeviceKey;       /* string: "sdc" */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathDetailDeviceNumberKey; /* string: "8:32" */
/* string: host, channel, target and logical unit number, "3:0:1:5" */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathDetailAddressKey;
/* number: the path's group, as a position in the unit's array of group states, counted from 1 */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathDetailGroupKey;
/* string: "active" if the driver may use the path, "failed" if it must not */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathDetailDriverStateKey;
/* number: how often the driver has failed the path since the table was loaded */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathDetailFailureCountKey;
/* string: the disk's own state, "running" or "offline" */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathDetailDeviceStateKey;
/* string: the asymmetric access state of SPC that the array reports, in the kernel's words, such as
 * "active/optimized" or "standby" */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathDetailAccessStateKey;
/* strings: the ports of the host and of the array that the path connects. Each is a world wide name
 * or SAS address of 16 hexadecimal digits, or an iSCSI name. */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathDetailHostPortKey;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathDetailTargetPortKey;
/* numbers: requests that the disk has ended with an error, and requests that have timed out, since
 * the kernel found the disk */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathDetailErrorCountKey;
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathDetailTimeoutCountKey;
/* number: requests that the disk has not answered yet */
OB_EXPORT extern const ObStringRef kMPIOLogicalUnitPathDetailInFlightKey;

/* Returns the details of the path. Errors: NULL if the path is not present, if the host knows
 * nothing of it, or if memory ran out. */
OB_EXPORT ObDictionaryRef MPIOLogicalUnitPathCopyDetails(MPIOLogicalUnitPathRef path);

/* ---- The host ---- */

/* string: "linux", or "simulation" for a host whose storage is an image file */
OB_EXPORT extern const ObStringRef kMPIOHostDetailBackingKey;
OB_EXPORT extern const ObStringRef kMPIOHostDetailDriverPresentKey; /* boolean */
/* boolean: the caller may ask the driver. If false, the library finds no unit, even if there are
 * some. */
OB_EXPORT extern const ObStringRef kMPIOHostDetailPermittedKey;
OB_EXPORT extern const ObStringRef kMPIOHostDetailKernelReleaseKey; /* string: "6.1.0-18-amd64" */
/* number: another one after units, paths or tables have changed. It may also become smaller. */
OB_EXPORT extern const ObStringRef kMPIOHostDetailGenerationKey;

/* Returns the details of the host. Errors: NULL only if memory ran out. */
OB_EXPORT ObDictionaryRef MPIOHostCopyDetails(void);

/* Makes the next MPIOCopyLogicalUnits list all units anew. A program that reads units one by one
 * calls it if the generation has moved meanwhile: a query of one unit renews that unit alone, and
 * all others then stay as they were until the generation moves again. */
OB_EXPORT void MPIOHostRefresh(void);

#ifdef __cplusplus
}
#endif

#endif
