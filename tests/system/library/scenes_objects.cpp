// What an application keeps in GL's objects or in its own memory: textures, arrays, buffers, programs, framebuffers.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "scene.h"

namespace {

constexpr place over_all = {480, 231, 641, 423};  // over 800,450

void clear_to(float red, float green, float blue) {
  glClearColor(red, green, blue, 1);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

void use_pixels(int width = over_all.width, int height = over_all.height) {
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glOrtho(0, width, 0, height, -1, 1);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
}

gl_window make_pixel_window() {
  const gl_window window = make_window(over_all);
  use_pixels();
  return window;
}

std::vector<GLubyte> checks(int size, int field) {
  std::vector<GLubyte> texels(static_cast<size_t>(size) * size * 3);
  for (int y = 0; y < size; ++y) {
    for (int x = 0; x < size; ++x) {
      GLubyte* texel = &texels[(static_cast<size_t>(y) * size + x) * 3];
      const bool odd = (x / field + y / field) % 2 != 0;
      texel[0] = static_cast<GLubyte>(odd ? 240 : x * 255 / size);
      texel[1] = static_cast<GLubyte>(odd ? y * 255 / size : 60);
      texel[2] = static_cast<GLubyte>(odd ? 40 : 160);
    }
  }
  return texels;
}

void textured_square(int left, int bottom, int size, float repeat) {
  glBegin(GL_TRIANGLE_STRIP);
  for (int corner = 0; corner < 4; ++corner) {
    const int x = corner % 2, y = corner / 2;
    glTexCoord2f(repeat * static_cast<float>(x), repeat * static_cast<float>(y));
    glVertex2i(left + size * x, bottom + size * y);
  }
  glEnd();
}

void set_filter(GLenum target, GLint filter) {
  glTexParameteri(target, GL_TEXTURE_MIN_FILTER, filter);
  glTexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
}

void textures() {
  begin_scene(__func__);
  const gl_window window = make_pixel_window();
  const gl_extensions gl = find_extensions();
  GLuint names[2];
  glGenTextures(2, names);
  glEnable(GL_TEXTURE_2D);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  for (int i = 0; i < 2; ++i) {
    glBindTexture(GL_TEXTURE_2D, names[i]);
    set_filter(GL_TEXTURE_2D, GL_NEAREST);
    std::vector<GLubyte> texels = checks(64 << i, 8);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 64 << i, 64 << i, 0, GL_RGB, GL_UNSIGNED_BYTE, texels.data());
    std::fill(texels.begin(), texels.end(), static_cast<GLubyte>(0));
  }
  clear_to(0.1f, 0.1f, 0.15f);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
  for (int i = 0; i < 5; ++i) {
    glBindTexture(GL_TEXTURE_2D, names[i % 2]);
    glColor3d(1 - 0.15 * i, 0.5 + 0.1 * i, 1);
    textured_square(10 + 100 * i, 5 + 60 * i, 192, 1.5f);
  }
  show(window, "squares");
  clear_to(0.3f, 0.3f, 0.1f);
  glColor3f(1, 1, 1);
  for (int level = 0; 128 >> level; ++level) {
    const std::vector<GLubyte> texels = checks(128 >> level, 4);
    glTexImage2D(GL_TEXTURE_2D, level, GL_RGB, 128 >> level, 128 >> level, 0, GL_RGB, GL_UNSIGNED_BYTE, texels.data());
  }
  set_filter(GL_TEXTURE_2D, GL_NEAREST_MIPMAP_NEAREST);
  const std::vector<GLubyte> section = checks(32, 2);
  glTexSubImage2D(GL_TEXTURE_2D, 0, 40, 50, 32, 32, GL_RGB, GL_UNSIGNED_BYTE, section.data());
  // Sizes at which no pixel's middle lies between two texels.
  textured_square(30, 10, 384, 1);
  for (int size = 256; size > 8; size /= 2) textured_square(630 - size, 420 - size, size, 1);
  show(window, "levels");
  note("textures %d %d", glIsTexture(names[0]), glIsTexture(names[1] + 1));
  glDeleteTextures(2, names);
  std::vector<GLubyte> solid = checks(16, 1);
  solid.resize(16 * 16 * 16 * 3, 90);
  gl.glTexImage3D(GL_TEXTURE_3D, 0, GL_RGB, 16, 16, 16, 0, GL_RGB, GL_UNSIGNED_BYTE, solid.data());
  set_filter(GL_TEXTURE_3D, GL_NEAREST);
  glDisable(GL_TEXTURE_2D);
  glEnable(GL_TEXTURE_3D);
  clear_to(0, 0, 0);
  textured_square(128, 6, 384, 3);
  show(window, "solid");
  destroy_window(window);
}

struct vertex {
  GLfloat x, y;
  GLubyte colour[4];
};

// A fan's vertices, `count` around a middle.
std::vector<vertex> wheel(int count, double x, double y, double radius) {
  std::vector<vertex> vertices(count + 2);
  for (int i = 0; i < count + 2; ++i) {
    const double angle = 6.283185307179586 * i / count, r = i == 0 ? 0 : radius;
    vertices[i] = {static_cast<GLfloat>(x + r * std::cos(angle)), static_cast<GLfloat>(y + r * std::sin(angle)), {}};
    const GLubyte colour[4] = {static_cast<GLubyte>(37 * i), static_cast<GLubyte>(255 - 21 * i), 120, 255};
    memcpy(vertices[i].colour, colour, 4);
  }
  return vertices;
}

void point_at(const vertex* vertices) {
  glVertexPointer(2, GL_FLOAT, sizeof(vertex), &vertices->x);
  glColorPointer(4, GL_UNSIGNED_BYTE, sizeof(vertex), vertices->colour);
}

// What has been drawn with is overwritten at once.
void draw_arrays(std::vector<vertex>* vertices) {
  point_at(vertices->data());
  glDrawArrays(GL_TRIANGLE_FAN, 0, static_cast<GLsizei>(vertices->size()));
  memset(vertices->data(), 0, vertices->size() * sizeof(vertex));
}

void draw_elements(std::vector<vertex>* vertices) {
  std::vector<GLushort> indices;
  for (size_t i = 1; i + 1 < vertices->size(); i += 2) {
    indices.insert(indices.end(), {0, static_cast<GLushort>(i), static_cast<GLushort>(i + 1)});
  }
  point_at(vertices->data());
  glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(indices.size()), GL_UNSIGNED_SHORT, indices.data());
  memset(vertices->data(), 0, vertices->size() * sizeof(vertex));
  memset(indices.data(), 0, indices.size() * sizeof(GLushort));
}

