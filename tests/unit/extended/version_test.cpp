// What a program of the extended mode is told that OpenGL has: a version and names all of whose functions it can have.
#include <algorithm>
#include <cstring>
#include <fstream>
#include <map>
#include <mutex>
#include <set>
#include <sstream>

#include "extended/offered_names.h"
#include "ops/names.h"
#include "ops/offered_version.h"
#include "support/library.h"

namespace {

// What the system says of itself.
struct system_facts {
  std::string version = "4.5 (Compatibility Profile) Mesa 22.3.6";
  std::string language = "4.50 core";
  GLint major = 4;
  GLint minor = 5;
  std::vector<std::string> names;
  bool knows_numbers = true;

  std::string all_names() const {
    std::string all;
    for (const std::string& name : names) all += name + " ";
    return all;
  }
};

struct version_test : library::process_test, testing::WithParamInterface<std::pair<library::path, bool>> {
  void start(bool extended = true) {
    const auto [way, mirrors] = GetParam();
    library::start({.way = way, .query_on_app_thread = mirrors, .extended = extended});
    library::start_rendering();
    answer();
    driver::clear_calls();
  }

  void answer() {
    all = system.all_names();
    driver::on_call<glGetString_op>([this](driver::live_call& live) {
      live.answered = true;
      const auto name = static_cast<GLenum>(live.what.arguments[0]);
      live.result = driver::bits_of(name == GL_VERSION                    ? system.version.c_str()
                                    : name == GL_SHADING_LANGUAGE_VERSION ? system.language.c_str()
                                    : name == GL_EXTENSIONS               ? all.c_str()
                                                                          : "of the system");
    });
    driver::on_call<glGetStringi_op>([this](driver::live_call& live) {
      live.answered = true;
      const u64 index = live.what.arguments[1];
      live.result = driver::bits_of(index < system.names.size() ? system.names[index].c_str() : nullptr);
    });
    driver::on_call<glGetIntegerv_op>([this](driver::live_call& live) {
      auto* value = reinterpret_cast<GLint*>(live.what.arguments[1]);
      const auto name = static_cast<GLenum>(live.what.arguments[0]);
      if (!system.knows_numbers) return;
      // Where no context follows, each part answers into the program's memory.
      const std::lock_guard guard(answering);
      if (name == GL_MAJOR_VERSION) *value = system.major;
      if (name == GL_MINOR_VERSION) *value = system.minor;
      if (name == GL_NUM_EXTENSIONS) *value = static_cast<GLint>(system.names.size());
      if (name == GL_MAX_TEXTURE_SIZE) *value = 16384;
    });
  }

