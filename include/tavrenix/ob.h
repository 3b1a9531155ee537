/*
 * ob.h - the object runtime under libtavrenix: reference-counted, immutable objects for C.
 *
 * Conventions
 *  1. A client sees an object as an opaque reference. ObTypeRef stands for every kind, and each
 *     kind has a type of its own as well. NULL stands for no object.
 *  2. Ownership: a function with Create or Copy in its name returns a reference that the caller
 *     owns and releases with ObRelease. A function with Get in its name returns a borrowed
 *     reference, which is valid as long as the object that it was read from.
 *  3. Thread safety: values are immutable. Any thread may read, retain and release them.
 *  4. Errors: no function throws or prints. A failed function returns NULL, false or 0.
 *  5. An accessor that gets NULL, or an object of another kind, returns NULL, false or 0.
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
/* The kind of an object. 0 is no kind. */
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

/* Takes one more reference and returns the object. */
OB_EXPORT ObTypeRef ObRetain(ObTypeRef object);
/* Releases one reference. Releasing the last one frees the object. Ignores NULL. */
OB_EXPORT void ObRelease(ObTypeRef object);
/* Returns the kind of the object, or 0 for NULL. */
OB_EXPORT ObTypeID ObGetTypeID(ObTypeRef object);
/* Returns true for two objects of the same kind and value, and for two NULLs. A handle is equal
 * only to itself. */
OB_EXPORT bool ObEqual(ObTypeRef a, ObTypeRef b);

/* ---- Strings: UTF-8 text, zero bytes inside allowed ---- */

OB_EXPORT ObTypeID ObStringGetTypeID(void);
/* Returns a string that holds a copy of the text. Errors: NULL if it is not UTF-8. */
OB_EXPORT ObStringRef ObStringCreateWithUTF8(const char* text);
/* Returns the text, borrowed from the string and followed by a zero byte. */
OB_EXPORT const char* ObStringGetUTF8(ObStringRef string);
/* Returns the length of the text in bytes, without the zero byte that follows it. */
OB_EXPORT size_t ObStringGetLength(ObStringRef string);
/* Compares byte by byte. Returns a negative number, 0 or a positive number if a is less than, equal
 * to or greater than b. NULL is less than every string. */
OB_EXPORT int ObStringCompare(ObStringRef a, ObStringRef b);

/* ---- Numbers: 64-bit signed, 64-bit unsigned or double ---- */

OB_EXPORT ObTypeID ObNumberGetTypeID(void);
/* Stores the value without its fraction and returns true. Returns false, and leaves *value alone,
 * for NaN and for a value that is out of range. */
OB_EXPORT bool ObNumberGetInt64(ObNumberRef number, int64_t* value);
OB_EXPORT bool ObNumberGetUInt64(ObNumberRef number, uint64_t* value);
/* Stores the nearest double and returns true. Fails only for an object that is no number. */
OB_EXPORT bool ObNumberGetDouble(ObNumberRef number, double* value);

/* ---- Booleans: two constant objects, which can be compared by identity ---- */

OB_EXPORT extern const ObBooleanRef kObBooleanTrue;
OB_EXPORT extern const ObBooleanRef kObBooleanFalse;
OB_EXPORT ObTypeID ObBooleanGetTypeID(void);
OB_EXPORT bool ObBooleanGetValue(ObBooleanRef boolean);

/* ---- Data: a string of bytes ---- */

OB_EXPORT ObTypeID ObDataGetTypeID(void);
/* Returns the bytes, borrowed from the data. */
OB_EXPORT const uint8_t* ObDataGetBytes(ObDataRef data);
/* Returns the number of bytes. */
OB_EXPORT size_t ObDataGetLength(ObDataRef data);

/* ---- Dates ---- */

OB_EXPORT ObTypeID ObDateGetTypeID(void);
/* Returns nanoseconds since 1970-01-01 00:00:00 UTC, leap seconds not counted. */
OB_EXPORT int64_t ObDateGetUnixNanoseconds(ObDateRef date);

/* ---- Arrays ---- */

