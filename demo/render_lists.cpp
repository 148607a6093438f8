#include <windows.h>
// GL's header needs the one above.
#include <GL/gl.h>

#include "renderer.h"

namespace {

void compile_ground(const drawing& self) {
  glNewList(self.ground_list, GL_COMPILE);
  glBegin(GL_LINES);
  for (const ground_vertex& end : self.shapes.ground) {
    glColor3fv(&end.colour.x);
    glVertex3fv(&end.place.x);
  }
  glEnd();
  glEndList();
}

void compile_faces(const drawing& self) {
  glNewList(self.faces_list, GL_COMPILE);
  for (const material_run& run : self.shapes.runs) {
    set_material(self.shown->materials[static_cast<size_t>(run.material)]);
    glBegin(GL_TRIANGLES);
    for (int i = run.first; i < run.first + run.count; ++i) {
      const face_vertex& corner = self.shapes.faces[static_cast<size_t>(i)];
      glNormal3fv(&corner.normal.x);
      glVertex3fv(&corner.place.x);
    }
    glEnd();
  }
  glEndList();
}

void compile_edges(const drawing& self) {
  glNewList(self.edges_list, GL_COMPILE);
  glBegin(GL_LINES);
  for (uint32_t end : self.shapes.edges) glVertex3fv(&self.shapes.edge_places[end].x);
  glEnd();
  glEndList();
}

bool prepare_lists(drawing* self, std::string*) {
  self->ground_list = glGenLists(3);
  self->faces_list = self->ground_list + 1;
  self->edges_list = self->ground_list + 2;
  compile_ground(*self);
  compile_faces(*self);
  compile_edges(*self);
  return true;
}

void call_ground(const drawing& self) {
  glCallList(self.ground_list);
}

void call_faces(const drawing& self) {
  glCallList(self.faces_list);
}

void call_edges(const drawing& self) {
  glColor3fv(&edge_colour.x);
  glCallList(self.edges_list);
}

}  // namespace

const renderer lists_renderer = {"lists", prepare_lists, call_ground, call_faces, call_edges};
