// Contexts of the core profile: nothing is drawn without an array object, a buffer and a program.
#include <cstring>
#include <string>

#include "painting.h"

#include <GL/wglext.h>

namespace {

constexpr place over_all = {520, 250, 561, 403};  // over 800,450

constexpr const char* vertex_source =
    "#version 330 core\n"
    "layout(location = 0) in vec2 corner; layout(location = 1) in vec3 tint;\n"
    "uniform vec2 step; flat out vec3 shade;\n"
    "void main() {\n"
    "  gl_Position = vec4(corner + step * float(gl_InstanceID), 0.1 * float(gl_InstanceID), 1);\n"
    "  shade = tint / float(1 + gl_InstanceID);\n"
    "}\n";
constexpr const char* fragment_source =
    "#version 330 core\n"
    "flat in vec3 shade; out vec4 colour;\n"
    "void main() { colour = vec4(shade * (0.5 + 0.5 * step(20.0, mod(gl_FragCoord.x + gl_FragCoord.y, 40.0))), 1); }\n";

struct vertex {
  GLfloat corner[2];
  GLfloat tint[3];
};
constexpr vertex vertices[] = {{{-0.9f, -0.8f}, {1, 0.2f, 0.1f}},
                               {{0.1f, -0.7f}, {0.3f, 1, 0.2f}},
                               {{-0.8f, 0.3f}, {0.2f, 0.3f, 1}},
                               {{0.2f, 0.25f}, {1, 1, 0.3f}}};
constexpr GLushort indices[] = {0, 1, 2, 2, 1, 3};

HGLRC create_core(HDC hdc, HGLRC share) {
  auto* create = reinterpret_cast<PFNWGLCREATECONTEXTATTRIBSARBPROC>(
      reinterpret_cast<void*>(wglGetProcAddress("wglCreateContextAttribsARB")));
  constexpr int attributes[] = {
      WGL_CONTEXT_MAJOR_VERSION_ARB,    3, WGL_CONTEXT_MINOR_VERSION_ARB, 3, WGL_CONTEXT_PROFILE_MASK_ARB,
      WGL_CONTEXT_CORE_PROFILE_BIT_ARB, 0};
  CHECK(create != nullptr);
  const HGLRC core = create ? create(hdc, share, attributes) : nullptr;
  CHECK(core != nullptr);
  return core;
}

GLuint make_program(const gl_extensions& gl) {
  const GLuint program = gl.glCreateProgram();
  for (const auto& [kind, source] :
       {std::pair(GLenum{GL_VERTEX_SHADER}, vertex_source), std::pair(GLenum{GL_FRAGMENT_SHADER}, fragment_source)}) {
    const GLuint shader = gl.glCreateShader(kind);
    gl.glShaderSource(shader, 1, &source, nullptr);
    gl.glCompileShader(shader);
    gl.glAttachShader(program, shader);
    gl.glDeleteShader(shader);
  }
  gl.glLinkProgram(program);
  GLint good = 0;
  gl.glGetProgramiv(program, GL_LINK_STATUS, &good);
  CHECK_EQUAL(good, 1);
  return program;
}

// What the bound buffers hold, in an array object of the context's own.
GLuint make_array_object(const gl_extensions& gl, const GLuint (&buffers)[2]) {
  GLuint name;
  gl.glGenVertexArrays(1, &name);
  gl.glBindVertexArray(name);
  gl.glBindBuffer(GL_ARRAY_BUFFER, buffers[0]);
  gl.glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers[1]);
  gl.glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, sizeof(vertex), nullptr);
  gl.glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, sizeof(vertex),
                           reinterpret_cast<const void*>(offsetof(vertex, tint)));
  gl.glEnableVertexAttribArray(0);
  gl.glEnableVertexAttribArray(1);
  return name;
}

void clear_to(float red, float green, float blue) {
  glClearColor(red, green, blue, 1);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

void draw_and_show(const gl_window& window, const gl_extensions& gl, GLsizei instances, const char* step) {
  gl.glDrawElementsInstanced(GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, nullptr, instances);
  show(window, step);
}

void move_a_corner(const gl_extensions& gl) {
  auto* written = static_cast<vertex*>(gl.glMapBufferRange(GL_ARRAY_BUFFER, sizeof(vertex), sizeof(vertex),
                                                           GL_MAP_WRITE_BIT | GL_MAP_INVALIDATE_RANGE_BIT));
  CHECK(written != nullptr);
  if (written) *written = {{0.3f, -0.2f}, {0.9f, 0.6f, 1}};
  CHECK_EQUAL(gl.glUnmapBuffer(GL_ARRAY_BUFFER), GL_TRUE);
}

void core_profile() {
  begin_scene(__func__);
  if (is_basic()) return;  // it is not offered there
  gl_window window = make_window(over_all);
  const gl_extensions gl = find_extensions();
  const HGLRC plain = window.context;
  window.context = create_core(window.hdc, nullptr);
  make_current(window);
  CHECK(wglDeleteContext(plain));
  const GLuint program = make_program(gl);
  gl.glUseProgram(program);
  gl.glUniform2f(gl.glGetUniformLocation(program, "step"), 0.31f, 0.27f);
  GLuint buffers[2];
  gl.glGenBuffers(2, buffers);
  const GLuint array = make_array_object(gl, buffers);
  gl.glBufferData(GL_ARRAY_BUFFER, sizeof vertices, vertices, GL_DYNAMIC_DRAW);
  gl.glBufferData(GL_ELEMENT_ARRAY_BUFFER, sizeof indices, indices, GL_STATIC_DRAW);
  glEnable(GL_DEPTH_TEST);
  clear_to(0.1f, 0.1f, 0.2f);
  draw_and_show(window, gl, 3, "instances");
  move_a_corner(gl);
  clear_to(0.2f, 0.1f, 0.1f);
  draw_and_show(window, gl, 4, "mapped");

  gl_window other = window;
  other.context = create_core(window.hdc, window.context);
  make_current(other);
  gl.glUseProgram(program);
  make_array_object(gl, buffers);
  clear_to(0.1f, 0.2f, 0.1f);
  draw_and_show(other, gl, 2, "shared");
  make_current(window);
  CHECK(wglDeleteContext(other.context));
  gl.glBindVertexArray(0);
  clear_to(0.3f, 0.3f, 0.3f);
  gl.glDrawElementsInstanced(GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, nullptr, 1);
  note("without an array object 0x%x", glGetError());
  gl.glBindVertexArray(array);
  draw_and_show(window, gl, 1, "again");
  gl.glDeleteVertexArrays(1, &array);
  gl.glDeleteBuffers(2, buffers);
  gl.glDeleteProgram(program);
  destroy_window(window);
}

}  // namespace

const scene_group core_scenes = {"core", {{"core_profile", core_profile}}};
