/* What the kernel starts in the place of an ARM program: the emulator, with the folder that the program's
 * libraries are in. The emulator itself would look for that in the environment, which tests clear. The kernel
 * passes the program's path, then its own first word, then the others. */
#include <stdlib.h>
#include <unistd.h>

int main(int argc, char** argv) {
  enum { OWN_WORDS = 6 };
  if (argc < 3) return 127;
  char** const words = calloc((size_t)argc + OWN_WORDS, sizeof *words);
  if (words == NULL) return 127;
  char* const own[OWN_WORDS] = {"qemu-arm", "-L", SYSROOT, "-0", argv[2], argv[1]};
  for (int i = 0; i < OWN_WORDS; ++i) words[i] = own[i];
  for (int i = 3; i < argc; ++i) words[OWN_WORDS + i - 3] = argv[i];
  execv("/usr/bin/qemu-arm", words);
  return 127;
}
