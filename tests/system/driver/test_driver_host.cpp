// Which host library the driver stands on: test_driver_host.exe [CASE]..., or --ROLE in a process of its own.
#include <atomic>
#include <cstring>
#include <iterator>
#include <string>

#include "driver.h"
#include "processes.h"
#include "test_host.h"

namespace {

constexpr DWORD patience = 40000;  // ms
constexpr int case_limit = 100;    // s

// A variable of the environment that children inherit, as it was before once this ends.
struct variable {
  const char* name;
  std::string before;

  variable(const char* of, const char* value) : name(of) {
    char text[1024] = "";
    GetEnvironmentVariableA(name, text, sizeof text);
    before = text;
    SetEnvironmentVariableA(name, value);
  }
  ~variable() { SetEnvironmentVariableA(name, before.empty() ? nullptr : before.c_str()); }
  variable(const variable&) = delete;
  variable& operator=(const variable&) = delete;
};

void run_role(const char* role) {
  const DWORD status = run_program(program_folder() + program_name(), role, patience);
  if (status != good_status) fail(__FILE__, __LINE__, role, (": status " + std::to_string(status)).c_str());
}

bool is_test_host_loaded() {
  char text[4];
  return GetEnvironmentVariableA("OSW_TEST_HOST_LOADED", text, sizeof text) != 0;
}

std::string make_folder_of_hosts(const char* name) {
  const std::string folder = program_folder() + name + "\\";
  CHECK(CreateDirectoryA(folder.c_str(), nullptr));
  for (const char* file : {"opengl32host.dll", "planted.dll", "opengl32.dll"}) place_test_host(folder + file);
  return folder;
}

// Both folders are where anybody may put a file: a document is opened from the one, and the other is a tool's.
void a_planted_library_is_never_loaded() {
  const std::string current = make_folder_of_hosts("current"), tools = make_folder_of_hosts("tools");
  place_test_host(program_folder() + "opengl32host.dll");
  char path[4096] = "";
  GetEnvironmentVariableA("PATH", path, sizeof path);
  const variable with_tools("PATH", (tools + ";" + path).c_str());
  CHECK(SetCurrentDirectoryA(current.c_str()));
  for (const char* host : {"planted.dll", ".\\planted.dll", "\\planted.dll", "C:planted.dll", "", "opengl32host.dll"}) {
    const variable named("OSW_DRIVER_HOST", *host ? host : nullptr);
    begin_case(*host ? host : "no host named");
    run_role("--load-no-test-host");
  }
  CHECK(SetCurrentDirectoryA(program_folder().c_str()));
  CHECK(DeleteFileA((program_folder() + "opengl32host.dll").c_str()));
}

void a_host_is_loaded_by_its_full_path() {
  const std::string host = program_folder() + "a_host.dll";
  place_test_host(host);
  const variable named("OSW_DRIVER_HOST", host.c_str());
  run_role("--draw-on-test-host");
}

// What a switch takes decides whether it is offered, unless the user does.
void the_switch_is_offered_where_it_is_fast() {
  const std::string host = program_folder() + "a_host.dll";
  place_test_host(host);
  const variable named("OSW_DRIVER_HOST", host.c_str());
  const struct {
    const char *delay, *decision, *role;
  } hosts[] = {
      {"0", nullptr, "--find-fast-switch"}, {"100", nullptr, "--find-no-switch"}, {"100", "1", "--find-fast-switch"},
      {"0", "0", "--find-no-switch"},       {"100", "x", "--find-no-switch"},
  };
  for (const auto& each : hosts) {
    const variable delay("OSW_TEST_HOST_DELAY", each.delay);
    const variable decision("OSW_DRIVER_FAST_SWITCH", each.decision);
    run_role(each.role);
  }
}

void refusals() {
  const std::string host = program_folder() + "a_host.dll";
  place_test_host(host);
  const variable named("OSW_DRIVER_HOST", host.c_str());
  for (const char* role :
       {"--refused-for-a-moment", "--refused-for-long", "--refused-among-others", "--refused-at-first"})
    run_role(role);
  const variable delay("OSW_TEST_HOST_DELAY", "200");
  run_role("--threads-that-bind-at-once");
}

// A program draws alone as it would without the driver, and a card's library is called as the parts come.
void threads_take_turns_where_they_must() {
  const std::string host = program_folder() + "a_host.dll";
  place_test_host(host);
  const variable named("OSW_DRIVER_HOST", host.c_str()), stay("OSW_TEST_HOST_STAY", "50");
  const struct {
    const char *renderer, *role;
  } hosts[] = {{"llvmpipe (LLVM 15.0.6, 256 bits)", "--parts-in-turn"},
               {"A card", "--parts-at-once"},
               {"llvmpipe (LLVM 15.0.6, 256 bits)", "--threads-at-once"}};
  for (const auto& each : hosts) {
    const variable renderer("OSW_TEST_HOST_RENDERER", each.renderer);
    run_role(each.role);
  }
}

const test_case cases[] = {
    {"a-planted-library-is-never-loaded", a_planted_library_is_never_loaded},
    {"a-host-is-loaded-by-its-full-path", a_host_is_loaded_by_its_full_path},
    {"the-switch-is-offered-where-it-is-fast", the_switch_is_offered_where_it_is_fast},
    {"refusals", refusals},
    {"threads-take-turns-where-they-must", threads_take_turns_where_they_must},
};

// Any call lets the driver load its host.
void load_no_test_host() {
  driver.wglMakeCurrent(nullptr, nullptr);
  CHECK(!is_test_host_loaded());
}

void draw_on_test_host() {
  const gl_window window = make_window(nullptr, 30, 30, 100, 80, true);
  CHECK(driver.wglMakeCurrent(window.hdc, driver.wglCreateContext(window.hdc)));
  CHECK(is_test_host_loaded());
  driver.glClear(GL_COLOR_BUFFER_BIT);
  CHECK_EQUAL(driver.glGetError(), GL_NO_ERROR);
}

std::string reports;

LONG CALLBACK keep_report(EXCEPTION_POINTERS* raised) {
  constexpr DWORD report_raised = 0x40010006;
  const EXCEPTION_RECORD* record = raised->ExceptionRecord;
  if (record->ExceptionCode != report_raised) return EXCEPTION_CONTINUE_SEARCH;
  reports += reinterpret_cast<const char*>(record->ExceptionInformation[1]);
  return EXCEPTION_CONTINUE_EXECUTION;
}

// The way in which the library above asks, first without a context and then with one. What is current stays so, with
// all that was set.
void find_switch(bool wanted) {
  AddVectoredExceptionHandler(1, keep_report);
  const gl_window window = make_window(nullptr, 30, 30, 100, 80, true);
  const HGLRC context = driver.wglCreateContext(window.hdc);
  CHECK(GetProcAddress(driver_module, "wglFastSwitchContextZ4") == nullptr);
  driver.wglGetProcAddress("wglFastSwitchContextZ4");
  CHECK(driver.wglMakeCurrent(window.hdc, context));
  driver.glClearColor(0.25f, 0, 0, 0);
  for (int i = 0; i < 3; ++i) CHECK_EQUAL(driver.wglGetProcAddress("wglFastSwitchContextZ4") != nullptr, wanted);
  CHECK(driver.wglGetProcAddress("wglGetGLContextZ4") != nullptr);
  CHECK(driver.wglGetCurrentContext() == context);
  GLfloat color[4] = {};
  driver.glGetFloatv(GL_COLOR_CLEAR_VALUE, color);
  CHECK_EQUAL(color[0] * 100, 25);
  CHECK(driver.wglMakeCurrent(nullptr, nullptr));
  CHECK_EQUAL(driver.wglGetProcAddress("wglFastSwitchContextZ4") != nullptr, wanted);
  char decision[4];
  const bool decided = GetEnvironmentVariableA("OSW_DRIVER_FAST_SWITCH", decision, sizeof decision) && *decision != 'x';
  CHECK_EQUAL(reports.find("Info: a switch between two contexts of the host takes ") != std::string::npos, !decided);
  printf("%s", reports.c_str());
}

void find_fast_switch() {
  find_switch(true);
}

void find_no_switch() {
  find_switch(false);
}

constexpr int for_long = 1000000;
constexpr int thread_count = 4;

gl_window windows[thread_count];
HGLRC contexts[thread_count];

template <class Function>
Function* of_host(const char* name) {
  return reinterpret_cast<Function*>(
      reinterpret_cast<__osw_proc>(GetProcAddress(GetModuleHandleA("a_host.dll"), name)));
}

void refuse(int bindings) {
  of_host<test_host_refuse>("TestHostRefuse")(bindings);
}

int asked() {
  return of_host<test_host_count>("TestHostAsked")();
}

// How often the driver has said that the host refused.
int reported() {
  int count = 0;
  for (size_t at = 0; (at = reports.find("the host refused", at)) != std::string::npos; ++at) ++count;
  return count;
}

void make_contexts(int count) {
  AddVectoredExceptionHandler(1, keep_report);
  for (int i = 0; i < count; ++i) {
    windows[i] = make_window(nullptr, 20 + 120 * i, 20, 100, 80, true);
    contexts[i] = driver.wglCreateContext(windows[i].hdc);
  }
}

bool bind(int i) {
  return driver.wglMakeCurrent(windows[i].hdc, contexts[i]);
}

// Whether calls reach the current context and its answers come back.
bool draws(GLfloat mark) {
  GLfloat found[4] = {-1, -1, -1, -1};
  driver.glClearColor(mark, 0, 0, 0);
  driver.glGetFloatv(GL_COLOR_CLEAR_VALUE, found);
  driver.glClear(GL_COLOR_BUFFER_BIT);
  return found[0] == mark;
}

GLenum (*check_status)(GLuint, GLenum);

// Of each kind of function: exported, with a form of the driver's own, an extension, one that no list has, and wgl's.
void check_that_nothing_reaches_the_host() {
  const int unprepared = of_host<test_host_count>("TestHostUnprepared")(), asked_before = asked();
  for (int i = 0; i < 20; ++i) {
    driver.glColor4f(1, 1, 1, 1);
    driver.glClear(GL_COLOR_BUFFER_BIT);
    driver.glBindBuffer(GL_ARRAY_BUFFER, 0);
    GLint untouched = 7;
    driver.glGetIntegerv(GL_ARRAY_BUFFER_BINDING, &untouched);
    CHECK_EQUAL(untouched, 7);
    CHECK_EQUAL(driver.glGetError(), 0);
    CHECK_EQUAL(check_status(0, GL_FRAMEBUFFER), 0);
    CHECK(!driver.wglSwapIntervalEXT(0));
  }
  CHECK_EQUAL(of_host<test_host_count>("TestHostUnprepared")(), unprepared);
  CHECK_EQUAL(asked(), asked_before);
}

void find_functions() {
  CHECK(bind(0));
  CHECK(draws(0.125f));
  bind_extensions();
  check_status = reinterpret_cast<decltype(check_status)>(
      reinterpret_cast<__osw_proc>(driver.wglGetProcAddress("glCheckNamedFramebufferStatus")));
  CHECK_EQUAL(check_status(0, GL_FRAMEBUFFER), GL_FRAMEBUFFER_COMPLETE);
  CHECK(driver.wglMakeCurrent(nullptr, nullptr));
}

// Nothing is lost.
void refused_for_a_moment() {
  make_contexts(1);
  CHECK(bind(0));
  refuse(5);
  CHECK(draws(0.25f));
  CHECK_EQUAL(reported(), 0);
}

// What is drawn meanwhile is lost, and the first frame or binding after it goes on.
void refused_for_long() {
  make_contexts(1);
  find_functions();
  CHECK(bind(0));
  refuse(for_long);
  CHECK(!draws(0.25f));
  check_that_nothing_reaches_the_host();
  for (int frame = 0; frame < 3; ++frame) {
    const int before = asked();
    CHECK(!driver.wglSwapBuffers(windows[0].hdc));
    // Once for the device context of the last time, and once for the window's own.
    CHECK_EQUAL(asked() - before, 2);
    check_that_nothing_reaches_the_host();
  }
  CHECK(bind(0));
  CHECK(!draws(0.25f));
  check_that_nothing_reaches_the_host();
  CHECK_EQUAL(reported(), 1);
  refuse(0);
  CHECK(!draws(0.375f));
  CHECK(driver.wglSwapBuffers(windows[0].hdc));
  CHECK(draws(0.5f));
  CHECK(driver.wglMakeCurrent(nullptr, nullptr));
  CHECK(bind(0));
  refuse(for_long);
  CHECK(!draws(0.25f));
  CHECK_EQUAL(reported(), 2);
  refuse(0);
  CHECK(bind(0));
  CHECK(draws(0.5f));
  CHECK(driver.wglMakeCurrent(nullptr, nullptr));
  CHECK(bind(0));
  refuse(for_long);
  driver.glFlush();
  CHECK(!draws(0.625f));
  refuse(0);
  driver.glFlush();
  CHECK(draws(0.75f));
}

// One thread that draws with several contexts in turn, as on the sequential path: the others go on, and the one that is
// refused is not asked for at each switch.
void refused_among_others() {
  make_contexts(2);
  find_functions();
  CHECK(bind(1));
  CHECK(bind(0));
  HANDLE handles[2] = {driver.wglGetGLContextZ4(contexts[0]), driver.wglGetGLContextZ4(contexts[1])};
  CHECK(draws(0.25f));
  CHECK(driver.wglFastSwitchContextZ4(handles[1], 0));
  refuse(for_long);
  CHECK(!draws(0.375f));
  refuse(0);
  for (int i = 0; i < 5; ++i) {
    CHECK(driver.wglFastSwitchContextZ4(handles[0], 0));
    CHECK(draws(0.5f));
    CHECK(driver.wglFastSwitchContextZ4(handles[1], 0));
    check_that_nothing_reaches_the_host();
  }
  CHECK_EQUAL(reported(), 1);
  CHECK(driver.wglSwapBuffers(windows[1].hdc));
  CHECK(draws(0.625f));
}

// Where the window lies that it shows a share of, and how large that is, is told after the binding and never again.
void refused_at_first() {
  make_contexts(1);
  const gl_window whole = make_window(nullptr, 20, 120, 400, 300, true);
  windows[0] = make_window(whole.hwnd, 10, 200, 100, 80, true);
  CHECK(bind(0));
  refuse(for_long);
  driver.glViewport(0, 0, 400, 300);
  driver.glViewportOffsetZ4(-10, -20);
  driver.glDrawableSizeZ4(400, 300);
  refuse(0);
  CHECK(driver.wglSwapBuffers(windows[0].hdc));
  GLint box[4] = {};
  driver.glGetIntegerv(GL_VIEWPORT, box);
  CHECK_EQUAL(box[0], 0);
  CHECK_EQUAL(box[2], 400);
  of_host<void(GLenum, GLint*)>("glGetIntegerv")(GL_SCISSOR_BOX, box);
  CHECK_EQUAL(box[0], 10);
  CHECK_EQUAL(box[1], 20);
  CHECK_EQUAL(box[2], 100);
  CHECK_EQUAL(box[3], 80);
}

DWORD WINAPI bind_and_draw(void* number) {
  const auto i = static_cast<int>(reinterpret_cast<intptr_t>(number));
  for (int round = 0; round < 100; ++round) {
    CHECK(bind(i));
    CHECK(draws(0.125f * static_cast<GLfloat>(i + 1)));
    CHECK(driver.wglMakeCurrent(nullptr, nullptr));
  }
  return 0;
}

void threads_that_bind_at_once() {
  make_contexts(thread_count);
  of_host<test_host_refuse>("TestHostTakeOneAtATime")(1);
  HANDLE threads[thread_count];
  for (int i = 0; i < thread_count; ++i) {
    threads[i] = CreateThread(nullptr, 0, bind_and_draw, reinterpret_cast<void*>(intptr_t{i}), 0, nullptr);
  }
  CHECK_EQUAL(WaitForMultipleObjects(thread_count, threads, TRUE, patience), WAIT_OBJECT_0);
  CHECK(asked() > thread_count * 100);
  CHECK_EQUAL(reported(), 0);
}

std::atomic<bool> overlapped;

int most_at_once() {
  return of_host<test_host_count>("TestHostMostAtOnce")();
}

// Exported functions, an extension, bindings, and what waits for drawing.
DWORD WINAPI draw_in_rounds(void* number) {
  const auto i = static_cast<int>(reinterpret_cast<intptr_t>(number));
  for (int round = 0; round < 60 && !overlapped; ++round) {
    CHECK(bind(i));
    for (int call = 0; call < 20; ++call) {
      driver.glColor4f(1, 1, 1, 1);
      driver.glBindBuffer(GL_ARRAY_BUFFER, 0);
    }
    CHECK(draws(0.125f * static_cast<GLfloat>(i + 1)));
    driver.glFinish();
    CHECK(driver.wglSwapBuffers(windows[i].hdc));
    CHECK(driver.wglMakeCurrent(nullptr, nullptr));
    if (most_at_once() > 1) overlapped = true;
  }
  return 0;
}

void draw_with_threads() {
  CHECK(bind(0));
  CHECK(draws(0.5f));
  bind_extensions();
  CHECK(driver.wglMakeCurrent(nullptr, nullptr));
  HANDLE threads[thread_count];
  for (int i = 0; i < thread_count; ++i) {
    threads[i] = CreateThread(nullptr, 0, draw_in_rounds, reinterpret_cast<void*>(intptr_t{i}), 0, nullptr);
  }
  CHECK_EQUAL(WaitForMultipleObjects(thread_count, threads, TRUE, patience), WAIT_OBJECT_0);
}

void parts_in_turn() {
  make_contexts(thread_count);
  make_part_context(windows[0]);
  draw_with_threads();
  CHECK_EQUAL(most_at_once(), 1);
}

void parts_at_once() {
  make_contexts(thread_count);
  make_part_context(windows[0]);
  draw_with_threads();
  CHECK(most_at_once() > 1);
}

void threads_at_once() {
  make_contexts(thread_count);
  draw_with_threads();
  CHECK(most_at_once() > 1);
}

const test_case roles[] = {
    {"--load-no-test-host", load_no_test_host},
    {"--draw-on-test-host", draw_on_test_host},
    {"--find-fast-switch", find_fast_switch},
    {"--find-no-switch", find_no_switch},
    {"--refused-for-a-moment", refused_for_a_moment},
    {"--refused-for-long", refused_for_long},
    {"--refused-among-others", refused_among_others},
    {"--refused-at-first", refused_at_first},
    {"--threads-that-bind-at-once", threads_that_bind_at_once},
    {"--parts-in-turn", parts_in_turn},
    {"--parts-at-once", parts_at_once},
    {"--threads-at-once", threads_at_once},
};

int play_role(int argc, char** argv) {
  load_driver();
  const int failed = run_cases(roles, static_cast<int>(std::size(roles)), argc, argv, case_limit);
  return failed ? failed : static_cast<int>(good_status);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && strncmp(argv[1], "--", 2) == 0) return play_role(argc, argv);
  return run_cases(cases, static_cast<int>(std::size(cases)), argc, argv, case_limit);
}
