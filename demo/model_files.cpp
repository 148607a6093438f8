#include "model_files.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

bool read_file(const std::string& path, std::string* bytes, std::string* why) {
  FILE* file = std::fopen(path.c_str(), "rb");
  if (!file) {
    *why = std::string("cannot be read: ") + std::strerror(errno);
    return false;
  }
  char buffer[65536];
  for (size_t count; (count = std::fread(buffer, 1, sizeof buffer, file)) > 0;) bytes->append(buffer, count);
  bool good = !std::ferror(file);
  std::fclose(file);
  if (!good) *why = "cannot be read to its end";
  return good;
}