// Without the array of colours: the threaded path sends an element's colour after its vertex.
void draw_element_by_element(std::vector<vertex>* vertices) {
  point_at(vertices->data());
  glDisableClientState(GL_COLOR_ARRAY);
  glColor3f(1, 0.9f, 0.4f);
  glBegin(GL_LINE_LOOP);
  for (size_t i = 1; i < vertices->size(); ++i) glArrayElement(static_cast<GLint>(i));
  glEnd();
  glEnableClientState(GL_COLOR_ARRAY);
  memset(vertices->data(), 0, vertices->size() * sizeof(vertex));
}

void client_arrays() {
  begin_scene(__func__);
  const gl_window window = make_pixel_window();
  const gl_extensions gl = find_extensions();
  clear_to(0.2f, 0.2f, 0.2f);
  glShadeModel(GL_FLAT);
  glEnableClientState(GL_VERTEX_ARRAY);
  glEnableClientState(GL_COLOR_ARRAY);
  for (int i = 0; i < 5; ++i) {
    std::vector<vertex> wheels[3] = {wheel(9 + i, 100 + 110 * i, 80, 70), wheel(12, 90 + 115 * i, 215, 65),
                                     wheel(40, 100 + 110 * i, 350, 60)};
    draw_arrays(&wheels[0]);
    draw_elements(&wheels[1]);
    draw_element_by_element(&wheels[2]);
  }
  show(window, "drawn");
  clear_to(0.4f, 0.4f, 0.5f);
  std::vector<vertex> vertices = wheel(16, 320, 210, 200);
  point_at(vertices.data());
  const GLuint indices[] = {0, 3, 5, 0, 9, 14, 0, 15, 17};
  gl.glDrawRangeElements(GL_TRIANGLES, 0, 17, 9, GL_UNSIGNED_INT, indices);
  const GLint firsts[] = {1, 6, 11};
  const GLsizei counts[] = {4, 3, 5};
  gl.glMultiDrawArrays(GL_LINE_STRIP, firsts, counts, 3);
  glDisableClientState(GL_COLOR_ARRAY);
  glColor3f(1, 0.5f, 0);
  glPushClientAttrib(GL_CLIENT_VERTEX_ARRAY_BIT);
  glDisableClientState(GL_VERTEX_ARRAY);
  glPopClientAttrib();
  const GLfloat strip[] = {0, 0, 0, 40, 30, 0, 600, 10, 0, 630, 60, 0};
  glInterleavedArrays(GL_V3F, 0, strip);
  glDrawArrays(GL_QUADS, 0, 4);
  show(window, "others");
  destroy_window(window);
}

void point_at_buffer() {
  glEnableClientState(GL_VERTEX_ARRAY);
  glEnableClientState(GL_COLOR_ARRAY);
  glVertexPointer(2, GL_FLOAT, sizeof(vertex), nullptr);
  glColorPointer(4, GL_UNSIGNED_BYTE, sizeof(vertex), reinterpret_cast<void*>(offsetof(vertex, colour)));
}

void fill_buffer(const gl_extensions& gl, std::vector<vertex> vertices) {
  const auto size = static_cast<GLsizeiptr>(vertices.size() * sizeof(vertex));
  gl.glBufferData(GL_ARRAY_BUFFER, size, vertices.data(), GL_DYNAMIC_DRAW);
  memset(vertices.data(), 0, size);
}

void buffers() {
  begin_scene(__func__);
  const gl_window window = make_pixel_window();
  const gl_extensions gl = find_extensions();
  GLuint names[2];
  gl.glGenBuffers(2, names);
  gl.glBindBuffer(GL_ARRAY_BUFFER, names[0]);
  gl.glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, names[1]);
  fill_buffer(gl, wheel(14, 200, 200, 190));
  const GLubyte indices[] = {0, 1, 2, 0, 4, 5, 0, 7, 8, 0, 10, 11, 0, 13, 14};
  gl.glBufferData(GL_ELEMENT_ARRAY_BUFFER, sizeof indices, indices, GL_STATIC_DRAW);
  point_at_buffer();
  clear_to(0.1f, 0.2f, 0.1f);
  glDrawArrays(GL_TRIANGLE_FAN, 0, 9);
  show(window, "first");
  const std::vector<vertex> moved = wheel(14, 420, 220, 180);
  const size_t size = moved.size() * sizeof(vertex);
  gl.glBufferSubData(GL_ARRAY_BUFFER, 0, static_cast<GLsizeiptr>(size), moved.data());
  glDrawElements(GL_TRIANGLES, 15, GL_UNSIGNED_BYTE, nullptr);
  show(window, "moved");
  std::vector<GLubyte> back(size);
  gl.glGetBufferSubData(GL_ARRAY_BUFFER, 0, static_cast<GLsizeiptr>(size), back.data());
  note_bytes("read", back.data(), back.size());
  GLint bytes = 0;
  gl.glGetBufferParameteriv(GL_ARRAY_BUFFER, GL_BUFFER_SIZE, &bytes);
  note("size %d", bytes);
  gl.glDeleteBuffers(2, names);
  destroy_window(window);
}