OB_EXPORT ObTypeID ObArrayGetTypeID(void);
OB_EXPORT size_t ObArrayGetCount(ObArrayRef array);
/* Returns the element, borrowed from the array. NULL if the index is not below the count. */
OB_EXPORT ObTypeRef ObArrayGetValueAtIndex(ObArrayRef array, size_t index);
typedef void (*ObArrayApplier)(ObTypeRef value, void* context);
/* Calls apply for each element in order, on the calling thread. */
OB_EXPORT void ObArrayApplyFunction(ObArrayRef array, ObArrayApplier apply, void* context);

/* ---- Dictionaries: from strings to objects ---- */

OB_EXPORT ObTypeID ObDictionaryGetTypeID(void);
OB_EXPORT size_t ObDictionaryGetCount(ObDictionaryRef dictionary);
/* Returns the value under the key, borrowed from the dictionary, or NULL if there is none. Keys are
 * compared as text. */
OB_EXPORT ObTypeRef ObDictionaryGetValue(ObDictionaryRef dictionary, ObStringRef key);
typedef void (*ObDictionaryApplier)(ObStringRef key, ObTypeRef value, void* context);
/* Calls apply for each pair, in the order in which the dictionary was filled. */
OB_EXPORT void ObDictionaryApplyFunction(ObDictionaryRef dictionary, ObDictionaryApplier apply,
                                         void* context);

/* ---- Errors ---- */

OB_EXPORT ObTypeID ObErrorGetTypeID(void);
/* Returns the message, which this system keeps in the domain of an error. */
OB_EXPORT ObStringRef ObErrorGetDomain(ObErrorRef error);
/* Returns one of the kMPIOError codes of mpio.h. */
OB_EXPORT int64_t ObErrorGetCode(ObErrorRef error);
/* Returns further facts, such as the platform's result code, or NULL if there are none. */
OB_EXPORT ObDictionaryRef ObErrorGetUserInfo(ObErrorRef error);
/* Returns one line for a person: the message, the code and the result code. Errors: NULL if memory
 * ran out. */
OB_EXPORT ObStringRef ObErrorCopyDescription(ObErrorRef error);

/* ---- Pools ---- */

/*
 * A pool holds the temporary objects that calls on its thread make, until it is drained. A client
 * needs one only around a call whose result lives in the caller's pool. Without a pool such a
 * result lives until the thread ends.
 * Thread safety: a pool is drained on the thread that made it. Errors: NULL if memory ran out.
 */
OB_EXPORT ObPoolRef ObPoolCreate(void);
/* Frees the pool and releases its objects. Ignores NULL. */
OB_EXPORT void ObPoolDrain(ObPoolRef pool);

/* ---- Blocks ---- */

/*
 * A block is a structure of the client. Its first member points to its invoke function, which the
 * library calls with the block as first argument. The header of a function that takes a block
 * declares the structure to begin with. block.hpp makes a block of a C++ lambda.
 * Ownership: the library keeps the pointer and neither copies nor frees the block.
 */

/* ---- Dispatch queues: a thread of its own runs the tasks of a queue one after the other ---- */

typedef struct ObDispatchQueue* ObDispatchQueueRef;
typedef void (*ObDispatchFunction)(void* context);

OB_EXPORT ObTypeID ObDispatchQueueGetTypeID(void);
/* Returns a new queue. The label, which may be NULL, names its thread to debuggers. The thread
 * takes no signals. Errors: NULL if no thread can be started. Ownership: a task may release the
 * last reference. The release does not wait: the queued tasks still run, and then the thread ends.
 */
OB_EXPORT ObDispatchQueueRef ObDispatchQueueCreate(const char* label);
/* Queues the task function(context). Each task runs inside a pool of its own.
 * Thread safety: any thread. Errors: false, with nothing queued, if memory ran out. */
OB_EXPORT bool ObDispatchAsync(ObDispatchQueueRef queue, ObDispatchFunction function,
                               void* context);
/* Waits until every task that was queued before the call has run. Returns false at once in a task
 * of the queue, which would wait for itself. */
OB_EXPORT bool ObDispatchQueueDrain(ObDispatchQueueRef queue);

/* ---- Run loops: a thread waits in its loop, which performs its signalled sources ---- */

typedef struct ObRunLoop* ObRunLoopRef;
typedef struct ObRunLoopSource* ObRunLoopSourceRef;

/* The functions that a source calls. Each may be NULL, and may call every function of the library:
 * no lock is held around it. */
