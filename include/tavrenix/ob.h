/*
 * ob.h - the object runtime under libtavrenix: reference-counted, immutable objects for C.
 *
 * Conventions
 *  1. Every object is an opaque reference. ObTypeRef stands for any of them; each kind has a type
 *     of its own as well. NULL is no object.
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

/* ---- Blocks ---- */

/*
 * A block is a structure of the client's own whose first member is a pointer to its invoke
 * function; the function is called with the block itself as first argument. A function that takes a
 * block declares the structure for it, and stores the pointer as given: it neither copies nor frees
 * the block. block.hpp makes one of a C++ lambda.
 */

/* ---- Dispatch queues: tasks run one after the other, on a thread of the queue's own ---- */

typedef struct ObDispatchQueue* ObDispatchQueueRef;
typedef void (*ObDispatchFunction)(void* context);

OB_EXPORT ObTypeID ObDispatchQueueGetTypeID(void);
/* A queue, owned by the caller. label (may be NULL) names its thread to debuggers. NULL where no
 * thread can be started. Releasing the last reference does not wait, and a task may do it: what is
 * queued still runs, then the thread ends. The thread takes no signals. */
OB_EXPORT ObDispatchQueueRef ObDispatchQueueCreate(const char* label);
/* Queues function(context), from any thread. Each task has a pool around it. False, and nothing is
 * queued, where memory ran out or queue is none. */
OB_EXPORT bool ObDispatchAsync(ObDispatchQueueRef queue, ObDispatchFunction function,
                               void* context);
/* Waits until everything queued before the call has run. False, at once, in a task of the queue
 * itself, where that would never be. */
OB_EXPORT bool ObDispatchQueueDrain(ObDispatchQueueRef queue);

/* ---- Run loops: a thread waits, and sources that have been signalled are performed on it ---- */

typedef struct ObRunLoop* ObRunLoopRef;
typedef struct ObRunLoopSource* ObRunLoopSourceRef;

/* What a source calls. Every function may be NULL. None is called with a lock held, so each may
 * call anything. */
typedef struct ObRunLoopSourceContext {
  void* info;                  /* the argument of all of them */
  void (*retain)(void* info);  /* once, when the source is created */
  void (*release)(void* info); /* once, when the source is freed, on whatever thread that is */
  /* The source was added to, or taken out of, a loop and mode: on the thread that does it, within
   * the call. */
  void (*schedule)(void* info, ObRunLoopRef loop, ObStringRef mode);
  void (*cancel)(void* info, ObRunLoopRef loop, ObStringRef mode);
  /* The source was signalled: on the thread of a loop that it is in. */
  void (*perform)(void* info);
} ObRunLoopSourceContext;

/* The mode for clients that need no other. */
OB_EXPORT extern const ObStringRef kObRunLoopDefaultMode;

OB_EXPORT ObTypeID ObRunLoopGetTypeID(void);
OB_EXPORT ObTypeID ObRunLoopSourceGetTypeID(void);

/* The loop of this thread, made when first asked for. It lives as long as the thread, and longer
 * where it is retained; its sources are removed when the thread ends. NULL where it cannot be made.
 */
OB_EXPORT ObRunLoopRef ObRunLoopGetCurrent(void);

/* A source, owned by the caller. *context is copied. NULL where memory ran out. */
OB_EXPORT ObRunLoopSourceRef ObRunLoopSourceCreate(const ObRunLoopSourceContext* context);
/* Has the source performed once by one of the loops that it is in, or will be in, and wakes them.
 * Any thread, as retain and release. Signals that come before it is performed count as one. */
OB_EXPORT void ObRunLoopSourceSignal(ObRunLoopSourceRef source);
/* Takes the source out of every loop and mode. It can never be added again. */
OB_EXPORT void ObRunLoopSourceInvalidate(ObRunLoopSourceRef source);
OB_EXPORT bool ObRunLoopSourceIsValid(ObRunLoopSourceRef source);

/* Adds and removes may be made on any thread; for one and the same source they, and its
 * invalidation, are to be serialised. The loop holds the source while it is in it. */
/* True where the source is in the mode afterwards; a second time changes nothing. False for an
 * invalid source, a loop whose thread has ended, or where memory ran out. */
OB_EXPORT bool ObRunLoopAddSource(ObRunLoopRef loop, ObRunLoopSourceRef source, ObStringRef mode);
/* False where the source was not in the mode. */
OB_EXPORT bool ObRunLoopRemoveSource(ObRunLoopRef loop, ObRunLoopSourceRef source,
                                     ObStringRef mode);
OB_EXPORT bool ObRunLoopContainsSource(ObRunLoopRef loop, ObRunLoopSourceRef source,
                                       ObStringRef mode);

typedef enum ObRunLoopResult {
  kObRunLoopFinished = 1, /* no source is in the mode */
  kObRunLoopStopped = 2,
  kObRunLoopTimedOut = 3
} ObRunLoopResult;

/* Performs the default mode's sources on this thread until the loop is stopped or has none. */
OB_EXPORT void ObRunLoopRun(void);
/* The same for a mode and for so many seconds (0 or less: what is due, without waiting). It may be
 * called within a callback; a stop ends the innermost. */
OB_EXPORT ObRunLoopResult ObRunLoopRunInMode(ObStringRef mode, double seconds);
/* Ends the run that is on, or the next one where none is. Any thread. */
OB_EXPORT void ObRunLoopStop(ObRunLoopRef loop);
/* Makes a waiting loop look again. Any thread. */
OB_EXPORT void ObRunLoopWakeUp(ObRunLoopRef loop);

/* For clients with an event loop of their own: wait until the descriptor (for poll, epoll, GLib;
 * never read, written or closed by the client) is readable, then call ObRunLoopPerformDue on the
 * loop's own thread for each mode that sources were added in. It is -1 for no loop. */
OB_EXPORT int ObRunLoopGetDescriptor(ObRunLoopRef loop);
/* Performs what is due in the mode of this thread's loop, without waiting. False where nothing was.
 */
OB_EXPORT bool ObRunLoopPerformDue(ObStringRef mode);

#ifdef __cplusplus
}
#endif

#endif
