#include "switches.h"

namespace {

// A second window of the first one's class and pixel format, and a context that has been current on it.
HGLRC make_second(HDC dc) {
  const HWND window = CreateWindowA("bench_calls", "", WS_POPUP | WS_VISIBLE, 0, 0, 64, 64, nullptr, nullptr,
                                    GetModuleHandleA(nullptr), nullptr);
  const HDC second_dc = GetDC(window);
  PIXELFORMATDESCRIPTOR format = {};
  const int number = GetPixelFormat(dc);
  DescribePixelFormat(dc, number, sizeof format, &format);
  if (!window || !SetPixelFormat(second_dc, number, &format)) return nullptr;
  const HGLRC context = wglCreateContext(second_dc);
  return context && wglMakeCurrent(second_dc, context) ? context : nullptr;
}

unsigned long long count_switches() {
  const FARPROC found = GetProcAddress(GetModuleHandleA("opengl32sys.dll"), "OswDriverSwitchCount");
  return found ? reinterpret_cast<unsigned long long (*)()>(reinterpret_cast<void*>(found))() : 0;
}

}  // namespace

bool measure_switches(const route& through, HDC dc, HGLRC first, switch_figures* result) {
  const HGLRC second = make_second(dc);
  if (!second || !wglMakeCurrent(dc, first)) return false;
  auto* switch_to = call_of<wglFastSwitchContextZ4_op>(through);
  auto* driver_context = call_of<wglGetGLContextZ4_op>(through);
  auto* enable = call_of<glEnable_op>(through);
  const HANDLE contexts[2] = {driver_context(second), driver_context(first)};
  constexpr int batch = 10000;
  result->noted = measure_batches(batch, [&](stopwatch* watch) {
    start(watch);
    for (int i = 0; i < batch; ++i) switch_to(contexts[i % 2], 0);
    stop(watch);
  });
  u64 calls = 0;
  const unsigned long long before = count_switches();
  result->called = measure_batches(batch, [&](stopwatch* watch) {
    start(watch);
    for (int i = 0; i < batch; ++i) {
      switch_to(contexts[i % 2], 0);
      enable(GL_DITHER);
    }
    stop(watch);
    calls += batch;
  });
  const unsigned long long real = count_switches() - before;
  // The first call may find its context current already.
  return real + 1 >= calls && real <= calls;
}