typedef struct ObRunLoopSourceContext {
  void* info;                  /* the argument of every function */
  void (*retain)(void* info);  /* called once, when the source is made */
  void (*release)(void* info); /* called once, by the thread that frees the source */
  /* Called when the source is added to, or removed from, a mode of a loop, on the thread and
   * within the call that adds or removes it. */
  void (*schedule)(void* info, ObRunLoopRef loop, ObStringRef mode);
  void (*cancel)(void* info, ObRunLoopRef loop, ObStringRef mode);
  /* Called after a signal, on the thread of a loop that the source is in. */
  void (*perform)(void* info);
} ObRunLoopSourceContext;

/* The mode of clients that need only one. */
OB_EXPORT extern const ObStringRef kObRunLoopDefaultMode;

OB_EXPORT ObTypeID ObRunLoopGetTypeID(void);
OB_EXPORT ObTypeID ObRunLoopSourceGetTypeID(void);

/* Returns the loop of this thread. The first call makes it. The end of the thread removes its
 * sources and releases it. Errors: NULL if it cannot be made. */
OB_EXPORT ObRunLoopRef ObRunLoopGetCurrent(void);

/* Returns a new source, which copies *context. Errors: NULL if memory ran out. */
OB_EXPORT ObRunLoopSourceRef ObRunLoopSourceCreate(const ObRunLoopSourceContext* context);
/* Makes one of the loops that the source is in, or will be in, perform it once, and wakes these
 * loops. Several signals before the source is performed count as one. Thread safety: any thread. */
OB_EXPORT void ObRunLoopSourceSignal(ObRunLoopSourceRef source);
/* Removes the source from every loop and mode. It can never be added again. */
OB_EXPORT void ObRunLoopSourceInvalidate(ObRunLoopSourceRef source);
OB_EXPORT bool ObRunLoopSourceIsValid(ObRunLoopSourceRef source);

/* Thread safety: any thread may add and remove. The client serialises the calls that add, remove
 * and invalidate one source. Ownership: a loop retains the sources that are in it. */

/* Adds the source to the mode. Returns true if it is in the mode afterwards, also if it was there
 * before. Errors: false for an invalid source, for a loop whose thread has ended, and if memory ran
 * out. */
OB_EXPORT bool ObRunLoopAddSource(ObRunLoopRef loop, ObRunLoopSourceRef source, ObStringRef mode);
/* Removes the source from the mode. Returns false if it was not there. */
OB_EXPORT bool ObRunLoopRemoveSource(ObRunLoopRef loop, ObRunLoopSourceRef source,
                                     ObStringRef mode);
OB_EXPORT bool ObRunLoopContainsSource(ObRunLoopRef loop, ObRunLoopSourceRef source,
                                       ObStringRef mode);

typedef enum ObRunLoopResult {
  kObRunLoopFinished = 1, /* no source is in the mode */
  kObRunLoopStopped = 2,  /* ObRunLoopStop was called */
  kObRunLoopTimedOut = 3  /* the seconds have passed */
} ObRunLoopResult;

/* Performs the sources of the default mode on this thread until the loop is stopped or has none. */
OB_EXPORT void ObRunLoopRun(void);
/* Does the same for one mode and for that many seconds. With 0 seconds or less, performs the
 * sources that are due and does not wait. A callback may call it; a stop ends the innermost run. */
OB_EXPORT ObRunLoopResult ObRunLoopRunInMode(ObStringRef mode, double seconds);
/* Ends the current run, or the next one if there is none. Thread safety: any thread. */
OB_EXPORT void ObRunLoopStop(ObRunLoopRef loop);
/* Makes a waiting loop look for due sources again. Thread safety: any thread. */
OB_EXPORT void ObRunLoopWakeUp(ObRunLoopRef loop);

/* Returns a descriptor for clients with an event loop of their own, such as poll, epoll or GLib: if
 * it is readable, call ObRunLoopPerformDue on the loop's thread for each mode that has sources. The
 * client never reads, writes or closes the descriptor. Returns -1 for no loop. */
OB_EXPORT int ObRunLoopGetDescriptor(ObRunLoopRef loop);
/* Performs the sources of the mode that are due on this thread's loop and does not wait. Returns
 * false if none was due. */
OB_EXPORT bool ObRunLoopPerformDue(ObStringRef mode);

#ifdef __cplusplus
}
#endif

#endif
