#include "trial_picture.h"

#include <GL/gl.h>

#include <cstdlib>
#include <vector>

#include "find_export.h"

namespace {

struct gl_functions {
  void(APIENTRY* viewport)(GLint, GLint, GLsizei, GLsizei);
  void(APIENTRY* clear_color)(GLfloat, GLfloat, GLfloat, GLfloat);
  void(APIENTRY* clear)(GLbitfield);
  void(APIENTRY* begin)(GLenum);
  void(APIENTRY* end)();
  void(APIENTRY* color)(GLfloat, GLfloat, GLfloat);
  void(APIENTRY* vertex)(GLfloat, GLfloat);
  void(APIENTRY* read_pixels)(GLint, GLint, GLsizei, GLsizei, GLenum, GLenum, void*);
};

struct pixel {
  GLubyte red, green, blue, alpha;
};

bool find_gl(HMODULE library, gl_functions* gl) {
  return find_export(library, "glViewport", &gl->viewport) && find_export(library, "glClearColor", &gl->clear_color) &&
         find_export(library, "glClear", &gl->clear) && find_export(library, "glBegin", &gl->begin) &&
         find_export(library, "glEnd", &gl->end) && find_export(library, "glColor3f", &gl->color) &&
         find_export(library, "glVertex2f", &gl->vertex) && find_export(library, "glReadPixels", &gl->read_pixels);
}

// One triangle, the lower left half, red on blue.
void draw(const gl_functions& gl) {
  gl.viewport(0, 0, trial_size, trial_size);
  gl.clear_color(0, 0, 1, 1);
  gl.clear(GL_COLOR_BUFFER_BIT);
  gl.begin(GL_TRIANGLES);
  gl.color(1, 0, 0);
  gl.vertex(-1, -1);
  gl.vertex(1, -1);
  gl.vertex(-1, 1);
  gl.end();
}

// Few bits of colour will do. On the slope any pixel may be either.
bool is_right(int x, int y, const pixel& found) {
  const int beyond = x + y - (trial_size - 1);
  if (abs(beyond) <= 1) return true;
  const bool is_red = found.red > 128 && found.blue<128, is_blue = found.blue> 128 && found.red < 128;
  return found.green < 128 && (beyond < 0 ? is_red : is_blue);
}

}  // namespace

trial_outcome draw_trial_picture(HMODULE library) {
  gl_functions gl{};
  if (!find_gl(library, &gl)) return trial_outcome::no_functions;
  std::vector<pixel> picture(size_t{trial_size} * trial_size);
  draw(gl);
  gl.read_pixels(0, 0, trial_size, trial_size, GL_RGBA, GL_UNSIGNED_BYTE, picture.data());
  const pixel* next = picture.data();
  for (int y = 0; y < trial_size; ++y) {
    for (int x = 0; x < trial_size; ++x) {
      if (!is_right(x, y, *next++)) return trial_outcome::wrong;
    }
  }
  return trial_outcome::right;
}
