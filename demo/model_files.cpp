#include "model_files.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

bool read_file(const std::string& path, std::string* bytes, std::string* why) {
  FILE* file = fopen(path.c_str(), "rb");
  if (!file) {
    *why = std::string("cannot be read: ") + strerror(errno);
    return false;
  }
  char buffer[65536];
  for (size_t count; (count = fread(buffer, 1, sizeof buffer, file)) > 0;) bytes->append(buffer, count);
  const bool good = !ferror(file);
  fclose(file);
  if (!good) *why = "cannot be read to its end";
  return good;
}
