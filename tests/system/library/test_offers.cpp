// What a program is told that OpenGL has, and whether it gets it: test_offers.exe KIND FOLDER [CASE]...
// KIND is what this process has to be: plain, on the system's own library; bypassed; basic, spread in the basic mode;
// or extended, spread in the extended one. FOLDER has the public registry, gl.xml and wgl.xml.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include <windows.h>
// GL's headers need the one above.
#include <GL/gl.h>

#include <GL/glext.h>
#include <GL/wglext.h>

#include "parts.h"
#include "registry.h"
#include "support/check.h"
#include "window.h"

namespace {

constexpr int case_limit = 60;      // s
constexpr size_t least_names = 50;  // any host of today has more
constexpr place over_all = {560, 270, 500, 370};

const char* kind;
registry known;
gl_window window;

bool is(const char* word) {
  return strcmp(kind, word) == 0;
}

void check(bool holds, const std::string& name, const char* words) {
  if (!holds) fail(__FILE__, __LINE__, name.c_str(), words);
}

bool is_spread() {
  return is("basic") || is("extended");
}

template <class Function>
Function* found(const char* name) {
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(wglGetProcAddress(name)));
}

// As programs look: functions of OpenGL 1.1 are exported, the others found by name.
bool has_function(const std::string& name) {
  return wglGetProcAddress(name.c_str()) || GetProcAddress(GetModuleHandleA("opengl32.dll"), name.c_str());
}

// The system's own answer, from the library below ours.
bool system_has_function(const std::string& name) {
  const HMODULE host = GetModuleHandleA("opengl32host.dll");
  if (!host) return has_function(name);
  auto* ask =
      reinterpret_cast<PROC(WINAPI*)(LPCSTR)>(reinterpret_cast<void*>(GetProcAddress(host, "wglGetProcAddress")));
  return ask(name.c_str()) || GetProcAddress(host, name.c_str());
}

std::vector<std::string> words_of(const char* text) {
  std::vector<std::string> words;
  std::string rest = text ? text : "";
  for (char* word = strtok(rest.data(), " "); word; word = strtok(nullptr, " ")) words.emplace_back(word);
  return words;
}

const char* gl_string(GLenum name) {
  const GLubyte* text = glGetString(name);
  return text ? reinterpret_cast<const char*>(text) : "";
}

std::vector<std::string> gl_names() {
  return words_of(gl_string(GL_EXTENSIONS));
}

std::vector<std::string> wgl_names() {
  auto* ask = found<const char*(HDC)>("wglGetExtensionsStringARB");
  auto* ask_older = found<const char*()>("wglGetExtensionsStringEXT");
  CHECK(ask && ask_older);
  if (!ask || !ask_older) return {};
  const char* names = ask(window.hdc);
  CHECK(strcmp(names, ask_older()) == 0);
  return words_of(names);
}

bool offers(const std::vector<std::string>& names, const char* wanted) {
  for (const std::string& name : names) {
    if (name == wanted) return true;
  }
  return false;
}

// The system may lack a function of a name that it offers. A process that is spread is not told of such a name.
void check_functions(const std::string& name) {
  const auto entry = known.extensions.find(name);
  if (entry == known.extensions.end()) {
    check(!is_spread(), name, " is not in the registry");
    return;
  }
  for (const std::string& function : entry->second) {
    if (!has_function(function) && (is_spread() || system_has_function(function)))
      fail(__FILE__, __LINE__, (name + " is offered, " + function).c_str(), " is missing");
  }
}

void functions_of_names() {
  const std::vector<std::string> gl = gl_names(), wgl = wgl_names();
  printf("%u names of GL, %u of WGL\n", static_cast<unsigned>(gl.size()), static_cast<unsigned>(wgl.size()));
  CHECK(gl.size() > least_names);
  CHECK(wgl.size() > 5);
  for (const std::string& name : gl) check_functions(name);
  for (const std::string& name : wgl) check_functions(name);
}

