// Prints what the records are, for the program that writes their Python classes.
#include <cstdio>

#include "python/inventory_access.h"

int main() {
  int status = 0;
  char* const text = access_describe(&status);
  if (text != nullptr) std::fputs(text, status == 0 ? stdout : stderr);
  access_release(text);
  return status == 0 ? 0 : 1;
}