void mapped_buffers() {
  begin_scene(__func__);
  if (is_basic() && is_threaded()) return;  // no part would see what is written
  const gl_window window = make_pixel_window();
  const gl_extensions gl = find_extensions();
  GLuint name;
  gl.glGenBuffers(1, &name);
  gl.glBindBuffer(GL_ARRAY_BUFFER, name);
  fill_buffer(gl, wheel(14, 200, 200, 190));
  point_at_buffer();
  clear_to(0.2f, 0.1f, 0.1f);
  glDrawArrays(GL_TRIANGLE_FAN, 0, 9);
  show(window, "filled");
  const std::vector<vertex> other = wheel(14, 340, 200, 150);
  const size_t size = other.size() * sizeof(vertex);
  void* mapped = gl.glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY);
  CHECK(mapped != nullptr);
  if (mapped) {
    memcpy(mapped, other.data(), size);
    note("unmapped %d", gl.glUnmapBuffer(GL_ARRAY_BUFFER));
  }
  glDrawArrays(GL_POLYGON, 3, 6);
  show(window, "mapped");
  std::vector<GLubyte> back(size);
  gl.glGetBufferSubData(GL_ARRAY_BUFFER, 0, static_cast<GLsizeiptr>(size), back.data());
  note_bytes("read", back.data(), back.size());
  gl.glDeleteBuffers(1, &name);
  destroy_window(window);
}

// Parts of buffers are written and read, several buffers at a time.
void mapped_ranges() {
  begin_scene(__func__);
  if (is_basic()) return;
  const gl_window window = make_pixel_window();
  const gl_extensions gl = find_extensions();
  GLuint names[2];
  gl.glGenBuffers(2, names);
  gl.glBindBuffer(GL_ARRAY_BUFFER, names[0]);
  gl.glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, names[1]);
  fill_buffer(gl, wheel(14, 320, 210, 190));
  point_at_buffer();
  gl.glBufferData(GL_ELEMENT_ARRAY_BUFFER, 9, nullptr, GL_STREAM_DRAW);
  const std::vector<vertex> smaller = wheel(14, 300, 200, 90);
  constexpr GLsizeiptr vertices = 5 * sizeof(vertex);
  void* middle = gl.glMapBufferRange(GL_ARRAY_BUFFER, vertices, vertices, GL_MAP_WRITE_BIT);
  void* indices = gl.glMapBuffer(GL_ELEMENT_ARRAY_BUFFER, GL_WRITE_ONLY);
  CHECK(middle && indices);
  if (middle && indices) {
    memcpy(static_cast<vertex*>(middle) + 1, smaller.data() + 6, 2 * sizeof(vertex));
    memcpy(indices, "\1\3\6\7\11\13\2\14\10", 9);
  }
  note("unmapped %d %d", gl.glUnmapBuffer(GL_ELEMENT_ARRAY_BUFFER), gl.glUnmapBuffer(GL_ARRAY_BUFFER));
  clear_to(0.1f, 0.1f, 0.3f);
  glDrawArrays(GL_TRIANGLE_FAN, 0, 15);
  show(window, "middle");
  constexpr GLbitfield by_hand = GL_MAP_WRITE_BIT | GL_MAP_FLUSH_EXPLICIT_BIT | GL_MAP_INVALIDATE_BUFFER_BIT;
  void* all = gl.glMapBufferRange(GL_ARRAY_BUFFER, 0, 3 * vertices, by_hand);
  CHECK(all != nullptr);
  if (all) memcpy(all, smaller.data(), 3 * vertices);
  gl.glFlushMappedBufferRange(GL_ARRAY_BUFFER, 0, vertices);
  gl.glFlushMappedBufferRange(GL_ARRAY_BUFFER, vertices, 2 * vertices);
  note("unmapped %d", gl.glUnmapBuffer(GL_ARRAY_BUFFER));
  glDrawElements(GL_TRIANGLES, 9, GL_UNSIGNED_BYTE, nullptr);
  show(window, "flushed");
  if (const void* read = gl.glMapBuffer(GL_ARRAY_BUFFER, GL_READ_ONLY)) note_bytes("read", read, 3 * vertices);
  CHECK(gl.glMapBuffer(GL_ARRAY_BUFFER, GL_READ_ONLY) == nullptr);
  note("error 0x%x", glGetError());
  gl.glDeleteBuffers(2, names);
  destroy_window(window);
}

constexpr const char* vertex_source =
    "#version 120\n"
    "uniform mat4 turned; attribute vec3 tint; varying vec3 shade;\n"
    "void main() { gl_Position = gl_ModelViewProjectionMatrix * (turned * gl_Vertex); shade = tint; }\n";
constexpr const char* fragment_source =
    "#version 120\n"
    "uniform vec3 lights[2]; uniform float cut; uniform int kind; varying vec3 shade;\n"
    "void main() { vec3 c = kind == 0 ? lights[0] : lights[1]; gl_FragColor = vec4(step(cut, shade) * c, 1.0); }\n";

GLuint compile(const gl_extensions& gl, GLenum kind, const char* source) {
  const GLuint shader = gl.glCreateShader(kind);
  std::string copy = source;
  const char* text = copy.c_str();
  gl.glShaderSource(shader, 1, &text, nullptr);
  copy.assign(copy.size(), ' ');
  gl.glCompileShader(shader);
  GLint good = 0;
  gl.glGetShaderiv(shader, GL_COMPILE_STATUS, &good);
  CHECK_EQUAL(good, 1);
  return shader;
}

