#include "renderer.h"

#include <windows.h>
// GL's header needs the one above.
#include <GL/gl.h>

const renderer* find_renderer(const std::string& name) {
  for (const renderer* one : renderers) {
    if (name == one->name) return one;
  }
  return nullptr;
}

void set_material(const material& of) {
  glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, of.ambient);
  glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, of.diffuse);
  glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, of.specular);
  glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, of.shininess);
}
