/*
 * ob.h - the object runtime under libtavrenix: reference-counted, immutable objects for C.
 *
 * Conventions
 *  1. Every object is an opaque reference. ObTypeRef stands for any of them; each kind has a type
 * of its own as well. NULL is no object.
 *  2. A function whose name contains Create or Copy returns a reference that the caller owns and
 *     gives back with ObRelease. A function whose name contains Get returns something borrowed: it
 *     lives as long as the object that it came from.
 *  3. Values are immutable. Any thread may read, retain and release any of them at any time.
 *  4. Nothing is thrown and nothing is printed. Failure is NULL, false or 0.
 *  5. Accessors take a reference of their own kind. What they do with another kind of object is to
 *     report absence: NULL, false or 0. NULL as an argument reports absence as well.
 */
#ifndef TAVRENIX_OB_H
#define TAVRENIX_OB_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define OB_EXPORT __attribute__((visibility("default")))
#else
#define OB_EXPORT
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Any object. */
typedef const void* ObTypeRef;
/* Tells the kinds of objects apart. 0 is the kind of no object. */
typedef uintptr_t ObTypeID;

typedef const struct ObString* ObStringRef;
typedef const struct ObNumber* ObNumberRef;
typedef const struct ObBoolean* ObBooleanRef;
typedef const struct ObData* ObDataRef;
typedef const struct ObDate* ObDateRef;
typedef const struct ObArray* ObArrayRef;
typedef const struct ObDictionary* ObDictionaryRef;
typedef const struct ObError* ObErrorRef;
typedef struct ObPool* ObPoolRef;

/* ---- Every object ---- */

/* Takes one more reference and returns object. */
OB_EXPORT ObTypeRef ObRetain(ObTypeRef object);
/* Gives one reference back; the last one frees the object. NULL is ignored. */
OB_EXPORT void ObRelease(ObTypeRef object);
/* The kind of object, 0 for NULL. */
OB_EXPORT ObTypeID ObGetTypeID(ObTypeRef object);
/* Same kind and same value. Handles are equal only to themselves; two NULLs are equal. */
OB_EXPORT bool ObEqual(ObTypeRef a, ObTypeRef b);

/* ---- Strings: UTF-8 text, zero bytes inside allowed ---- */

OB_EXPORT ObTypeID ObStringGetTypeID(void);
/* A string of the zero-terminated text. NULL where it is not UTF-8. */
OB_EXPORT ObStringRef ObStringCreateWithUTF8(const char* text);
/* The text, with a zero byte behind it. */
OB_EXPORT const char* ObStringGetUTF8(ObStringRef string);
/* Bytes of the text, without the zero byte behind it. */
OB_EXPORT size_t ObStringGetLength(ObStringRef string);
/* Literal comparison, byte by byte: negative, 0 or positive. NULL comes before every string. */
OB_EXPORT int ObStringCompare(ObStringRef a, ObStringRef b);

/* ---- Numbers: 64-bit signed, 64-bit unsigned or double ---- */

OB_EXPORT ObTypeID ObNumberGetTypeID(void);
/* Each of the two stores the value and returns true where it is represented exactly; otherwise
 * false, and *value is left alone. */
OB_EXPORT bool ObNumberGetInt64(ObNumberRef number, int64_t* value);
OB_EXPORT bool ObNumberGetUInt64(ObNumberRef number, uint64_t* value);
/* The nearest double. False, and *value left alone, only where number is none. */
OB_EXPORT bool ObNumberGetDouble(ObNumberRef number, double* value);

/* ---- Booleans: two shared objects, so they can be compared by identity ---- */

OB_EXPORT extern const ObBooleanRef kObBooleanTrue;
OB_EXPORT extern const ObBooleanRef kObBooleanFalse;
OB_EXPORT ObTypeID ObBooleanGetTypeID(void);
OB_EXPORT bool ObBooleanGetValue(ObBooleanRef boolean);

/* ---- Data: a string of bytes ---- */

OB_EXPORT ObTypeID ObDataGetTypeID(void);
OB_EXPORT const uint8_t* ObDataGetBytes(ObDataRef data);
OB_EXPORT size_t ObDataGetLength(ObDataRef data);

/* ---- Dates ---- */

OB_EXPORT ObTypeID ObDateGetTypeID(void);
/* Nanoseconds since 1970-01-01 00:00:00 UTC, leap seconds not counted. */
OB_EXPORT int64_t ObDateGetUnixNanoseconds(ObDateRef date);

/* ---- Arrays ---- */

OB_EXPORT ObTypeID ObArrayGetTypeID(void);
OB_EXPORT size_t ObArrayGetCount(ObArrayRef array);
/* The element, borrowed from the array. NULL where index is not below the count. */
OB_EXPORT ObTypeRef ObArrayGetValueAtIndex(ObArrayRef array, size_t index);
typedef void (*ObArrayApplier)(ObTypeRef value, void* context);
/* Calls apply for each element in order. */
OB_EXPORT void ObArrayApplyFunction(ObArrayRef array, ObArrayApplier apply, void* context);

/* ---- Dictionaries: from strings to objects ---- */

OB_EXPORT ObTypeID ObDictionaryGetTypeID(void);
OB_EXPORT size_t ObDictionaryGetCount(ObDictionaryRef dictionary);
/* The value under key (compared as text), borrowed from the dictionary. NULL where there is none.
 */
OB_EXPORT ObTypeRef ObDictionaryGetValue(ObDictionaryRef dictionary, ObStringRef key);
typedef void (*ObDictionaryApplier)(ObStringRef key, ObTypeRef value, void* context);
/* Calls apply for each pair, in the order in which the dictionary was filled. */
OB_EXPORT void ObDictionaryApplyFunction(ObDictionaryRef dictionary, ObDictionaryApplier apply,
                                         void* context);

/* ---- Errors ---- */

OB_EXPORT ObTypeID ObErrorGetTypeID(void);
/* The message itself stands in the domain. */
OB_EXPORT ObStringRef ObErrorGetDomain(ObErrorRef error);
/* One of the kMPIOError codes of mpio.h. */
OB_EXPORT int64_t ObErrorGetCode(ObErrorRef error);
/* Further facts, such as the platform's result code. NULL where there are none. */
OB_EXPORT ObDictionaryRef ObErrorGetUserInfo(ObErrorRef error);
/* One line for a person: the message and the numbers. Owned by the caller. */
OB_EXPORT ObStringRef ObErrorCopyDescription(ObErrorRef error);

/* ---- Pools ---- */

/*
 * A pool holds the temporary objects that calls on this thread make until it is drained. Library
 * calls bring their own. A client needs one only around a call that says that its result lives in
 * the caller's pool; without one such a result lives until the thread ends. A pool belongs to the
 * thread that made it. NULL where memory ran out.
 */
OB_EXPORT ObPoolRef ObPoolCreate(void);
/* Frees the pool and what it holds. NULL is ignored. */
OB_EXPORT void ObPoolDrain(ObPoolRef pool);

#ifdef __cplusplus
}
#endif

#endif
