// When the host's wglMakeCurrent is made, and which context a thread's calls reach.
#include <initializer_list>

#include "driver.h"

namespace {

constexpr DWORD limit = 20000;  // ms, for every wait

gl_window windows[3];
HGLRC contexts[3];

unsigned long long counted;

void begin_count() {
  counted = driver.switch_count();
}

#define CHECK_SWITCHES(wanted) CHECK_EQUAL(driver.switch_count() - counted, wanted)

void make_objects() {
  for (int i = 0; i < 3; ++i) {
    windows[i] = make_window(nullptr, 20 + 120 * i, 20, 100, 80, true);
    contexts[i] = driver.wglCreateContext(windows[i].hdc);
  }
  CHECK(driver.wglMakeCurrent(windows[0].hdc, contexts[0]));
  bind_extensions();
  CHECK(driver.wglMakeCurrent(nullptr, nullptr));
}

// A second thread that does one thing after the other for the test.
struct helper {
  HANDLE thread, work_ready, work_done;
  void (*work)();
};

DWORD WINAPI help(void* argument) {
  auto* h = static_cast<helper*>(argument);
  while (WaitForSingleObject(h->work_ready, INFINITE) == WAIT_OBJECT_0 && h->work != nullptr) {
    h->work();
    SetEvent(h->work_done);
  }
  return 0;
}

helper start_helper(helper* h) {
  *h = {nullptr, CreateEventA(nullptr, FALSE, FALSE, nullptr), CreateEventA(nullptr, FALSE, FALSE, nullptr), nullptr};
  h->thread = CreateThread(nullptr, 0, help, h, 0, nullptr);
  return *h;
}

void let(helper* h, void (*work)()) {
  h->work = work;
  SetEvent(h->work_ready);
  CHECK_EQUAL(WaitForSingleObject(h->work_done, limit), WAIT_OBJECT_0);
}

void end_helper(helper* h) {
  h->work = nullptr;
  SetEvent(h->work_ready);
  CHECK_EQUAL(WaitForSingleObject(h->thread, limit), WAIT_OBJECT_0);
  for (HANDLE handle : {h->thread, h->work_ready, h->work_done}) CloseHandle(handle);
}

// The colour of the current context's clear, which tells contexts apart. It is -100 when nobody answers.
void mark(float value) {
  driver.glClearColor(value, 0, 0, 0);
}

int marked() {
  GLfloat color[4] = {-1, 0, 0, 0};
  driver.glGetFloatv(GL_COLOR_CLEAR_VALUE, color);
  return static_cast<int>(color[0] * 100 + (color[0] < 0 ? -0.5f : 0.5f));
}

void make_current_is_noted() {
  begin_count();
  CHECK(driver.wglMakeCurrent(windows[0].hdc, contexts[0]));
  CHECK(driver.wglGetCurrentContext() == contexts[0]);
  CHECK(driver.wglGetCurrentDC() == windows[0].hdc);
  CHECK_SWITCHES(0);
  mark(0.1f);
  CHECK_SWITCHES(1);
  CHECK_EQUAL(marked(), 10);
  driver.glFinish();
  CHECK_SWITCHES(1);
  // The same pair again.
  CHECK(driver.wglMakeCurrent(windows[0].hdc, contexts[0]));
  CHECK_EQUAL(marked(), 10);
  CHECK_SWITCHES(1);
  // The same context on another drawable.
  CHECK(driver.wglMakeCurrent(windows[1].hdc, contexts[0]));
  CHECK_SWITCHES(1);
  CHECK_EQUAL(marked(), 10);
  CHECK_SWITCHES(2);
  // What is left is given up at once: another thread may want it.
  CHECK(driver.wglMakeCurrent(windows[1].hdc, contexts[1]));
  CHECK_SWITCHES(3);
  CHECK_EQUAL(marked(), 0);
  CHECK_SWITCHES(4);
  CHECK(driver.wglMakeCurrent(nullptr, nullptr));
  CHECK_SWITCHES(5);
  CHECK(driver.wglGetCurrentContext() == nullptr);
  CHECK(driver.wglGetCurrentDC() == nullptr);
  // Noted and dropped: the host never hears of it.
  CHECK(driver.wglMakeCurrent(windows[0].hdc, contexts[0]));
  CHECK(driver.wglMakeCurrent(nullptr, nullptr));
  CHECK_SWITCHES(5);
}

void calls_without_context() {
  GLint untouched[4] = {5, 5, 5, 5};
  driver.glGetIntegerv(GL_VIEWPORT, untouched);
  CHECK_EQUAL(untouched[0], 5);
  driver.glViewport(1, 2, 3, 4);
  driver.glViewportOffsetZ4(1, 2);
  driver.glDrawableSizeZ4(1, 2);
  driver.glDrawableSizeZ4(-1, -1);
  driver.glPushAttrib(GL_ALL_ATTRIB_BITS);
  driver.glPopAttrib();
  CHECK(driver.glGetString(GL_EXTENSIONS) == nullptr);
  CHECK(driver.wglMakeCurrent(windows[0].hdc, contexts[0]));
  GLint found[4] = {};
  driver.glGetIntegerv(GL_VIEWPORT, found);
  CHECK_EQUAL(found[2], 100);
  CHECK(driver.wglMakeCurrent(nullptr, nullptr));
}

void refused_pairs() {
  CHECK(driver.wglMakeCurrent(windows[0].hdc, contexts[0]));
  mark(0.2f);
  SetLastError(0);
  CHECK(!driver.wglMakeCurrent(nullptr, contexts[1]));
  CHECK(GetLastError() != 0);
  CHECK(!driver.wglMakeCurrent(reinterpret_cast<HDC>(0x123450), contexts[1]));
  CHECK(!driver.wglMakeCurrent(windows[0].hdc, reinterpret_cast<HGLRC>(0x4567)));
  HWND plain = CreateWindowExA(0, "static", "", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
  HDC plain_hdc = GetDC(plain);
  SetLastError(0);
  CHECK(!driver.wglMakeCurrent(plain_hdc, contexts[1]));
  CHECK_EQUAL(GetLastError(), ERROR_INVALID_PIXEL_FORMAT);
  ReleaseDC(plain, plain_hdc);
  DestroyWindow(plain);
  // What was current still is.
  CHECK(driver.wglGetCurrentContext() == contexts[0]);
  CHECK_EQUAL(marked(), 20);
  CHECK(driver.wglMakeCurrent(nullptr, nullptr));
}

// A device context that was given back at once, as many programs do.
void released_hdc() {
  HWND hwnd = CreateWindowExA(0, "static", "", WS_POPUP, 40, 400, 50, 40, nullptr, nullptr, nullptr, nullptr);
  HDC hdc = GetDC(hwnd);
  const int format = driver.wglGetPixelFormat(windows[0].hdc);
  PIXELFORMATDESCRIPTOR descriptor = {};
  driver.wglDescribePixelFormat(hdc, format, sizeof descriptor, &descriptor);
  CHECK(driver.wglSetPixelFormat(hdc, format, &descriptor));
  HGLRC context = driver.wglCreateContext(hdc);
  CHECK(driver.wglMakeCurrent(hdc, context));
  ReleaseDC(hwnd, hdc);
  mark(0.3f);
  CHECK_EQUAL(marked(), 30);
  driver.glClear(GL_COLOR_BUFFER_BIT);
  u32 found = 0;
  driver.glReadPixels(20, 20, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, &found);
  CHECK((found & 0xff) > 70);
  CHECK(driver.wglDeleteContext(context));
  DestroyWindow(hwnd);
}

bool owner_result;

void own_second() {
  owner_result = driver.wglMakeCurrent(windows[1].hdc, contexts[1]);
}
void disown() {
  driver.wglMakeCurrent(nullptr, nullptr);
}

void owned_elsewhere() {
  helper other = start_helper(&other);
  let(&other, own_second);
  CHECK(owner_result);
  SetLastError(0);
  CHECK(!driver.wglMakeCurrent(windows[1].hdc, contexts[1]));
  CHECK_EQUAL(GetLastError(), ERROR_BUSY);
  CHECK(!driver.wglDeleteContext(contexts[1]));
  let(&other, disown);
  CHECK(driver.wglMakeCurrent(windows[1].hdc, contexts[1]));
  mark(0.4f);
  // This thread uses it, so the other cannot have it.
  let(&other, own_second);
  CHECK(!owner_result);
  CHECK(driver.wglMakeCurrent(nullptr, nullptr));
  let(&other, own_second);
  CHECK(owner_result);
  let(&other, [] { CHECK_EQUAL(marked(), 40); });
  end_helper(&other);
  // A thread that ends lets go of what it used.
  CHECK(driver.wglMakeCurrent(windows[1].hdc, contexts[1]));
  CHECK_EQUAL(marked(), 40);
  CHECK(driver.wglMakeCurrent(nullptr, nullptr));
}

// As the library above does: workers own the children's contexts, and the application's thread draws with them.
void switches_to_owned() {
  helper worker = start_helper(&worker);
  begin_count();
  let(&worker, own_second);
  CHECK(driver.wglMakeCurrent(windows[0].hdc, contexts[0]));
  HANDLE application = driver.wglGetGLContextZ4(contexts[0]);
  HANDLE child = driver.wglGetGLContextZ4(contexts[1]);
  CHECK(application != nullptr && child != nullptr && application != child);
  CHECK_SWITCHES(0);
  CHECK(driver.wglFastSwitchContextZ4(child, 0));
  CHECK(driver.wglGetCurrentContext() == contexts[1]);
  CHECK(driver.wglGetCurrentDC() == windows[1].hdc);
  CHECK_SWITCHES(0);
  mark(0.6f);
  CHECK_SWITCHES(1);
  // To the application's context and back, with no call in between: the host sees nothing.
  CHECK(driver.wglFastSwitchContextZ4(application, 0));
  CHECK(driver.wglGetCurrentContext() == contexts[0]);
  CHECK(driver.wglFastSwitchContextZ4(child, 0));
  CHECK_EQUAL(marked(), 60);
  CHECK(driver.wglFastSwitchContextZ4(child, 0));
  CHECK_EQUAL(marked(), 60);
  CHECK_SWITCHES(1);
  // With calls in both.
  CHECK(driver.wglFastSwitchContextZ4(application, 0));
  mark(0.7f);
  CHECK_SWITCHES(2);
  CHECK(driver.wglFastSwitchContextZ4(child, 0));
  CHECK_EQUAL(marked(), 60);
  CHECK_SWITCHES(3);
  CHECK(driver.wglSwapBuffers(windows[1].hdc));
  CHECK_SWITCHES(3);
  CHECK(driver.wglFastSwitchContextZ4(application, 0));
  // The worker is still the owner, and is told nothing.
  let(&worker, [] { owner_result = driver.wglGetCurrentContext() == contexts[1]; });
  CHECK(owner_result);
  CHECK_SWITCHES(3);
  // It cannot use the context while this thread has it on the host; that is reported, and faults nobody.
  let(&worker, [] { CHECK_EQUAL(marked(), -100); });
  CHECK_EQUAL(marked(), 70);
  // Once this thread has moved on, it can.
  let(&worker, own_second);
  let(&worker, [] { CHECK_EQUAL(marked(), 60); });
  // And then a switch fails and changes nothing.
  CHECK(!driver.wglFastSwitchContextZ4(child, 0));
  CHECK(driver.wglGetCurrentContext() == contexts[0]);
  CHECK_EQUAL(marked(), 70);
  let(&worker, disown);
  CHECK(driver.wglFastSwitchContextZ4(child, 0));
  CHECK_EQUAL(marked(), 60);
  // A release lets go of what was switched to as well.
  CHECK(driver.wglMakeCurrent(nullptr, nullptr));
  let(&worker, own_second);
  let(&worker, [] { CHECK_EQUAL(marked(), 60); });
  end_helper(&worker);
}

void wrong_switches() {
  HGLRC unbound = driver.wglCreateContext(windows[2].hdc);
  CHECK(driver.wglMakeCurrent(windows[0].hdc, contexts[0]));
  mark(0.1f);
  CHECK(driver.wglGetGLContextZ4(nullptr) == nullptr);
  CHECK(driver.wglGetGLContextZ4(reinterpret_cast<HGLRC>(0x4567)) == nullptr);
  CHECK(!driver.wglFastSwitchContextZ4(nullptr, 0));
  HANDLE handle = driver.wglGetGLContextZ4(unbound);
  CHECK(!driver.wglFastSwitchContextZ4(handle, 0));
  CHECK(driver.wglDeleteContext(unbound));
  CHECK(!driver.wglFastSwitchContextZ4(handle, 0));
  CHECK_EQUAL(marked(), 10);
  CHECK(driver.wglMakeCurrent(nullptr, nullptr));
}

// A frame on two parts: what the host has to do for it does not grow with the calls that go to one part in a row.
void switches_of_a_frame() {
  HANDLE handles[3];
  for (int i = 0; i < 3; ++i) {
    CHECK(driver.wglMakeCurrent(windows[i].hdc, contexts[i]));
    handles[i] = driver.wglGetGLContextZ4(contexts[i]);
  }
  CHECK(driver.wglMakeCurrent(windows[0].hdc, contexts[0]));
  CHECK(driver.wglFastSwitchContextZ4(handles[2], 0));
  mark(0.5f);
  begin_count();
  for (int call = 0; call < 100; ++call) {
    for (int i = 1; i < 3; ++i) {
      CHECK(driver.wglFastSwitchContextZ4(handles[i], 0));
      driver.glColor3f(1, 0, 0);
    }
    CHECK(driver.wglFastSwitchContextZ4(handles[0], 0));
  }
  CHECK_SWITCHES(200);
  // One part alone: its context stays.
  begin_count();
  for (int call = 0; call < 100; ++call) {
    CHECK(driver.wglFastSwitchContextZ4(handles[2], 0));
    driver.glColor3f(1, 0, 0);
    CHECK(driver.wglFastSwitchContextZ4(handles[0], 0));
  }
  CHECK_SWITCHES(0);
  CHECK(driver.wglMakeCurrent(nullptr, nullptr));
}

void deletions() {
  // The current one.
  HGLRC context = driver.wglCreateContext(windows[2].hdc);
  CHECK(driver.wglMakeCurrent(windows[2].hdc, context));
  mark(0.1f);
  CHECK(driver.wglDeleteContext(context));
  CHECK(driver.wglGetCurrentContext() == nullptr);
  CHECK(!driver.wglDeleteContext(context));
  CHECK(!driver.wglMakeCurrent(windows[2].hdc, context));
  // One that is only noted.
  context = driver.wglCreateContext(windows[2].hdc);
  CHECK(driver.wglMakeCurrent(windows[2].hdc, context));
  CHECK(driver.wglDeleteContext(context));
  CHECK(driver.wglGetCurrentContext() == nullptr);
  // One that was switched to.
  context = driver.wglCreateContext(windows[2].hdc);
  CHECK(driver.wglMakeCurrent(windows[2].hdc, context));
  CHECK(driver.wglMakeCurrent(windows[0].hdc, contexts[0]));
  CHECK(driver.wglFastSwitchContextZ4(driver.wglGetGLContextZ4(context), 0));
  mark(0.2f);
  CHECK(driver.wglFastSwitchContextZ4(driver.wglGetGLContextZ4(contexts[0]), 0));
  CHECK(driver.wglDeleteContext(context));
  CHECK(driver.wglGetCurrentContext() == contexts[0]);
  mark(0.3f);
  CHECK_EQUAL(marked(), 30);
  CHECK(driver.wglMakeCurrent(nullptr, nullptr));
}

void many_contexts() {
  constexpr int count = 300;
  static HGLRC made[count];
  for (HGLRC& context : made) {
    context = driver.wglCreateContext(windows[0].hdc);
    CHECK(context != nullptr);
  }
  for (int i = 0; i < count; ++i) {
    for (int k = 0; k < i; k += 37) CHECK(driver.wglGetGLContextZ4(made[i]) != driver.wglGetGLContextZ4(made[k]));
  }
  for (HGLRC context : made) CHECK(driver.wglDeleteContext(context));
}

void shared_lists() {
  HGLRC first = driver.wglCreateContext(windows[0].hdc), second = driver.wglCreateContext(windows[1].hdc);
  begin_count();
  CHECK(driver.wglMakeCurrent(windows[0].hdc, first));
  CHECK(driver.wglShareLists(first, second));
  CHECK_SWITCHES(0);
  const GLuint list = driver.glGenLists(1);
  driver.glNewList(list, GL_COMPILE);
  mark(0.8f);
  driver.glEndList();
  CHECK(driver.wglMakeCurrent(windows[1].hdc, second));
  CHECK(driver.glIsList(list));
  driver.glCallList(list);
  CHECK_EQUAL(marked(), 80);
  CHECK(driver.wglDeleteContext(second));
  CHECK(driver.wglDeleteContext(first));
}

// A swap needs the context that drew: the host flushes the current one alone.
void swaps() {
  CHECK(driver.wglMakeCurrent(windows[0].hdc, contexts[0]));
  begin_count();
  CHECK(driver.wglSwapBuffers(windows[0].hdc));
  CHECK_SWITCHES(1);
  CHECK(driver.wglSwapBuffers(windows[1].hdc));
  CHECK_SWITCHES(1);
  CHECK(driver.wglSwapLayerBuffers(windows[0].hdc, WGL_SWAP_MAIN_PLANE));
  const WGLSWAP list[2] = {{windows[0].hdc, WGL_SWAP_MAIN_PLANE}, {windows[1].hdc, WGL_SWAP_MAIN_PLANE}};
  CHECK_EQUAL(driver.wglSwapMultipleBuffers(2, list), 3);
  CHECK(driver.wglMakeCurrent(nullptr, nullptr));
  CHECK(driver.wglSwapBuffers(windows[0].hdc));
}

void separate_read_drawable() {
  if (driver.wglMakeContextCurrentARB == nullptr) return;
  CHECK(driver.wglMakeCurrent(windows[1].hdc, contexts[0]));
  driver.glClearColor(0, 0, 1, 0);
  driver.glClear(GL_COLOR_BUFFER_BIT);
  CHECK(driver.wglMakeCurrent(windows[0].hdc, contexts[0]));
  driver.glClearColor(1, 0, 0, 0);
  driver.glClear(GL_COLOR_BUFFER_BIT);
  begin_count();
  CHECK(driver.wglMakeContextCurrentARB(windows[0].hdc, windows[1].hdc, contexts[0]));
  CHECK(driver.wglGetCurrentDC() == windows[0].hdc);
  CHECK(driver.wglGetCurrentReadDCARB() == windows[1].hdc);
  u32 found = 0;
  driver.glReadPixels(20, 20, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, &found);
  CHECK_EQUAL(found & 0xffffff, 0xff0000);
  CHECK(driver.wglMakeCurrent(windows[0].hdc, contexts[0]));
  driver.glReadPixels(20, 20, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, &found);
  CHECK_EQUAL(found & 0xffffff, 0x0000ff);
  CHECK(driver.wglMakeCurrent(nullptr, nullptr));
}

void pbuffers() {
  if (driver.wglCreatePbufferARB == nullptr) return;
  CHECK(driver.wglMakeCurrent(windows[0].hdc, contexts[0]));
  constexpr int draw_to_pbuffer = 0x202d, support_opengl = 0x2010;
  const int wanted[] = {draw_to_pbuffer, 1, support_opengl, 1, 0};
  int format = 0;
  UINT count = 0;
  CHECK(driver.wglChoosePixelFormatARB(windows[0].hdc, wanted, nullptr, 1, &format, &count));
  CHECK_EQUAL(count, 1);
  HPBUFFERARB pbuffer = driver.wglCreatePbufferARB(windows[0].hdc, format, 64, 32, nullptr);
  CHECK(pbuffer != nullptr);
  HDC hdc = driver.wglGetPbufferDCARB(pbuffer);
  HGLRC context = driver.wglCreateContext(hdc);
  CHECK(driver.wglMakeCurrent(hdc, context));
  GLint box[4] = {};
  driver.glGetIntegerv(GL_SCISSOR_BOX, box);
  CHECK_EQUAL(box[2], 64);
  CHECK_EQUAL(box[3], 32);
  mark(0.4f);
  driver.glClear(GL_COLOR_BUFFER_BIT);
  u32 found = 0;
  driver.glReadPixels(63, 31, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, &found);
  CHECK_EQUAL(found & 0xff, 102);
  // The size of a window, when it comes later, is not that of the first drawable.
  driver.glDrawableSizeZ4(400, 300);
  driver.glGetIntegerv(GL_SCISSOR_BOX, box);
  CHECK_EQUAL(box[2], 64);
  driver.glDrawableSizeZ4(-1, -1);
  driver.glGetIntegerv(GL_SCISSOR_BOX, box);
  CHECK_EQUAL(box[2], 64);
  CHECK_EQUAL(marked(), 40);
  CHECK(driver.wglFastSwitchContextZ4(driver.wglGetGLContextZ4(context), 0));
  // A context that is never seen starts with the pbuffer's size all the same.
  HGLRC unseen = driver.wglCreateContext(hdc);
  CHECK(driver.wglMakeCurrent(hdc, unseen));
  driver.glDrawableSizeZ4(-1, -1);
  driver.glGetIntegerv(GL_VIEWPORT, box);
  CHECK_EQUAL(box[2], 64);
  CHECK_EQUAL(box[3], 32);
  CHECK(driver.wglMakeCurrent(nullptr, nullptr));
  CHECK(driver.wglDeleteContext(unseen));
  CHECK(driver.wglDeleteContext(context));
  CHECK(driver.wglReleasePbufferDCARB(pbuffer, hdc));
  CHECK(driver.wglDestroyPbufferARB(pbuffer));
}

// A window that is gone: calls do nothing, and the thread can go on with another.
void lost_window() {
  gl_window window = make_window(nullptr, 20, 300, 60, 50, true);
  HGLRC context = driver.wglCreateContext(window.hdc);
  CHECK(driver.wglMakeCurrent(window.hdc, context));
  destroy_window(window);
  driver.glClear(GL_COLOR_BUFFER_BIT);
  driver.glFinish();
  CHECK(driver.wglMakeCurrent(windows[0].hdc, contexts[0]));
  mark(0.2f);
  CHECK_EQUAL(marked(), 20);
  CHECK(driver.wglMakeCurrent(nullptr, nullptr));
  CHECK(driver.wglDeleteContext(context));
}

const test_case cases[] = {
    {"objects", make_objects},
    {"make-current-is-noted", make_current_is_noted},
    {"calls-without-context", calls_without_context},
    {"refused-pairs", refused_pairs},
    {"released-hdc", released_hdc},
    {"owned-elsewhere", owned_elsewhere},
    {"switches-to-owned", switches_to_owned},
    {"wrong-switches", wrong_switches},
    {"switches-of-a-frame", switches_of_a_frame},
    {"deletions", deletions},
    {"many-contexts", many_contexts},
    {"shared-lists", shared_lists},
    {"swaps", swaps},
    {"separate-read-drawable", separate_read_drawable},
    {"pbuffers", pbuffers},
    {"lost-window", lost_window},
};

}  // namespace

int main(int argc, char** argv) {
  load_driver();
  return run_cases(cases, sizeof cases / sizeof *cases, argc, argv, 60);
}