GLuint make_program(const gl_extensions& gl) {
  const GLuint program = gl.glCreateProgram();
  const GLuint shaders[2] = {compile(gl, GL_VERTEX_SHADER, vertex_source),
                             compile(gl, GL_FRAGMENT_SHADER, fragment_source)};
  for (GLuint shader : shaders) {
    gl.glAttachShader(program, shader);
    gl.glDeleteShader(shader);
  }
  gl.glBindAttribLocation(program, 5, "tint");
  gl.glLinkProgram(program);
  GLint good = 0;
  gl.glGetProgramiv(program, GL_LINK_STATUS, &good);
  CHECK_EQUAL(good, 1);
  return program;
}

void draw_tinted(const gl_extensions& gl) {
  glBegin(GL_QUADS);
  gl.glVertexAttrib3f(5, 1, 0, 1);
  glVertex2i(20, 30);
  glVertex2i(560, 60);
  gl.glVertexAttrib3f(5, 0.5f, 1, 1);
  glVertex2i(610, 400);
  glVertex2i(50, 370);
  glEnd();
}

void programs() {
  begin_scene(__func__);
  const gl_window window = make_pixel_window();
  const gl_extensions gl = find_extensions();
  const GLuint program = make_program(gl);
  gl.glUseProgram(program);
  const GLfloat lights[6] = {1, 0.8f, 0.2f, 0.2f, 0.6f, 1};
  GLfloat turned[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  gl.glUniform3fv(gl.glGetUniformLocation(program, "lights"), 2, lights);
  gl.glUniformMatrix4fv(gl.glGetUniformLocation(program, "turned"), 1, GL_FALSE, turned);
  gl.glUniform1f(gl.glGetUniformLocation(program, "cut"), 0.25f);
  clear_to(0.3f, 0, 0);
  draw_tinted(gl);
  show(window, "first");
  turned[0] = 0.5f;
  turned[12] = 150;
  gl.glUniformMatrix4fv(gl.glGetUniformLocation(program, "turned"), 1, GL_FALSE, turned);
  gl.glUniform1i(gl.glGetUniformLocation(program, "kind"), 1);
  gl.glUniform1f(gl.glGetUniformLocation(program, "cut"), 0.625f);
  draw_tinted(gl);
  show(window, "second");
  GLfloat value = 0;
  gl.glGetUniformfv(program, gl.glGetUniformLocation(program, "cut"), &value);
  note("cut %.3f, no such uniform %d", static_cast<double>(value), gl.glGetUniformLocation(program, "none"));
  gl.glUseProgram(0);
  gl.glDeleteProgram(program);
  destroy_window(window);
}

constexpr const char* pattern_source =
    "#version 120\n"
    "void main() { vec2 at = gl_FragCoord.xy; float wave = sin(at.x * at.x * 0.01 + at.y * 0.3);\n"
    " gl_FragColor = vec4(mod(at.x + 3.0 * at.y, 64.0) / 64.0, abs(dFdx(wave)), abs(dFdy(wave)), 1.0); }\n";

// What a program draws by where its pixels lie, and by how they differ from their neighbours.
void patterns() {
  begin_scene(__func__);
  const gl_window window = make_pixel_window();
  const gl_extensions gl = find_extensions();
  const GLuint program = gl.glCreateProgram(), shader = compile(gl, GL_FRAGMENT_SHADER, pattern_source);
  gl.glAttachShader(program, shader);
  gl.glDeleteShader(shader);
  gl.glLinkProgram(program);
  clear_to(0, 0, 0.2f);
  gl.glUseProgram(program);
  glRecti(7, 11, 633, 401);
  gl.glUseProgram(0);
  show(window, "shader");
  GLubyte pattern[128];
  for (int i = 0; i < 128; ++i) pattern[i] = static_cast<GLubyte>(i * 37 + i / 4 * 11);
  clear_to(0.2f, 0, 0);
  glPolygonStipple(pattern);
  glEnable(GL_POLYGON_STIPPLE);
  glColor3f(1, 1, 0.5f);
  glRecti(7, 11, 633, 401);
  show(window, "stipple");
  gl.glDeleteProgram(program);
  destroy_window(window);
}

constexpr int target_size = 256;

// A texture of 256 by 256 without contents, bound.
GLuint make_target_texture() {
  GLuint texture;
  glGenTextures(1, &texture);
  glBindTexture(GL_TEXTURE_2D, texture);
  set_filter(GL_TEXTURE_2D, GL_NEAREST);
  glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, target_size, target_size, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
  return texture;
}

GLuint make_renderbuffer(const gl_extensions& gl, GLenum format, int width, int height) {
  GLuint renderbuffer;
  gl.glGenRenderbuffers(1, &renderbuffer);
  gl.glBindRenderbuffer(GL_RENDERBUFFER, renderbuffer);
  gl.glRenderbufferStorage(GL_RENDERBUFFER, format, width, height);
  return renderbuffer;
}

// Bound, and with nothing attached.
GLuint make_framebuffer(const gl_extensions& gl) {
  GLuint framebuffer;
  gl.glGenFramebuffers(1, &framebuffer);
  gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
  return framebuffer;
}

// Something of 256 by 256 into the framebuffer object.
void draw_into(float red) {
  glViewport(0, 0, target_size, target_size);
  use_pixels(target_size, target_size);
  clear_to(red, 0.2f, 0.4f);
  for (int i = 0; i < 8; ++i) {
    glColor3d(0.1 * i, 1 - 0.1 * i, red);
    glRecti(10 + 20 * i, 5 + 30 * i, 80 + 20 * i, 25 + 30 * i);
  }
  glViewport(0, 0, over_all.width, over_all.height);
  use_pixels();
}

void framebuffers() {
  begin_scene(__func__);
  const gl_window window = make_pixel_window();
  const gl_extensions gl = find_extensions();
  const GLuint texture = make_target_texture();
  const GLuint depth = make_renderbuffer(gl, GL_DEPTH_COMPONENT24, target_size, target_size);
  const GLuint framebuffer = make_framebuffer(gl);
  gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
  gl.glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, depth);
  note("complete 0x%x", gl.glCheckFramebufferStatus(GL_FRAMEBUFFER));
  draw_into(0.7f);
  gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
  clear_to(0.8f, 0.8f, 0.7f);
  glColor3f(1, 1, 1);
  glEnable(GL_TEXTURE_2D);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
  textured_square(10, 10, 256, 1);
  textured_square(290, 130, 256, 1);
  glDisable(GL_TEXTURE_2D);
  show(window, "textured");
  gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
  glBindTexture(GL_TEXTURE_2D, 0);
  draw_into(0.1f);
  gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
  gl.glBlitFramebuffer(0, 0, 256, 256, 150, 80, 406, 336, GL_COLOR_BUFFER_BIT, GL_NEAREST);
  gl.glBlitFramebuffer(0, 0, 256, 256, 10, 10, 138, 138, GL_COLOR_BUFFER_BIT, GL_NEAREST);
  gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
  show(window, "blitted");
  gl.glDeleteFramebuffers(1, &framebuffer);
  gl.glDeleteRenderbuffers(1, &depth);
  glDeleteTextures(1, &texture);
  destroy_window(window);
}

