// A stand-in of the system library. STANDIN_DRIVER says what is wrong with it: nothing, or one of the words below.
// We define what the header takes to be imported.
#define _GDI32_
#include <windows.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

static bool is_current;

static bool has_fault(const char* fault) {
  const char* faults = getenv("STANDIN_DRIVER");
  return faults && strcmp(faults, fault) == 0;
}

static void private_entry() {}

static PROC answer(intptr_t value) {
  PROC result;
  memcpy(&result, &value, sizeof result);
  return result;
}

extern "C" {

__declspec(dllexport) int wglChoosePixelFormat(HDC, const PIXELFORMATDESCRIPTOR*) {
  return 1;
}
__declspec(dllexport) BOOL wglSetPixelFormat(HDC, int, const PIXELFORMATDESCRIPTOR*) {
  return TRUE;
}
__declspec(dllexport) BOOL wglDeleteContext(HGLRC) {
  return TRUE;
}

__declspec(dllexport) HGLRC wglCreateContext(HDC) {
  if (has_fault("crash")) *static_cast<volatile int*>(nullptr) = 1;
  if (has_fault("exit")) ExitProcess(0);
  if (has_fault("hang")) Sleep(INFINITE);
  return reinterpret_cast<HGLRC>(intptr_t{has_fault("no-context") ? 0 : 1});
}

__declspec(dllexport) BOOL wglMakeCurrent(HDC, HGLRC context) {
  is_current = context != nullptr;
  return TRUE;
}

__declspec(dllexport) const unsigned char* glGetString(unsigned name) {
  constexpr unsigned renderer = 0x1F01;
  const char* text = name != renderer ? "1.1.0" : has_fault("no-hardware") ? "GDI Generic" : "Stand-in";
  return reinterpret_cast<const unsigned char*>(text);
}

// What a picture is drawn with does nothing: what is read is the one that oswctl draws, or one blue area.
__declspec(dllexport) void glViewport(int, int, int, int) {}
__declspec(dllexport) void glClearColor(float, float, float, float) {}
__declspec(dllexport) void glClear(unsigned) {}
__declspec(dllexport) void glBegin(unsigned) {}
__declspec(dllexport) void glEnd() {}
__declspec(dllexport) void glColor3f(float, float, float) {}
__declspec(dllexport) void glVertex2f(float, float) {}
__declspec(dllexport) void glReadPixels(int, int, int width, int height, unsigned, unsigned, unsigned char* pixels) {
  for (int i = 0; i < width * height; ++i) {
    const bool is_red = !has_fault("wrong-picture") && i % width + i / width < width;
    const unsigned char pixel[] = {static_cast<unsigned char>(is_red ? 255 : 0), 0,
                                   static_cast<unsigned char>(is_red ? 0 : 255), 255};
    memcpy(pixels + size_t{4} * static_cast<size_t>(i), pixel, sizeof pixel);
  }
}

__declspec(dllexport) PROC wglGetProcAddress(const char* name) {
  // As real drivers do, this one knows its extensions only under a context.
  if (!is_current) return nullptr;
  if (has_fault("lacks-two") && (strstr(name, "wglGetGLContext") || strstr(name, "glDrawableSize"))) return nullptr;
  if (has_fault("lacks-switch") && strstr(name, "FastSwitch")) return nullptr;
  if (has_fault("answers-small")) {
    return answer(strstr(name, "Fast") ? 1 : strstr(name, "Context") ? 2 : strstr(name, "Viewport") ? 3 : -1);
  }
  return answer(reinterpret_cast<intptr_t>(&private_entry));
}

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
  return reason != DLL_PROCESS_ATTACH || !has_fault("no-load");
}
}
