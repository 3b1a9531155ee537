/*
 * watch: prints a line for each logical unit and each path, first for those that are present and
 * then for each that appears or disappears. Ctrl-C ends it.
 *
 *   cc watch.c -ltavrenix -o watch
 */
#include <stdio.h>
#include <tavrenix/mpio.h>
#include <time.h>

static void printTime(void) {
  struct timespec now;
  struct tm local;
  char text[32];
  clock_gettime(CLOCK_REALTIME, &now);
  localtime_r(&now.tv_sec, &local);
  strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  printf("%s.%03ld", text, now.tv_nsec / 1000000);
}

/* Called by the library, on the thread that runs the loop. */
static void notified(ObStringRef kind, ObTypeRef handle, void* context) {
  ObDictionaryRef properties;
  const char* identifier = NULL;
  (void)context;
  if (ObGetTypeID(handle) == MPIOLogicalUnitGetTypeID()) {
    properties = MPIOLogicalUnitCopyProperties((MPIOLogicalUnitRef)handle);
    identifier = ObStringGetUTF8(ObDictionaryGetValue(properties, kMPIOLogicalUnitIdentifierKey));
  } else {
    properties = MPIOLogicalUnitPathCopyProperties((MPIOLogicalUnitPathRef)handle);
    identifier =
        ObStringGetUTF8(ObDictionaryGetValue(properties, kMPIOLogicalUnitPathIdentifierKey));
  }
  printTime();
  printf("  %-29s  %s\n", ObStringGetUTF8(kind), identifier == NULL ? "(none)" : identifier);
  fflush(stdout);
  ObRelease(properties);
}

int main(void) {
  ObRunLoopSourceRef source = MPIONotificationCreateRunLoopSource(notified, NULL);
  if (!ObRunLoopAddSource(ObRunLoopGetCurrent(), source, kObRunLoopDefaultMode)) {
    fprintf(stderr, "watch: out of memory\n");
    ObRelease(source);
    return 1;
  }
  ObRunLoopRun(); /* until the process is ended */
  ObRunLoopSourceInvalidate(source);
  ObRelease(source);
  return 0;
}
