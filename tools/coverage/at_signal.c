/* Linked into the programs of a coverage build. Writes the counts also if a signal ends the
 * process, as tests end programs that watch, and if the program aborts after a fatal fault. */
#include <signal.h>
#include <stddef.h>

int __llvm_profile_write_file(void) __attribute__((weak));

static void writeAndEnd(int number) {
  if (__llvm_profile_write_file != NULL) __llvm_profile_write_file();
  raise(number); /* SA_RESETHAND has put the default handler back: this ends the process */
}

__attribute__((constructor)) static void watchSignals(void) {
  static const int numbers[] = {SIGABRT, SIGINT, SIGTERM};
  for (size_t i = 0; i < sizeof numbers / sizeof *numbers; ++i) {
    struct sigaction action = {0};
    action.sa_handler = writeAndEnd;
    action.sa_flags = (int)SA_RESETHAND;
    sigaction(numbers[i], &action, NULL);
  }
}