// What a texture has that was drawn into: in the basic mode, with threads, the application's own context is asked,
// which draws nothing.
void read_textures() {
  begin_scene(__func__);
  if (is_basic()) return;
  const gl_window window = make_pixel_window();
  const gl_extensions gl = find_extensions();
  const GLuint texture = make_target_texture();
  const GLuint framebuffer = make_framebuffer(gl);
  gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
  draw_into(0.3f);
  gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
  std::vector<GLubyte> texels(size_t{target_size} * target_size * 4);
  glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
  note_bytes("texels", texels.data(), texels.size());
  clear_to(0.2f, 0.2f, 0.5f);
  glRasterPos2i(190, 80);
  glDrawPixels(target_size, target_size, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
  show(window, "read");
  gl.glDeleteFramebuffers(1, &framebuffer);
  glDeleteTextures(1, &texture);
  destroy_window(window);
}

void note_pixels(const char* name, int x, int y, int width, int height) {
  std::vector<GLubyte> pixels(static_cast<size_t>(width) * height * 4);
  glReadPixels(x, y, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
  note_bytes(name, pixels.data(), pixels.size());
}

// An object that reaches past the window is read whole too, but for the basic mode, where each part gives a piece.
void read_large_framebuffers() {
  begin_scene(__func__);
  if (is_basic()) return;
  const gl_window window = make_pixel_window();
  const gl_extensions gl = find_extensions();
  constexpr int width = 900, height = 700;
  const GLuint colours = make_renderbuffer(gl, GL_RGBA8, width, height);
  const GLuint framebuffer = make_framebuffer(gl);
  gl.glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, colours);
  glViewport(0, 0, width, height);
  use_pixels(width, height);
  clear_to(0.1f, 0.5f, 0.4f);
  for (int i = 0; i < 12; ++i) {
    glColor3d(0.08 * i, 0.5, 1 - 0.08 * i);
    glRecti(70 * i, 55 * i, 70 * i + 110, 55 * i + 80);
  }
  note_pixels("all of it", 0, 0, width, height);
  note_pixels("what lies past the window", over_all.width - 20, over_all.height - 30, 200, 100);
  gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
  glViewport(0, 0, over_all.width, over_all.height);
  use_pixels();
  clear_to(0.5f, 0.3f, 0.2f);
  for (int i = 0; i < 6; ++i) {
    glColor3d(0.15 * i, 0.6, 0.2);
    glRecti(90 * i, 60 * i, 90 * i + 150, 60 * i + 110);
  }
  show(window, "window");
  gl.glDeleteFramebuffers(1, &framebuffer);
  gl.glDeleteRenderbuffers(1, &colours);
  destroy_window(window);
}

// Steps from one corner to the other over all parts, each nearer than the one before.
void draw_steps(float blue) {
  glEnable(GL_DEPTH_TEST);
  clear_to(0.2f, 0.1f, blue);
  for (int i = 0; i < 12; ++i) {
    glPushMatrix();
    glTranslated(0, 0, 0.08 * i - 0.5);
    glColor3d(0.08 * i, 1 - 0.07 * i, blue);
    glRecti(45 * i, 30 * i, 45 * i + 130, 30 * i + 90);
    glPopMatrix();
  }
  glDisable(GL_DEPTH_TEST);
}

// In the basic mode each part blits what it has drawn.
void window_blits() {
  begin_scene(__func__);
  if (is_basic()) return;
  const gl_window window = make_pixel_window();
  const gl_extensions gl = find_extensions();
  const GLuint texture = make_target_texture();
  const GLuint framebuffer = make_framebuffer(gl);
  gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
  gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
  gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
  draw_steps(0.6f);
  gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffer);
  gl.glBlitFramebuffer(100, 50, over_all.width + 40, 400, target_size, 0, 0, target_size, GL_COLOR_BUFFER_BIT,
                       GL_LINEAR);
  note_error("shrunk and mirrored");
  gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, framebuffer);
  gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
  gl.glBlitFramebuffer(0, 0, target_size, target_size, 200, 90, 456, 346, GL_COLOR_BUFFER_BIT, GL_NEAREST);
  gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
  show(window, "from the window and back");
  clear_to(0.1f, 0.1f, 0.1f);
  draw_steps(0.2f);
  gl.glBlitFramebuffer(40, 40, 240, 240, 360, 150, 560, 350, GL_COLOR_BUFFER_BIT, GL_NEAREST);
  note_error("within the window");
  show(window, "within the window");
  gl.glDeleteFramebuffers(1, &framebuffer);
  glDeleteTextures(1, &texture);
  destroy_window(window);
}

