// A host library for tests. It passes everything on to the host that is in the system's folder, but makes trouble with
// bindings, as told by what it exports (test_host.h), and counts the calls that a binding has not prepared.
#include <windows.h>

#include <GL/gl.h>

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace {

using make_current_function = BOOL(WINAPI*)(HDC, HGLRC);
using make_context_current_function = BOOL(WINAPI*)(HDC, HDC, HGLRC);
using get_proc_address_function = PROC(WINAPI*)(LPCSTR);
using bind_buffer_function = void(APIENTRY*)(GLenum, GLuint);
using check_status_function = GLenum(APIENTRY*)(GLuint, GLenum);

std::atomic<int> delay;       // us of each binding
std::atomic<int> refusals;    // of bindings to come
std::atomic<bool> under_way;  // a binding
std::atomic<bool> one_at_a_time;
std::atomic<int> asked;        // bindings so far, but for releases
std::atomic<int> unprepared;   // calls without a context
std::atomic<int> stay;         // us of each counted call
std::atomic<int> inside;       // threads that are in a counted call or a binding
std::atomic<int> most_inside;  // at once, so far
std::atomic<bind_buffer_function> bind_buffer;
std::atomic<check_status_function> check_status;
std::atomic<make_context_current_function> make_context_current;
DWORD current_slot;  // of the thread's context

HMODULE real_host() {
  char path[MAX_PATH];
  GetSystemDirectoryA(path, MAX_PATH - 32);
  return LoadLibraryA(strcat(path, "\\opengl32host.dll"));
}

template <class Function>
Function real(const char* name) {
  static const HMODULE host = real_host();
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(host, name)));
}

// The time of a driver that works for as long: a sleep could not be so short.
void busy_wait(int microseconds) {
  LARGE_INTEGER start, now, frequency;
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&start);
  do {
    QueryPerformanceCounter(&now);
  } while ((now.QuadPart - start.QuadPart) * 1000000 < microseconds * frequency.QuadPart);
}

struct visit {
  visit() {
    const int now = ++inside;
    int most = most_inside;
    while (most < now && !most_inside.compare_exchange_weak(most, now)) {
    }
  }
  ~visit() { --inside; }
  visit(const visit&) = delete;
  visit& operator=(const visit&) = delete;
};

bool is_refused() {
  int left = refusals;
  while (left > 0 && !refusals.compare_exchange_weak(left, left - 1)) {
  }
  return left > 0;
}

BOOL refuse() {
  SetLastError(ERROR_BUSY);
  return FALSE;
}

template <class Bind>
BOOL bind_alone(HGLRC context, Bind bind_really) {
  const visit now;
  busy_wait(delay);
  if (context && is_refused()) return refuse();
  const BOOL result = bind_really();
  if (result) TlsSetValue(current_slot, context);
  return result;
}

// One that is refused because of another is not in the way of a third.
template <class Bind>
BOOL bind(HGLRC context, Bind bind_really) {
  if (context) ++asked;
  if (!one_at_a_time || !context) return bind_alone(context, bind_really);
  if (under_way.exchange(true)) return refuse();
  const BOOL result = bind_alone(context, bind_really);
  under_way = false;
  return result;
}

BOOL WINAPI bind_two(HDC draw, HDC read, HGLRC context) {
  return bind(context, [=] { return make_context_current.load()(draw, read, context); });
}

void count_call() {
  if (!TlsGetValue(current_slot)) ++unprepared;
  const visit now;
  busy_wait(stay);
}

void APIENTRY bind_counted_buffer(GLenum target, GLuint buffer) {
  count_call();
  bind_buffer.load()(target, buffer);
}

GLenum APIENTRY check_counted_status(GLuint framebuffer, GLenum target) {
  count_call();
  return check_status.load()(framebuffer, target);
}

template <class Function>
PROC keep(std::atomic<Function>* kept, PROC found, Function ours) {
  if (!found) return nullptr;
  *kept = reinterpret_cast<Function>(reinterpret_cast<void*>(found));
  return reinterpret_cast<PROC>(reinterpret_cast<void*>(ours));
}

}  // namespace

extern "C" {

BOOL WINAPI test_wglMakeCurrent(HDC hdc, HGLRC context) {
  static const auto make_current = real<make_current_function>("wglMakeCurrent");
  return bind(context, [=] { return make_current(hdc, context); });
}

PROC WINAPI test_wglGetProcAddress(LPCSTR name) {
  static const auto find = real<get_proc_address_function>("wglGetProcAddress");
  const PROC found = find(name);
  if (strcmp(name, "wglMakeContextCurrentARB") == 0) return keep(&make_context_current, found, bind_two);
  if (strcmp(name, "glBindBuffer") == 0) return keep(&bind_buffer, found, bind_counted_buffer);
  if (strcmp(name, "glCheckNamedFramebufferStatus") == 0) return keep(&check_status, found, check_counted_status);
  return found;
}

void APIENTRY test_glClear(GLbitfield mask) {
  static const auto clear = real<void(APIENTRY*)(GLbitfield)>("glClear");
  count_call();
  clear(mask);
}

void APIENTRY test_glColor4f(GLfloat red, GLfloat green, GLfloat blue, GLfloat alpha) {
  static const auto color = real<void(APIENTRY*)(GLfloat, GLfloat, GLfloat, GLfloat)>("glColor4f");
  count_call();
  color(red, green, blue, alpha);
}

const GLubyte* APIENTRY test_glGetString(GLenum name) {
  static const auto get = real<const GLubyte*(APIENTRY*)(GLenum)>("glGetString");
  static char renderer[64];
  if (name != GL_RENDERER || !GetEnvironmentVariableA("OSW_TEST_HOST_RENDERER", renderer, sizeof renderer))
    return get(name);
  return reinterpret_cast<const GLubyte*>(renderer);
}

GLenum APIENTRY test_glGetError() {
  static const auto get_error = real<GLenum(APIENTRY*)()>("glGetError");
  count_call();
  return get_error();
}

void APIENTRY test_glGetIntegerv(GLenum name, GLint* values) {
  static const auto get = real<void(APIENTRY*)(GLenum, GLint*)>("glGetIntegerv");
  count_call();
  get(name, values);
}

void TestHostRefuse(int bindings) {
  refusals = bindings;
}

void TestHostTakeOneAtATime(int on) {
  one_at_a_time = on != 0;
}

int TestHostAsked() {
  return asked;
}

int TestHostUnprepared() {
  return unprepared;
}

int TestHostMostAtOnce() {
  return most_inside;
}

int number_in(const char* variable) {
  char text[16] = "";
  GetEnvironmentVariableA(variable, text, sizeof text);
  return atoi(text);
}

// That it was loaded at all stays to be seen in the process.
BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*) {
  if (reason != DLL_PROCESS_ATTACH) return TRUE;
  delay = number_in("OSW_TEST_HOST_DELAY");
  stay = number_in("OSW_TEST_HOST_STAY");
  current_slot = TlsAlloc();
  SetEnvironmentVariableA("OSW_TEST_HOST_LOADED", "1");
  return TRUE;
}
}