void names_one_by_one() {
  auto* ask = found<const GLubyte*(GLenum, GLuint)>("glGetStringi");
  GLint count = 0;
  glGetIntegerv(GL_NUM_EXTENSIONS, &count);
  const std::vector<std::string> names = gl_names();
  std::set<std::string> all(names.begin(), names.end()), seen;
  for (GLuint i = 0; i < static_cast<GLuint>(count); ++i) {
    const GLubyte* name = ask(GL_EXTENSIONS, i);
    check(name != nullptr, std::to_string(i), " has no name");
    if (name) seen.insert(reinterpret_cast<const char*>(name));
  }
  CHECK_EQUAL(seen.size(), count);
  // The system's string may have names that it does not number.
  CHECK(std::includes(all.begin(), all.end(), seen.begin(), seen.end()));
  CHECK(ask(GL_EXTENSIONS, static_cast<GLuint>(count)) == nullptr);
  CHECK_EQUAL(glGetError(), GL_INVALID_VALUE);
  GLfloat as_float = 0;
  GLdouble as_double = 0;
  glGetFloatv(GL_NUM_EXTENSIONS, &as_float);
  glGetDoublev(GL_NUM_EXTENSIONS, &as_double);
  CHECK_EQUAL(as_float, count);
  CHECK_EQUAL(as_double, count);
}

struct version {
  int major, minor;
  auto operator<=>(const version&) const = default;
};

version version_in(const char* text) {
  version read{};
  CHECK_EQUAL(sscanf(text, "%d.%d", &read.major, &read.minor), 2);
  return read;
}

void functions_of_the_version() {
  const version told = version_in(gl_string(GL_VERSION));
  printf("version %s, shading language %s\n", gl_string(GL_VERSION), gl_string(GL_SHADING_LANGUAGE_VERSION));
  for (const auto& [number, functions] : known.versions) {
    if (version_in(number.c_str()) > told) continue;
    for (const std::string& function : functions) {
      if (!has_function(function) && (is_spread() || system_has_function(function)))
        fail(__FILE__, __LINE__, (number + " is told, " + function).c_str(), " is missing");
    }
  }
}

// The newest version whose functions all have handlers.
constexpr version newest_extended = {4, 3};

// Each version of OpenGL from 3.3 on has a shading language of its own number; those before are a table.
version language_of(version of) {
  if (of == version{3, 0}) return {1, 30};
  if (of == version{3, 1}) return {1, 40};
  if (of == version{3, 2}) return {1, 50};
  return {of.major, of.minor * 10};
}

void numbers_agree() {
  const version told = version_in(gl_string(GL_VERSION));
  version asked{};
  glGetIntegerv(GL_MAJOR_VERSION, &asked.major);
  glGetIntegerv(GL_MINOR_VERSION, &asked.minor);
  CHECK(asked == told);
  GLfloat major = 0;
  GLdouble minor = 0;
  GLboolean is_any = 0, has_minor = 2;
  glGetFloatv(GL_MAJOR_VERSION, &major);
  glGetDoublev(GL_MINOR_VERSION, &minor);
  glGetBooleanv(GL_MAJOR_VERSION, &is_any);
  glGetBooleanv(GL_MINOR_VERSION, &has_minor);
  CHECK_EQUAL(major, told.major);
  CHECK_EQUAL(minor, told.minor);
  CHECK_EQUAL(is_any, GL_TRUE);
  CHECK_EQUAL(has_minor, told.minor != 0);
  CHECK(version_in(gl_string(GL_SHADING_LANGUAGE_VERSION)) == language_of(told));
  CHECK_EQUAL(glGetError(), GL_NO_ERROR);
  if (is("extended")) CHECK(told <= newest_extended);
  if (!is("basic")) return;
  CHECK(told <= (version{3, 1}));
  // Without that name programs take 3.1 for a version that has no fixed functions.
  if (told == version{3, 1}) CHECK(offers(gl_names(), "GL_ARB_compatibility"));
}

// Those that were seen to end programs, or to show them something else.
void known_traps() {
  const std::vector<std::string> names = gl_names();
  check(!(is_spread() && offers(names, "GL_MESA_pack_invert")), "GL_MESA_pack_invert", " is offered");
  for (const char* trap : {"GL_NV_conditional_render", "GL_ARB_vertex_type_2_10_10_10_rev", "GL_ARB_sync"}) {
    check(!(is("basic") && offers(names, trap)), trap, " is offered");
  }
  for (const char* wanted : {"GL_ARB_multitexture", "GL_ARB_vertex_buffer_object", "GL_ARB_framebuffer_object",
                             "GL_EXT_texture_filter_anisotropic", "GL_ARB_occlusion_query"}) {
    check(offers(names, wanted), wanted, " is not offered");
  }
}

// The one that a program asks first, and those that only add attributes to it.
const char* const creation_names[] = {"WGL_ARB_create_context", "WGL_ARB_create_context_profile",
                                      "WGL_ARB_create_context_robustness", "WGL_ARB_create_context_no_error",
                                      "WGL_EXT_create_context_es2_profile"};