// The depth and stencil of the window, which have to be kept as they are there.
void window_depth_blits() {
  begin_scene(__func__);
  if (is_basic()) return;
  const gl_window window = make_pixel_window();
  const gl_extensions gl = find_extensions();
  GLint stencil_bits = 0;
  glGetIntegerv(GL_STENCIL_BITS, &stencil_bits);
  const GLuint depth =
      make_renderbuffer(gl, stencil_bits ? GL_DEPTH24_STENCIL8 : GL_DEPTH_COMPONENT24, over_all.width, over_all.height);
  draw_steps(0.5f);
  show_unread(window, "with depth");
  draw_steps(0.4f);
  const GLuint framebuffer = make_framebuffer(gl);
  gl.glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, depth);
  if (stencil_bits) gl.glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_STENCIL_ATTACHMENT, GL_RENDERBUFFER, depth);
  gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
  gl.glBlitFramebuffer(0, 0, over_all.width, over_all.height, 0, 0, over_all.width, over_all.height,
                       GL_DEPTH_BUFFER_BIT, GL_NEAREST);
  note_error("depth");
  gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, framebuffer);
  std::vector<GLfloat> depths(static_cast<size_t>(over_all.width) * over_all.height);
  glReadPixels(0, 0, over_all.width, over_all.height, GL_DEPTH_COMPONENT, GL_FLOAT, depths.data());
  note_error("reading depth");
  note_bytes("depths", depths.data(), depths.size() * sizeof depths[0]);
  CHECK(*std::min_element(depths.begin(), depths.end()) < 0.9f);
  gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
  gl.glDeleteFramebuffers(1, &framebuffer);
  gl.glDeleteRenderbuffers(1, &depth);
  destroy_window(window);
}

// What the program has set for uploads of its own is not in the way of a copy, and is as before afterwards. (A copy
// under glPixelTransfer is black by the software renderer, alone too.)
void copies_under_state() {
  begin_scene(__func__);
  if (is_basic()) return;
  const gl_window window = make_pixel_window();
  const gl_extensions gl = find_extensions();
  const GLuint texture = make_target_texture();
  GLuint buffer;
  gl.glGenBuffers(1, &buffer);
  gl.glBindBuffer(GL_PIXEL_UNPACK_BUFFER, buffer);
  gl.glBufferData(GL_PIXEL_UNPACK_BUFFER, 16, nullptr, GL_STATIC_DRAW);
  glPixelStorei(GL_UNPACK_ROW_LENGTH, 1000);
  glPixelStorei(GL_UNPACK_SKIP_ROWS, 7);
  draw_steps(0.3f);
  glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 230, 110, target_size, target_size);
  note_error("copied");
  for (const GLenum name : {GL_PIXEL_UNPACK_BUFFER_BINDING, GL_UNPACK_ROW_LENGTH, GL_UNPACK_SKIP_ROWS}) {
    GLint value = 0;
    glGetIntegerv(name, &value);
    note("0x%x is %d", name, value);
  }
  gl.glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
  glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
  glPixelStorei(GL_UNPACK_SKIP_ROWS, 0);
  glEnable(GL_TEXTURE_2D);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
  textured_square(10, 130, 256, 1);
  textured_square(330, 20, 256, 1);
  glDisable(GL_TEXTURE_2D);
  show(window, "copied");
  gl.glDeleteBuffers(1, &buffer);
  glDeleteTextures(1, &texture);
  destroy_window(window);
}

// An object within the window's size is read whole in both modes: in the basic one each part gives a piece.
void read_framebuffers() {
  begin_scene(__func__);
  const gl_window window = make_pixel_window();
  const gl_extensions gl = find_extensions();
  const GLuint texture = make_target_texture();
  const GLuint colours = make_renderbuffer(gl, GL_RGBA8, over_all.width, over_all.height);
  const GLuint framebuffer = make_framebuffer(gl);
  gl.glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, colours);
  note("complete 0x%x", gl.glCheckFramebufferStatus(GL_FRAMEBUFFER));
  draw_into(0.4f);
  note_pixels("all of it", 0, 0, over_all.width, over_all.height);
  note_pixels("a piece", 301, 140, 33, 97);
  glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, target_size, target_size);
  gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
  clear_to(0.1f, 0.3f, 0.2f);
  glColor3f(1, 1, 1);
  glEnable(GL_TEXTURE_2D);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
  textured_square(200, 90, 256, 1);
  glDisable(GL_TEXTURE_2D);
  show(window, "copied");
  gl.glDeleteFramebuffers(1, &framebuffer);
  gl.glDeleteRenderbuffers(1, &colours);
  glDeleteTextures(1, &texture);
  destroy_window(window);
}

void note_integers(const char* name, GLenum what, int count) {
  GLint values[16] = {};
  glGetIntegerv(what, values);
  for (int i = 0; i < count; ++i) note("%s[%d] = %d", name, i, values[i]);
}

