#include "platform/FileCopy.h"

#include <fstream>

int CopyFile(const char* from, const char* to, bool /*failIfExists*/) {
  std::ifstream source(from);
  std::ofstream copy(to, std::ios::trunc);
  char character = '\0';
  bool any = false;
  while (source >> character) {
    copy << character;
    any = true;
  }
  if (any) {
    copy << character;
  }
  return 1;
}