void draw_in_core_context(HGLRC core) {
  CHECK(wglMakeCurrent(window.hdc, core));
  CHECK(version_in(gl_string(GL_VERSION)) >= (version{3, 3}));
  GLint profile = 0;
  glGetIntegerv(GL_CONTEXT_PROFILE_MASK, &profile);
  CHECK_EQUAL(profile, GL_CONTEXT_CORE_PROFILE_BIT);
  glClearColor(0, 1, 0, 1);
  glClear(GL_COLOR_BUFFER_BIT);
  GLubyte pixel[4] = {};
  glReadPixels(10, 10, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
  CHECK(pixel[0] == 0 && pixel[1] == 255 && pixel[2] == 0);
  CHECK_EQUAL(glGetError(), GL_NO_ERROR);
  CHECK(SwapBuffers(window.hdc));
}

// A version that no context can have.
version beyond_offer() {
  if (is("extended")) return {newest_extended.major, newest_extended.minor + 1};
  return {5, 0};
}

void contexts_with_attributes() {
  auto* create = found<HGLRC WINAPI(HDC, HGLRC, const int*)>("wglCreateContextAttribsARB");
  const std::vector<std::string> names = wgl_names();
  if (is("basic")) {
    CHECK(!create);
    for (const char* name : creation_names) check(!offers(names, name), name, " is offered");
    return;
  }
  CHECK(offers(names, creation_names[0]) && offers(names, creation_names[1]));
  CHECK(create != nullptr);
  if (!create) return;
  const int attributes[][2] = {{WGL_CONTEXT_MAJOR_VERSION_ARB, 3},
                               {WGL_CONTEXT_MINOR_VERSION_ARB, 3},
                               {WGL_CONTEXT_PROFILE_MASK_ARB, WGL_CONTEXT_CORE_PROFILE_BIT_ARB},
                               {0, 0}};
  const HGLRC core = create(window.hdc, nullptr, attributes[0]);
  CHECK(core != nullptr);
  if (core) draw_in_core_context(core);
  make_current(window);
  if (core) CHECK(wglDeleteContext(core));
  for (const version wanted : {version{9, 0}, beyond_offer()}) {
    const int impossible[] = {WGL_CONTEXT_MAJOR_VERSION_ARB, wanted.major, WGL_CONTEXT_MINOR_VERSION_ARB, wanted.minor,
                              0};
    CHECK(!create(window.hdc, nullptr, impossible));
  }
}

// What is below ours, in the same process.
void as_the_system_says() {
  if (!is("bypassed")) return;
  const HMODULE host = GetModuleHandleA("opengl32host.dll");
  CHECK(host != nullptr);
  if (!host) return;
  glFlush();  // a context of ours is the system's when a call needs it
  const auto of_host = [host](const char* name) { return reinterpret_cast<void*>(GetProcAddress(host, name)); };
  auto* get_string = reinterpret_cast<const GLubyte*(WINAPI*)(GLenum)>(of_host("glGetString"));
  auto* find = reinterpret_cast<PROC(WINAPI*)(LPCSTR)>(of_host("wglGetProcAddress"));
  auto* get_names =
      reinterpret_cast<const char*(WINAPI*)(HDC)>(reinterpret_cast<void*>(find("wglGetExtensionsStringARB")));
  for (GLenum name : {GL_VERSION, GL_SHADING_LANGUAGE_VERSION, GL_EXTENSIONS, GL_RENDERER}) {
    CHECK(strcmp(gl_string(name), reinterpret_cast<const char*>(get_string(name))) == 0);
  }
  CHECK(wgl_names() == words_of(get_names(window.hdc)));
}

constexpr test_case cases[] = {{"functions_of_names", functions_of_names},
                               {"names_one_by_one", names_one_by_one},
                               {"functions_of_the_version", functions_of_the_version},
                               {"numbers_agree", numbers_agree},
                               {"known_traps", known_traps},
                               {"contexts_with_attributes", contexts_with_attributes},
                               {"as_the_system_says", as_the_system_says}};

}  // namespace

int main(int count, char** words) {
  if (count < 3) {
    printf("usage: test_offers plain|bypassed|basic|extended FOLDER [CASE]...\n");
    return 2;
  }
  kind = words[1];
  known = read_registry(words[2]);
  window = make_window(over_all);
  CHECK_EQUAL(!parts_of(window.hwnd).empty(), is_spread());
  CHECK(is_spread() || is("bypassed") || is("plain"));
  return run_cases(cases, static_cast<int>(std::size(cases)), count - 2, words + 2, case_limit);
}