// What an application asks for must be what it would hear without us.
void answers() {
  begin_scene(__func__);
  const gl_window window = make_pixel_window();
  note_integers("viewport", GL_VIEWPORT, 4);
  note_integers("scissor", GL_SCISSOR_BOX, 4);
  note_integers("draw buffer", GL_DRAW_BUFFER, 1);
  note_integers("read buffer", GL_READ_BUFFER, 1);
  note_integers("depth bits", GL_DEPTH_BITS, 1);
  note("vendor %s, renderer %s", glGetString(GL_VENDOR), glGetString(GL_RENDERER));
  glScissor(5, 6, 7, 8);
  glViewport(-3, 4, 500, 300);
  note_integers("viewport", GL_VIEWPORT, 4);
  note_integers("scissor", GL_SCISSOR_BOX, 4);
  glMatrixMode(GL_MODELVIEW);
  glTranslatef(1, 2, 3);
  GLdouble matrix[16];
  glGetDoublev(GL_MODELVIEW_MATRIX, matrix);
  note("translation %.1f %.1f %.1f, mode %d", matrix[12], matrix[13], matrix[14], glIsEnabled(GL_LIGHTING));
  glEnable(GL_LIGHTING);
  GLfloat light[4] = {0.5f, 0.25f, 0.125f, 1};
  glLightfv(GL_LIGHT2, GL_DIFFUSE, light);
  memset(light, 0, sizeof light);
  glGetLightfv(GL_LIGHT2, GL_DIFFUSE, light);
  note("light %d %.3f %.3f", glIsEnabled(GL_LIGHTING), static_cast<double>(light[0]), static_cast<double>(light[2]));
  glBegin(GL_NONE + 77);
  note("error 0x%x", glGetError());
  glEnable(GL_VIEWPORT);
  note("errors 0x%x 0x%x", glGetError(), glGetError());
  note_error("all");
  destroy_window(window);
}

void picking() {
  begin_scene(__func__);
  const gl_window window = make_pixel_window();
  GLuint hits[64] = {};
  glSelectBuffer(64, hits);
  glRenderMode(GL_SELECT);
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glOrtho(315, 325, 199, 209, -1, 1);
  glInitNames();
  glPushName(0);
  for (GLuint i = 0; i < 6; ++i) {
    glLoadName(100 + i);
    glRecti(100 * static_cast<int>(i), 0, 100 * static_cast<int>(i) + 130, 400);
  }
  const GLint count = glRenderMode(GL_RENDER);
  note("hits %d", count);
  for (int i = 0; i < 24; ++i) note("%u", hits[i]);
  note_error("picking");
  destroy_window(window);
}

void rectangle_at(float depth, int left, int bottom, int right, int top) {
  glBegin(GL_QUADS);
  glVertex3f(static_cast<float>(left), static_cast<float>(bottom), -depth);
  glVertex3f(static_cast<float>(right), static_cast<float>(bottom), -depth);
  glVertex3f(static_cast<float>(right), static_cast<float>(top), -depth);
  glVertex3f(static_cast<float>(left), static_cast<float>(top), -depth);
  glEnd();
}

// Of a rectangle of 200 by 200 pixels, at a depth of 0.5.
GLuint count_samples(const gl_extensions& gl, int left, int bottom) {
  GLuint query, samples = 0;
  gl.glGenQueries(1, &query);
  glColor3f(0.2f, 0.4f, 0.9f);
  gl.glBeginQuery(GL_SAMPLES_PASSED, query);
  rectangle_at(0.5f, left, bottom, left + 200, bottom + 200);
  gl.glEndQuery(GL_SAMPLES_PASSED);
  gl.glGetQueryObjectuiv(query, GL_QUERY_RESULT, &samples);
  gl.glDeleteQueries(1, &query);
  return samples;
}

gl_window make_tested_window() {
  const gl_window window = make_pixel_window();
  glEnable(GL_DEPTH_TEST);
  clear_to(0.1f, 0.1f, 0.1f);
  return window;
}

void grow(const gl_window& window) {
  constexpr place grown = {440, 200, 741, 523};
  move_window(window.hwnd, grown);
  pump(300);
  glViewport(0, 0, grown.width, grown.height);
  use_pixels(grown.width, grown.height);
}

