// What the driver exports and hands out, which host it takes, and how it does as the process's opengl32.dll.
#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <set>
#include <string>

#include "driver.h"
#include "ops/names.h"

namespace {

gl_window window;
HGLRC context;

// The switch is handed out where it is a fast one, and never exported.
constexpr char switch_name[] = "wglFastSwitchContextZ4";
const char* const private_names[] = {"wglGetGLContextZ4", "glViewportOffsetZ4", "glDrawableSizeZ4",
                                     "OswDriverSwitchCount"};

const auto& gl_names = __osw_gl_names;
const auto& wgl_names = __osw_wgl_names;

// The attributes of a context, as the platform's header has them, which names the types of the op lists once more.
constexpr int context_major = 0x2091, context_minor = 0x2092, context_flags = 0x2094, context_profile = 0x9126;
constexpr int debug_flag = 1, core_profile = 1;

constexpr int exported_gl = 336, exported_wgl = 25;

FARPROC exported(const char* name) {
  return GetProcAddress(driver_module, name);
}

FARPROC by_ordinal(int ordinal) {
  return GetProcAddress(driver_module, MAKEINTRESOURCEA(ordinal));
}

PROC found(const char* name) {
  return driver.wglGetProcAddress(name);
}

void exports() {
  for (int i = 0; i < gl_op_count; ++i) {
    const bool wanted = i < exported_gl || strstr(gl_names[i], "Z4") != nullptr;
    if ((exported(gl_names[i]) != nullptr) != wanted)
      fail(__FILE__, __LINE__, gl_names[i], " is wrongly exported or not");
  }
  for (int i = 0; i < wgl_op_count; ++i) {
    const bool is_private = strstr(wgl_names[i], "Z4") != nullptr && strcmp(wgl_names[i], switch_name) != 0;
    const bool wanted = i < exported_wgl || is_private;
    if ((exported(wgl_names[i]) != nullptr) != wanted)
      fail(__FILE__, __LINE__, wgl_names[i], " is wrongly exported or not");
  }
  for (const char* name : private_names) CHECK(exported(name) != nullptr);
  CHECK(exported("GlmfBeginGlsBlock") == by_ordinal(1));
  CHECK(exported("glAccum") == by_ordinal(7));
  CHECK(exported("glDebugEntry") != nullptr);
  CHECK(exported("wglUseFontOutlinesW") == by_ordinal(368));
  for (int ordinal = 1; ordinal <= 372; ++ordinal) CHECK(by_ordinal(ordinal) != nullptr);
  CHECK(by_ordinal(373) == nullptr);
}

// No context: only what needs none.
void names_without_context() {
  for (const char* name : private_names) CHECK(found(name) == exported(name));
  CHECK(found(switch_name) == nullptr);
  CHECK(found("glBindFramebuffer") == nullptr);
  CHECK(found("") == nullptr);
  CHECK(found(nullptr) == nullptr);
}

void make_context() {
  window = make_window(nullptr, 30, 30, 100, 80, true);
  context = driver.wglCreateContext(window.hdc);
  CHECK(driver.wglMakeCurrent(window.hdc, context));
}

// The host's own answers, to compare with.
PROC host_answer(const char* name) {
  char file[260] = "";
  GetEnvironmentVariableA("OSW_DRIVER_HOST", file, sizeof file);
  HMODULE host = GetModuleHandleA(file[0] != 0 ? file : "opengl32host.dll");
  CHECK(host != nullptr);
  const auto ask =
      reinterpret_cast<PROC (*)(LPCSTR)>(reinterpret_cast<__osw_proc>(GetProcAddress(host, "wglGetProcAddress")));
  return ask(name);
}

void names_with_context() {
  driver.glFlush();
  int offered = 0;
  for (int i = exported_gl; i < gl_op_count; ++i) {
    PROC entry = found(gl_names[i]);
    PROC host = host_answer(gl_names[i]);
    const bool is_private = strstr(gl_names[i], "Z4") != nullptr;
    if ((entry != nullptr) != (host != nullptr || is_private))
      fail(__FILE__, __LINE__, gl_names[i], " is not as on the host");
    // The host's pointer would pass the driver by.
    if (entry != nullptr && entry == host) fail(__FILE__, __LINE__, gl_names[i], " is the host's own");
    offered += entry != nullptr;
  }
  CHECK(offered > 500);
  for (int i = exported_wgl; i < wgl_op_count; ++i) {
    const bool is_private = strstr(wgl_names[i], "Z4") != nullptr;
    const bool wanted = host_answer(wgl_names[i]) != nullptr || is_private;
    if ((found(wgl_names[i]) != nullptr) != wanted) fail(__FILE__, __LINE__, wgl_names[i], " is not as on the host");
  }
  CHECK(found("wglCreateContextAttribsARB") != nullptr);
  CHECK(found("glNoSuchFunction") == nullptr);
  CHECK(driver.wglGetDefaultProcAddress("glBindFramebuffer") == found("glBindFramebuffer"));
  if (found("glViewport") != nullptr) CHECK(found("glViewport") == exported("glViewport"));
  bind_extensions();
}

// A function that the driver's lists lack, with arguments of all kinds: the calls reach the host's current context,
// also one that is only noted.
void unlisted_functions() {
  using clear_function = void (*)(GLuint, GLenum, GLint, GLfloat, GLint);
  const auto clear = reinterpret_cast<clear_function>(reinterpret_cast<__osw_proc>(found("glClearNamedFramebufferfi")));
  using range_function = void (*)(GLuint, GLdouble, GLdouble);
  const auto range = reinterpret_cast<range_function>(reinterpret_cast<__osw_proc>(found("glDepthRangeIndexed")));
  using doubles_function = void (*)(GLenum, GLuint, GLdouble*);
  const auto doubles = reinterpret_cast<doubles_function>(reinterpret_cast<__osw_proc>(found("glGetDoublei_v")));
  CHECK(clear != nullptr && range != nullptr && doubles != nullptr);
  if (clear == nullptr || range == nullptr || doubles == nullptr) return;
  // The driver knows the ops of the basic mode.
  for (int op = 0; op < gl_op_count; ++op) {
    CHECK(strcmp(gl_names[op], "glClearNamedFramebufferfi") != 0 && strcmp(gl_names[op], "glDepthRangeIndexed") != 0);
  }
  CHECK(found("glDepthRangeIndexed") == found("glDepthRangeIndexed"));
  CHECK(found("glDepthRangeIndexed") != host_answer("glDepthRangeIndexed"));
  HGLRC second = driver.wglCreateContext(window.hdc);
  CHECK(driver.wglMakeCurrent(window.hdc, second));
  const unsigned long long before = driver.switch_count();
  clear(0, GL_DEPTH_STENCIL, 0, 0.25f, 77);
  CHECK_EQUAL(driver.switch_count() - before, 1);
  GLubyte stencil = 0;
  driver.glReadPixels(3, 4, 1, 1, GL_STENCIL_INDEX, GL_UNSIGNED_BYTE, &stencil);
  CHECK_EQUAL(stencil, 77);
  GLfloat depth = 0;
  driver.glReadPixels(3, 4, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
  CHECK(depth > 0.249f && depth < 0.251f);
  range(0, 0.25, 0.75);
  GLdouble depths[2] = {};
  doubles(GL_DEPTH_RANGE, 0, depths);
  CHECK(depths[0] == 0.25 && depths[1] == 0.75);
  CHECK_EQUAL(driver.glGetError(), GL_NO_ERROR);
  CHECK(driver.wglMakeCurrent(window.hdc, context));
  driver.glGetDoublev(GL_DEPTH_RANGE, depths);
  CHECK(depths[0] == 0 && depths[1] == 1);
  CHECK(driver.wglDeleteContext(second));
}

using name_set = std::set<std::string>;

name_set names_in(const char* text) {
  name_set names;
  std::string rest = text ? text : "";
  for (char* name = strtok(rest.data(), " "); name; name = strtok(nullptr, " ")) names.insert(name);
  return names;
}

name_set gl_extensions() {
  return names_in(reinterpret_cast<const char*>(driver.glGetString(GL_EXTENSIONS)));
}

name_set wgl_extensions() {
  const char* names = driver.wglGetExtensionsStringARB(window.hdc);
  CHECK(names == driver.wglGetExtensionsStringARB(window.hdc));
  CHECK(strcmp(names, driver.wglGetExtensionsStringEXT()) == 0);
  return names_in(names);
}

name_set indexed_extensions() {
  GLint count = 0;
  driver.glGetIntegerv(GL_NUM_EXTENSIONS, &count);
  name_set names;
  for (GLint i = 0; i < count; ++i) {
    const GLubyte* name = driver.glGetStringi(GL_EXTENSIONS, static_cast<GLuint>(i));
    CHECK(name != nullptr);
    if (name) names.insert(reinterpret_cast<const char*>(name));
  }
  CHECK_EQUAL(names.size(), count);
  return names;
}

// The one that programs ask for first, and those that only add attributes to it.
const char* const creation_names[] = {"WGL_ARB_create_context", "WGL_ARB_create_context_profile",
                                      "WGL_ARB_create_context_no_error", "WGL_ARB_create_context_robustness"};

// A process whose contexts have no parts is told what the host says.
void host_strings() {
  const auto hosts =
      reinterpret_cast<const char* (*)(HDC)>(reinterpret_cast<__osw_proc>(host_answer("wglGetExtensionsStringARB")));
  CHECK(wgl_extensions() == names_in(hosts(window.hdc)));
  CHECK(wgl_extensions().count(creation_names[0]) == 1);
  CHECK(gl_extensions().count("GL_ARB_sync") == 1);
  CHECK(indexed_extensions().size() > 50);
  GLint major = 0;
  driver.glGetIntegerv(GL_MAJOR_VERSION, &major);
  CHECK(major > 3);
}

// A context of the core profile, which has other state than those that the driver makes otherwise.
void context_with_attributes() {
  const int attributes[][2] = {
      {context_major, 3}, {context_minor, 3}, {context_profile, core_profile}, {context_flags, debug_flag}, {0, 0}};
  HGLRC core = driver.wglCreateContextAttribsARB(window.hdc, nullptr, attributes[0]);
  CHECK(core != nullptr);
  CHECK(driver.wglMakeCurrent(window.hdc, core));
  CHECK(driver.wglGetCurrentContext() == core);
  CHECK_EQUAL(driver.glGetError(), GL_NO_ERROR);
  // Nor has the driver asked for anything that this profile lacks.
  GLint value = -1;
  driver.glGetIntegerv(GL_DEBUG_LOGGED_MESSAGES, &value);
  CHECK_EQUAL(value, 0);
  driver.glGetIntegerv(GL_CONTEXT_PROFILE_MASK, &value);
  CHECK_EQUAL(value, GL_CONTEXT_CORE_PROFILE_BIT);
  GLint box[4] = {};
  driver.glGetIntegerv(GL_VIEWPORT, box);
  CHECK(box[2] == 100 && box[3] == 80);
  driver.glViewportOffsetZ4(3, 4);
  driver.glViewport(1, 2, 30, 40);
  driver.glGetIntegerv(GL_VIEWPORT, box);
  CHECK(box[0] == 1 && box[1] == 2 && box[2] == 30 && box[3] == 40);
  CHECK_EQUAL(driver.glGetError(), GL_NO_ERROR);
  CHECK(driver.wglMakeCurrent(window.hdc, context));
  CHECK(driver.wglDeleteContext(core));
  const int impossible[] = {context_major, 9, 0};
  CHECK(driver.wglCreateContextAttribsARB(window.hdc, nullptr, impossible) == nullptr);
}

bool is_part_of(const name_set& names, const name_set& all) {
  return std::includes(all.begin(), all.end(), names.begin(), names.end());
}

void strings_of_a_spread_process() {
  const name_set gl = gl_extensions(), indexed = indexed_extensions(), wgl = wgl_extensions();
  make_part_context(window);
  const name_set told_gl = gl_extensions(), told_indexed = indexed_extensions(), told_wgl = wgl_extensions();
  CHECK(is_part_of(told_gl, gl) && is_part_of(told_indexed, indexed) && is_part_of(told_wgl, wgl));
  for (const char* name : {"GL_NV_conditional_render", "GL_MESA_pack_invert", "GL_ARB_sync"}) {
    CHECK(indexed.count(name) == 1 && told_gl.count(name) == 0 && told_indexed.count(name) == 0);
  }
  CHECK(told_gl.count("GL_ARB_multitexture") == 1 && told_indexed.count("GL_ARB_multitexture") == 1);
  CHECK(told_wgl.count("WGL_ARB_pixel_format") == 1);
  for (const char* name : creation_names) CHECK(told_wgl.count(name) == 0);
  CHECK(found("wglCreateContextAttribsARB") == nullptr);
  CHECK(strncmp(reinterpret_cast<const char*>(driver.glGetString(GL_VERSION)), "3.1 ", 4) == 0);
  CHECK(strncmp(reinterpret_cast<const char*>(driver.glGetString(GL_SHADING_LANGUAGE_VERSION)), "1.40", 4) == 0);
  GLint major = 0, minor = 0;
  driver.glGetIntegerv(GL_MAJOR_VERSION, &major);
  driver.glGetIntegerv(GL_MINOR_VERSION, &minor);
  CHECK(major == 3 && minor == 1);
  CHECK_EQUAL(driver.glGetError(), GL_NO_ERROR);
}

// Runs this program again, in a folder and with an environment of its own, for one of the parts below. Returns its
// status.
DWORD run_again(const char* folder, const char* arguments) {
  char program[MAX_PATH], command[3 * MAX_PATH];
  GetModuleFileNameA(nullptr, program, MAX_PATH);
  snprintf(command, sizeof command, "\"%s%s\" %s", folder, strrchr(program, '\\') + 1, arguments);
  STARTUPINFOA startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process = {};
  if (!CreateProcessA(nullptr, command, nullptr, nullptr, TRUE, 0, nullptr, folder[0] != 0 ? folder : nullptr, &startup,
                      &process)) {
    fail(__FILE__, __LINE__, command, " cannot be started");
    return 99;
  }
  DWORD status = 98;
  if (WaitForSingleObject(process.hProcess, 40000) != WAIT_OBJECT_0) TerminateProcess(process.hProcess, 97);
  WaitForSingleObject(process.hProcess, 5000);
  GetExitCodeProcess(process.hProcess, &status);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return status;
}

// A folder with this program and the driver under the names given.
void stage(char* folder, const char* name, const char* driver_name) {
  char program[MAX_PATH], beside[MAX_PATH], target[2 * MAX_PATH];
  GetModuleFileNameA(nullptr, program, MAX_PATH);
  strcpy(beside, program);
  strrchr(beside, '\\')[1] = 0;
  snprintf(folder, MAX_PATH, "%s%s\\", beside, name);
  CreateDirectoryA(folder, nullptr);
  snprintf(target, sizeof target, "%s%s", folder, strrchr(program, '\\') + 1);
  CHECK(CopyFileA(program, target, FALSE));
  snprintf(target, sizeof target, "%s%s", folder, driver_name);
  strcat(beside, "opengl32sys.dll");
  CHECK(CopyFileA(beside, target, FALSE));
}

void as_opengl32() {
  char folder[MAX_PATH];
  stage(folder, "as-opengl32", "opengl32.dll");
  CHECK_EQUAL(run_again(folder, "--as-opengl32"), 0);
}

void missing_host() {
  char before[260] = "";
  GetEnvironmentVariableA("OSW_DRIVER_HOST", before, sizeof before);
  SetEnvironmentVariableA("OSW_DRIVER_HOST", "no-such-library.dll");
  CHECK_EQUAL(run_again("", "--missing-host"), 0);
  // The driver itself, which would call itself for every call.
  char own[MAX_PATH];
  CHECK(GetModuleFileNameA(driver_module, own, MAX_PATH) != 0);
  SetEnvironmentVariableA("OSW_DRIVER_HOST", own);
  CHECK_EQUAL(run_again("", "--missing-host"), 0);
  SetEnvironmentVariableA("OSW_DRIVER_HOST", before[0] != 0 ? before : nullptr);
}

void default_host() {
  char before[260] = "";
  GetEnvironmentVariableA("OSW_DRIVER_HOST", before, sizeof before);
  SetEnvironmentVariableA("OSW_DRIVER_HOST", nullptr);
  CHECK_EQUAL(run_again("", "--default-host"), 0);
  SetEnvironmentVariableA("OSW_DRIVER_HOST", before[0] != 0 ? before : nullptr);
}

// The library's switch of its modes.
DWORD run_with_switch(const char* value, const char* arguments) {
  SetEnvironmentVariableA("OSW_EXTENDED", value);
  const DWORD status = run_again("", arguments);
  SetEnvironmentVariableA("OSW_EXTENDED", nullptr);
  return status;
}

void modes() {
  for (const char* value : {"1", " 2 "}) CHECK_EQUAL(run_with_switch(value, "--extended"), 0);
  for (const char* value : {"0", "yes", "1x"}) CHECK_EQUAL(run_with_switch(value, "--basic"), 0);
}

const test_case cases[] = {
    {"exports", exports},
    {"names-without-context", names_without_context},
    {"context", make_context},
    {"names-with-context", names_with_context},
    {"unlisted-functions", unlisted_functions},
    {"host-strings", host_strings},
    {"context-with-attributes", context_with_attributes},
    {"as-opengl32", as_opengl32},
    {"missing-host", missing_host},
    {"default-host", default_host},
    {"strings-of-a-spread-process", strings_of_a_spread_process},
    {"modes", modes},
};

// In the extended mode the library itself withholds what it cannot keep.
void strings_of_an_extended_process() {
  make_context();
  bind_extensions();
  const name_set gl = gl_extensions(), indexed = indexed_extensions(), wgl = wgl_extensions();
  const std::string version = reinterpret_cast<const char*>(driver.glGetString(GL_VERSION));
  make_part_context(window);
  CHECK(gl_extensions() == gl && indexed_extensions() == indexed && wgl_extensions() == wgl);
  CHECK(version == reinterpret_cast<const char*>(driver.glGetString(GL_VERSION)));
  CHECK(found("wglCreateContextAttribsARB") != nullptr);
  CHECK_EQUAL(driver.glGetError(), GL_NO_ERROR);
}

void strings_of_a_basic_process() {
  make_context();
  bind_extensions();
  strings_of_a_spread_process();
}

// gdi32's functions, which call whatever opengl32.dll the process has.
void draw_through_gdi32() {
  WNDCLASSA plain = {};
  plain.lpfnWndProc = DefWindowProcA;
  plain.lpszClassName = "gdi";
  RegisterClassA(&plain);
  HWND hwnd = CreateWindowExA(0, "gdi", "", WS_POPUP | WS_VISIBLE, 10, 10, 60, 50, nullptr, nullptr, nullptr, nullptr);
  HDC hdc = GetDC(hwnd);
  PIXELFORMATDESCRIPTOR wanted = {};
  wanted.nSize = sizeof wanted;
  wanted.nVersion = 1;
  wanted.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;
  wanted.cColorBits = 24;
  const int format = ChoosePixelFormat(hdc, &wanted);
  CHECK(format != 0);
  CHECK(DescribePixelFormat(hdc, format, sizeof wanted, &wanted) != 0);
  CHECK(SetPixelFormat(hdc, format, &wanted));
  CHECK_EQUAL(GetPixelFormat(hdc), format);
  HGLRC made = driver.wglCreateContext(hdc);
  CHECK(driver.wglMakeCurrent(hdc, made));
  driver.glClear(GL_COLOR_BUFFER_BIT);
  const unsigned long long before = driver.switch_count();
  CHECK(SwapBuffers(hdc));
  CHECK_EQUAL(driver.switch_count(), before);
  CHECK(driver.wglDeleteContext(made));
  CHECK(found("glBindFramebuffer") == nullptr);
}

// Everything answers 0, and nothing faults.
void call_without_host() {
  HDC hdc = GetDC(nullptr);
  PIXELFORMATDESCRIPTOR wanted = {};
  CHECK_EQUAL(driver.wglChoosePixelFormat(hdc, &wanted), 0);
  CHECK(driver.wglCreateContext(hdc) == nullptr);
  CHECK(!driver.wglMakeCurrent(hdc, reinterpret_cast<HGLRC>(1)));
  CHECK(!driver.wglMakeCurrent(nullptr, nullptr));
  CHECK(!driver.wglSwapBuffers(hdc));
  CHECK_EQUAL(driver.glGetError(), 0);
  CHECK(driver.glGetString(GL_VERSION) == nullptr);
  driver.glClear(GL_COLOR_BUFFER_BIT);
  CHECK(found("glBindFramebuffer") == nullptr);
  CHECK(found("wglGetGLContextZ4") != nullptr);
  ReleaseDC(nullptr, hdc);
}

const test_case gdi_cases[] = {{"through-gdi32", draw_through_gdi32}};
const test_case hostless_cases[] = {{"without-host", call_without_host}};
const test_case extended_cases[] = {{"extended", strings_of_an_extended_process}};
const test_case basic_cases[] = {{"basic", strings_of_a_basic_process}};
const test_case default_cases[] = {{"default-host", [] {
                                      make_context();
                                      CHECK(driver.glGetString(GL_VERSION) != nullptr);
                                      CHECK(GetModuleHandleA("opengl32host.dll") != nullptr);
                                    }}};

}  // namespace

int main(int argc, char** argv) {
  const bool again = argc == 2 && strncmp(argv[1], "--", 2) == 0;
  load_driver(again && strcmp(argv[1], "--as-opengl32") == 0 ? "opengl32.dll" : "opengl32sys.dll");
  if (!again) return run_cases(cases, sizeof cases / sizeof *cases, argc, argv, 100);
  if (strcmp(argv[1], "--as-opengl32") == 0) return run_cases(gdi_cases, 1, 1, argv, 30);
  if (strcmp(argv[1], "--missing-host") == 0) return run_cases(hostless_cases, 1, 1, argv, 30);
  if (strcmp(argv[1], "--extended") == 0) return run_cases(extended_cases, 1, 1, argv, 30);
  if (strcmp(argv[1], "--basic") == 0) return run_cases(basic_cases, 1, 1, argv, 30);
  return run_cases(default_cases, 1, 1, argv, 30);
}