  system_facts system;
  std::string all;
  std::mutex answering;
};
INSTANTIATE_TEST_SUITE_P(, version_test,
                         testing::Values(std::pair(library::path::threaded, true),
                                         std::pair(library::path::threaded, false),
                                         std::pair(library::path::sequential, true)));

std::string text_of(GLenum name) {
  return reinterpret_cast<const char*>(osw_glGetString(name));
}

GLint number_of(GLenum name) {
  GLint number = -7;
  osw_glGetIntegerv(name, &number);
  return number;
}

std::string newest() {
  return std::to_string(newest_offered_version().major) + "." + std::to_string(newest_offered_version().minor);
}

// ---- the version ----

TEST_P(version_test, a_newer_one_is_cut_in_each_form_of_the_query) {
  start();
  const offered_version& offered = newest_offered_version();
  ASSERT_LT(offered.major * 10 + offered.minor, 45);
  EXPECT_EQ(text_of(GL_VERSION), newest() + " (Compatibility Profile) Mesa 22.3.6");
  const std::string language = std::to_string(offered.language / 100) + "." + std::to_string(offered.language % 100);
  EXPECT_EQ(text_of(GL_SHADING_LANGUAGE_VERSION), language + " core");
  EXPECT_EQ(number_of(GL_MAJOR_VERSION), offered.major);
  EXPECT_EQ(number_of(GL_MINOR_VERSION), offered.minor);
  GLfloat as_float = -1;
  GLdouble as_double = -1;
  GLint64 as_long = -1;
  GLboolean as_boolean = 7;
  osw_glGetFloatv(GL_MAJOR_VERSION, &as_float);
  osw_glGetDoublev(GL_MINOR_VERSION, &as_double);
  osw_glGetInteger64v(GL_MAJOR_VERSION, &as_long);
  osw_glGetBooleanv(GL_MAJOR_VERSION, &as_boolean);
  EXPECT_EQ(as_float, offered.major);
  EXPECT_EQ(as_double, offered.minor);
  EXPECT_EQ(as_long, offered.major);
  EXPECT_EQ(as_boolean, GL_TRUE);
}

TEST_P(version_test, one_that_can_be_kept_stays) {
  system.version = "2.1 Mesa";
  system.language = "1.20";
  system.major = 2;
  system.minor = 1;
  start();
  EXPECT_EQ(osw_glGetString(GL_VERSION), reinterpret_cast<const GLubyte*>(system.version.c_str()));
  EXPECT_EQ(text_of(GL_SHADING_LANGUAGE_VERSION), "1.20");
  EXPECT_EQ(number_of(GL_MAJOR_VERSION), 2);
  EXPECT_EQ(number_of(GL_MINOR_VERSION), 1);
}

TEST_P(version_test, a_text_of_another_kind_stays) {
  system.version = "OpenGL ES 3.2 Mesa";
  start();
  EXPECT_EQ(text_of(GL_VERSION), "OpenGL ES 3.2 Mesa");
  EXPECT_EQ(text_of(GL_VENDOR), "of the system");
}

TEST_P(version_test, an_answer_is_the_same_text_each_time) {
  start();
  EXPECT_EQ(osw_glGetString(GL_VERSION), osw_glGetString(GL_VERSION));
}

TEST_P(version_test, what_the_system_does_not_know_is_not_written) {
  system.knows_numbers = false;
  start();
  for (const GLenum name : {GL_MAJOR_VERSION, GL_MINOR_VERSION, GL_NUM_EXTENSIONS}) EXPECT_EQ(number_of(name), -7);
}

TEST_P(version_test, other_numbers_are_asked_as_ever) {
  start();
  EXPECT_EQ(number_of(GL_MAX_TEXTURE_SIZE), 16384);
}

TEST_P(version_test, the_basic_mode_tells_what_the_system_says) {
  system.names = {"GL_ARB_sync", "GL_MESA_pack_invert"};
  start(false);
  EXPECT_EQ(text_of(GL_VERSION), system.version);
  EXPECT_EQ(text_of(GL_SHADING_LANGUAGE_VERSION), system.language);
  EXPECT_EQ(text_of(GL_EXTENSIONS), all);
  EXPECT_EQ(number_of(GL_MAJOR_VERSION), 4);
  EXPECT_EQ(number_of(GL_NUM_EXTENSIONS), 2);
}

// ---- names ----

TEST_P(version_test, names_that_are_withheld_leave_no_gap) {
  system.names = {"GL_MESA_pack_invert",    "GL_ARB_multitexture",    "GL_NO_such",
                  "GL_NV_path_rendering",   "GL_ARB_texture_storage", "GL_EXT_bgra",
                  "GL_ARB_bindless_texture"};
  start();
  EXPECT_EQ(text_of(GL_EXTENSIONS), "GL_ARB_multitexture GL_ARB_texture_storage GL_EXT_bgra ");
  ASSERT_EQ(number_of(GL_NUM_EXTENSIONS), 3);
  std::vector<std::string> numbered;
  for (GLuint i = 0; i < 3; ++i) {
    numbered.emplace_back(reinterpret_cast<const char*>(osw_glGetStringi(GL_EXTENSIONS, i)));
  }
  EXPECT_EQ(numbered, (std::vector<std::string>{"GL_ARB_multitexture", "GL_ARB_texture_storage", "GL_EXT_bgra"}));
  // The system says that there are no more.
  EXPECT_EQ(osw_glGetStringi(GL_EXTENSIONS, 3), nullptr);
  EXPECT_EQ(osw_glGetStringi(GL_EXTENSIONS, 0xFFFFFFFF), nullptr);
}

TEST_P(version_test, no_names_are_no_names) {
  start();
  EXPECT_EQ(text_of(GL_EXTENSIONS), "");
  EXPECT_EQ(number_of(GL_NUM_EXTENSIONS), 0);
  driver::set_result<glGetString_op>(0);
  driver::on_call<glGetString_op>(nullptr);
  EXPECT_EQ(osw_glGetString(GL_EXTENSIONS), nullptr);
}

TEST_P(version_test, other_indexed_strings_are_asked_as_ever) {
  system.names = {"GL_MESA_pack_invert", "other"};
  start();
  EXPECT_STREQ(reinterpret_cast<const char*>(osw_glGetStringi(GL_SHADING_LANGUAGE_VERSION, 1)), "other");
}

TEST_P(version_test, names_of_wgl_are_cut_too) {
  driver::set_extensions("");
  start();
  driver::set_extensions("WGL_ARB_create_context WGL_NV_swap_group WGL_ARB_pbuffer WGL_EXT_create_context_es2_profile");
  EXPECT_STREQ(osw_wglGetExtensionsStringARB(nullptr), "WGL_ARB_create_context WGL_ARB_pbuffer ");
  EXPECT_STREQ(osw_wglGetExtensionsStringEXT(), "WGL_ARB_create_context WGL_ARB_pbuffer ");
  driver::set_extensions(nullptr);
  EXPECT_EQ(osw_wglGetExtensionsStringEXT(), nullptr);
}

// ---- the public registry ----

using function_set = std::set<std::string>;

std::vector<std::string> texts_between(const std::string& text, const std::string& start, const std::string& end) {
  std::vector<std::string> found;
  for (std::size_t at = 0; (at = text.find(start, at)) != std::string::npos;) {
    const std::size_t from = at + start.size(), to = text.find(end, from);
    found.push_back(text.substr(from, to - from));
    at = to;
  }
  return found;
}

std::string registry(const char* file_name) {
  std::ifstream file(std::string("/usr/share/khronos-api/") + file_name);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

// The functions that an element of the registry requires of the desktop's OpenGL.
function_set functions_in(const std::string& element) {
  function_set functions;
  for (const std::string& require : texts_between(element, "<require", "</require>")) {
    const std::string tag = require.substr(0, require.find('>'));
    if (tag.find("api=\"gles") != std::string::npos) continue;
    for (const std::string& command : texts_between(require, "<command name=\"", "\"")) functions.insert(command);
  }
  return functions;
}

std::map<std::string, function_set> extensions_of(const char* file_name, const std::vector<std::string>& apis) {
  std::map<std::string, function_set> extensions;
  const std::string text = registry(file_name);
  // Some elements are one tag.
  for (std::size_t at = 0; (at = text.find("<extension ", at)) != std::string::npos;) {
    const std::size_t next = text.find("<extension ", at + 1);
    const std::string element = text.substr(at, next - at);
    at = next == std::string::npos ? text.size() : next;
    const std::string supported = "|" + texts_between(element, "supported=\"", "\"").at(0) + "|";
    const bool is_ours = std::ranges::any_of(
        apis, [&](const std::string& api) { return supported.find("|" + api + "|") != std::string::npos; });
    if (is_ours) extensions[texts_between(element, "name=\"", "\"").at(0)] = functions_in(element);
  }
  return extensions;
}

struct offered_functions_test : library::process_test {
  void SetUp() override {
    library::start({.extended = true});
    library::start_rendering();
  }
  // The system has everything.
  static bool exists(const std::string& function) {
    if (find_gl_op(function.c_str(), gl_all_count) < 0) driver::set_answer(function.c_str(), 0x123456);
    driver::set_reach(function.c_str(), driver::reach::by_name);
    return osw_wglGetProcAddress(function.c_str()) != nullptr;
  }
  static void expect_exactly(const std::map<std::string, function_set>& extensions, std::size_t least) {
    std::size_t offered = 0;
    for (const auto& [name, functions] : extensions) {
      if (!is_offered(name.c_str(), name.size())) continue;
      ++offered;
      for (const std::string& function : functions) EXPECT_TRUE(exists(function)) << name << ", " << function;
    }
    EXPECT_GT(offered, least);
  }
};

TEST_F(offered_functions_test, each_function_of_an_extension_that_is_offered_is_found) {
  expect_exactly(extensions_of("gl.xml", {"gl", "glcore"}), 300);
  expect_exactly(extensions_of("wgl.xml", {"wgl"}), 20);
}

TEST_F(offered_functions_test, each_function_of_the_version_that_is_offered_is_found) {
  const offered_version& offered = newest_offered_version();
  int versions = 0;
  for (const std::string& element : texts_between(registry("gl.xml"), "<feature api=\"gl\"", "</feature>")) {
    const std::string number = texts_between(element, "number=\"", "\"").at(0);
    if (std::stod(number) > offered.major + offered.minor * 0.1 + 0.01) continue;
    ++versions;
    for (const std::string& function : functions_in(element)) EXPECT_TRUE(exists(function)) << number << function;
  }
  EXPECT_GE(versions, 10);
}

TEST_F(offered_functions_test, a_name_grows_with_the_handlers_of_its_functions) {
  const auto offers = [](const char* name) { return is_offered(name, std::strlen(name)); };
  EXPECT_TRUE(offers("GL_ARB_texture_storage"));
  EXPECT_EQ(offers("GL_ARB_sync"), has_handlers<glFenceSync_op>);
  EXPECT_EQ(offers("GL_ARB_buffer_storage"), has_handlers<glBufferStorage_op>);
  EXPECT_FALSE(offers("GL_MESA_pack_invert"));
  EXPECT_FALSE(offers("GL_ARB_bindless_texture"));
}

}  // namespace