// The window's pixels by way of a buffer, to which what is around them stays.
void read_into_buffers() {
  begin_scene(__func__);
  if (is_basic()) return;  // each part's buffer has its own share there
  const gl_window window = make_pixel_window();
  const gl_extensions gl = find_extensions();
  clear_to(0.2f, 0.3f, 0.2f);
  for (int i = 0; i < 7; ++i) {
    glColor3d(0.14 * i, 1 - 0.14 * i, 0.5);
    glRecti(80 * i, 55 * i, 80 * i + 140, 55 * i + 90);
  }
  constexpr int width = 301, height = 203, row = 320;
  const std::vector<GLubyte> before(size_t{row} * 4 * (height + 4), 0x5A);
  GLuint name;
  gl.glGenBuffers(1, &name);
  gl.glBindBuffer(GL_PIXEL_PACK_BUFFER, name);
  gl.glBufferData(GL_PIXEL_PACK_BUFFER, static_cast<GLsizeiptr>(before.size()), before.data(), GL_STREAM_READ);
  glPixelStorei(GL_PACK_ROW_LENGTH, row);
  glPixelStorei(GL_PACK_SKIP_ROWS, 2);
  glPixelStorei(GL_PACK_SKIP_PIXELS, 5);
  glReadPixels(180, 110, width, height, GL_RGBA, GL_UNSIGNED_BYTE, reinterpret_cast<void*>(64));
  if (const void* read = gl.glMapBuffer(GL_PIXEL_PACK_BUFFER, GL_READ_ONLY)) note_bytes("read", read, before.size());
  CHECK_EQUAL(gl.glUnmapBuffer(GL_PIXEL_PACK_BUFFER), GL_TRUE);
  glReadPixels(0, 0, 400, 400, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
  note("no room 0x%x", glGetError());
  gl.glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
  for (GLenum state : {GL_PACK_ROW_LENGTH, GL_PACK_SKIP_ROWS, GL_PACK_SKIP_PIXELS}) glPixelStorei(state, 0);
  gl.glBindBuffer(GL_PIXEL_UNPACK_BUFFER, name);
  glPixelStorei(GL_UNPACK_ROW_LENGTH, row);
  glRasterPos2i(10, 10);
  glDrawPixels(row, height + 3, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
  glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
  gl.glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
  show(window, "drawn");
  gl.glDeleteBuffers(1, &name);
  destroy_window(window);
}

// Text that is made of the device context's font, as many programs label what they show. Without the blank, which has
// no pixels, and of which the software renderer makes an error.
void fonts() {
  begin_scene(__func__);
  if (is_basic()) return;  // the text is missing there
  const gl_window window = make_pixel_window();
  const HFONT font = CreateFontA(-24, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, ANSI_CHARSET, OUT_TT_PRECIS,
                                 CLIP_DEFAULT_PRECIS, NONANTIALIASED_QUALITY, DEFAULT_PITCH, "DejaVu Sans");
  SelectObject(window.hdc, font);
  const GLuint lists = glGenLists(256);
  note("bitmaps %d", wglUseFontBitmapsA(window.hdc, 33, 94, lists + 33));
  note("wide bitmaps %d", wglUseFontBitmapsW(window.hdc, 0x3B1, 25, lists + 160));
  clear_to(0.1f, 0.1f, 0.2f);
  glListBase(lists);
  for (int line = 0; line < 9; ++line) {
    const std::string text = "Line " + std::to_string(line) + ":_over_the_seams_and_on,_12.5_mm";
    glColor3d(1, 1 - 0.1 * line, 0.2 + 0.08 * line);
    glRasterPos2i(20 + 15 * line, 30 + 42 * line);
    glCallLists(static_cast<GLsizei>(text.size()), GL_UNSIGNED_BYTE, text.c_str());
  }
  const GLubyte greek[] = {160, 161, 162, 163, 164, 176};
  glRasterPos2i(290, 205);
  glCallLists(sizeof greek, GL_UNSIGNED_BYTE, greek);
  show(window, "bitmaps");
  std::vector<GLYPHMETRICSFLOAT> metrics(10);
  const int made = wglUseFontOutlinesA(window.hdc, '0', 10, lists + '0', 0.05f, 0, WGL_FONT_POLYGONS, metrics.data());
  note("outlines %d, the last %.4f wide", made, static_cast<double>(metrics.back().gmfCellIncX));
  clear_to(0.2f, 0.1f, 0.1f);
  glColor3f(0.9f, 0.9f, 0.4f);
  glTranslatef(40, 120, 0);
  glScalef(230, 230, 1);
  glCallLists(4, GL_UNSIGNED_BYTE, "2048");
  show(window, "outlines");
  glDeleteLists(lists, 256);
  DeleteObject(font);
  destroy_window(window);
}

// Programs leave out what a query has not seen. The rectangles lie over the middle, where parts meet, and in a corner
// of a window that has grown.
void occlusion() {
  begin_scene(__func__);
  // In the basic mode the last part answers, one part after the other.
  if (is_basic() && !is_threaded()) return;
  const gl_window window = make_tested_window();
  const gl_extensions gl = find_extensions();
  note("first: %u", count_samples(gl, 220, 111));
  clear_to(0.1f, 0.1f, 0.1f);
  rectangle_at(-0.5f, 0, 0, 320, 423);
  note("half behind another: %u", count_samples(gl, 220, 111));
  CHECK(SwapBuffers(window.hdc));
  clear_to(0.1f, 0.1f, 0.1f);
  note("next frame: %u", count_samples(gl, 220, 111));
  grow(window);
  CHECK(SwapBuffers(window.hdc));  // a host that draws by software sees the new size now
  clear_to(0.1f, 0.1f, 0.1f);
  note("grown: %u", count_samples(gl, 541, 323));
  CHECK(SwapBuffers(window.hdc));
  wglMakeCurrent(nullptr, nullptr);
  make_current(window);
  clear_to(0.1f, 0.1f, 0.3f);
  note("bound again: %u", count_samples(gl, 541, 323));
  note_error("occlusion");
  destroy_window(window);
}

// What is drawn in order to be counted is seen as without.
void counted() {
  begin_scene(__func__);
  const gl_window window = make_tested_window();
  const gl_extensions gl = find_extensions();
  count_samples(gl, 220, 111);
  show_unread(window, "first");
  clear_to(0.3f, 0.1f, 0.1f);
  rectangle_at(-0.5f, 0, 0, 320, 423);
  count_samples(gl, 190, 80);
  show(window, "behind");
  grow(window);
  clear_to(0.1f, 0.3f, 0.1f);
  count_samples(gl, 541, 323);
  show_unread(window, "grown");
  destroy_window(window);
}

}  // namespace

const scene_group object_scenes = {"objects",
                                   {{"textures", textures},
                                    {"client_arrays", client_arrays},
                                    {"buffers", buffers},
                                    {"programs", programs},
                                    {"patterns", patterns},
                                    {"framebuffers", framebuffers},
                                    {"window_blits", window_blits},
                                    {"window_depth_blits", window_depth_blits},
                                    {"copies_under_state", copies_under_state},
                                    {"read_framebuffers", read_framebuffers},
                                    {"read_textures", read_textures},
                                    {"read_large_framebuffers", read_large_framebuffers},
                                    {"answers", answers},
                                    {"picking", picking},
                                    {"read_into_buffers", read_into_buffers},
                                    {"fonts", fonts},
                                    {"occlusion", occlusion},
                                    {"counted", counted}}};
const scene_group mapping_scenes = {"mapping", {{"mapped_buffers", mapped_buffers}, {"mapped_ranges", mapped_ranges}}};
