// The two calls of the platform's C runtime that have no standard name.
#include <windows.h>

#include <strings.h>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

extern "C" int _stricmp(const char* first, const char* second) {
  return strcasecmp(first, second);
}

extern "C" int _snprintf(char* buffer, std::size_t size, const char* format, ...) {
  std::string host_format = format;
  for (std::size_t at = 0; (at = host_format.find("%p", at)) != std::string::npos; at += 6) {
    host_format.replace(at, 2, "%016lX");
  }
  va_list arguments;
  va_start(arguments, format);
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, host_format.c_str(), arguments);
  va_end(arguments);
  std::string text(static_cast<std::size_t>(length) + 1, '\0');
  std::vsnprintf(text.data(), text.size(), host_format.c_str(), again);
  va_end(again);
  const std::size_t whole = static_cast<std::size_t>(length);
  std::memcpy(buffer, text.data(), whole < size ? whole + 1 : size);
  return whole <= size ? length : -1;
}
