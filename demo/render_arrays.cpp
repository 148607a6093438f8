// Vertex arrays, in the application's memory or in buffer objects: only where a pointer points to makes a difference.
#include "buffers.h"
#include "gl_entries.h"
#include "renderer.h"

namespace {

constexpr unsigned array_target = GL_ARRAY_BUFFER, index_target = GL_ELEMENT_ARRAY_BUFFER;

template <class Element>
unsigned fill_buffer(GLenum target, const std::vector<Element>& elements) {
  GLuint buffer;
  gl::glGenBuffers(1, &buffer);
  gl::glBindBuffer(target, buffer);
  gl::glBufferData(target, static_cast<GLsizeiptr>(elements.size() * sizeof(Element)), elements.data(), GL_STATIC_DRAW);
  gl::glBindBuffer(target, 0);
  return buffer;
}

bool prepare_arrays(drawing*, std::string*) {
  return true;
}

// Binds a buffer, if there is one. The result is what an array's pointers count from.
template <class Element>
const Element* base_of(GLenum target, unsigned buffer, const std::vector<Element>& elements) {
  if (!buffer) return elements.data();
  gl::glBindBuffer(target, buffer);
  return nullptr;
}

void release(GLenum target, unsigned buffer) {
  if (buffer) gl::glBindBuffer(target, 0);
}

// A member's place in an array's first element, which is not there when the array is in a buffer.
template <class Element>
const void* member(const Element* base, size_t offset) {
  return reinterpret_cast<const void*>(reinterpret_cast<uintptr_t>(base) + offset);
}

void draw_ground_arrays(const drawing& self) {
  const ground_vertex* base = base_of(array_target, self.ground_buffer, self.shapes.ground);
  glEnableClientState(GL_COLOR_ARRAY);
  glEnableClientState(GL_VERTEX_ARRAY);
  glColorPointer(3, GL_FLOAT, sizeof *base, member(base, offsetof(ground_vertex, colour)));
  glVertexPointer(3, GL_FLOAT, sizeof *base, member(base, offsetof(ground_vertex, place)));
  glDrawArrays(GL_LINES, 0, static_cast<GLsizei>(self.shapes.ground.size()));
  glDisableClientState(GL_VERTEX_ARRAY);
  glDisableClientState(GL_COLOR_ARRAY);
  release(array_target, self.ground_buffer);
}

void draw_face_arrays(const drawing& self) {
  const face_vertex* base = base_of(array_target, self.faces_buffer, self.shapes.faces);
  glEnableClientState(GL_NORMAL_ARRAY);
  glEnableClientState(GL_VERTEX_ARRAY);
  glNormalPointer(GL_FLOAT, sizeof *base, member(base, offsetof(face_vertex, normal)));
  glVertexPointer(3, GL_FLOAT, sizeof *base, member(base, offsetof(face_vertex, place)));
  for (const material_run& run : self.shapes.runs) {
    set_material(self.shown->materials[static_cast<size_t>(run.material)]);
    glDrawArrays(GL_TRIANGLES, run.first, run.count);
  }
  glDisableClientState(GL_VERTEX_ARRAY);
  glDisableClientState(GL_NORMAL_ARRAY);
  release(array_target, self.faces_buffer);
}

void draw_edge_arrays(const drawing& self) {
  const vec3* base = base_of(array_target, self.edge_places_buffer, self.shapes.edge_places);
  const uint32_t* indices = base_of(index_target, self.edges_buffer, self.shapes.edges);
  glColor3fv(&edge_colour.x);
  glEnableClientState(GL_VERTEX_ARRAY);
  glVertexPointer(3, GL_FLOAT, 0, base);
  glDrawElements(GL_LINES, static_cast<GLsizei>(self.shapes.edges.size()), GL_UNSIGNED_INT, indices);
  glDisableClientState(GL_VERTEX_ARRAY);
  release(index_target, self.edges_buffer);
  release(array_target, self.edge_places_buffer);
}

}  // namespace

bool make_buffers(drawing* self, std::string* why) {
  if (!find_buffer_entries(why)) return false;
  self->ground_buffer = fill_buffer(array_target, self->shapes.ground);
  self->faces_buffer = fill_buffer(array_target, self->shapes.faces);
  self->edge_places_buffer = fill_buffer(array_target, self->shapes.edge_places);
  self->edges_buffer = fill_buffer(index_target, self->shapes.edges);
  return true;
}

const renderer arrays_renderer = {"arrays", prepare_arrays, draw_ground_arrays, draw_face_arrays, draw_edge_arrays};
const renderer buffers_renderer = {"buffers", make_buffers, draw_ground_arrays, draw_face_arrays, draw_edge_arrays};
