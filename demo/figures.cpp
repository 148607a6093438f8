#include "figures.h"

#include <windows.h>
// GL's header needs the one above.
#include <GL/gl.h>

#include <vector>

double count_switches() {
  const HMODULE driver = GetModuleHandleA("opengl32sys.dll");
  const FARPROC found = driver ? GetProcAddress(driver, "OswDriverSwitchCount") : nullptr;
  if (!found) return -1;
  auto* count = reinterpret_cast<unsigned long long (*)()>(reinterpret_cast<void*>(found));
  return static_cast<double>(count());
}

double busy_seconds() {
  FILETIME made, ended, kernel, user;
  GetProcessTimes(GetCurrentProcess(), &made, &ended, &kernel, &user);
  const auto seconds = [](const FILETIME& time) {
    return 429.4967296 * time.dwHighDateTime + 1e-7 * time.dwLowDateTime;
  };
  return seconds(kernel) + seconds(user);
}

void wait_for_picture(int width, int height) {
  std::vector<unsigned char> pixels(static_cast<size_t>(width) * static_cast<size_t>(height) * 4);
  glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
}
