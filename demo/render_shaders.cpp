#include "buffers.h"
#include "gl_entries.h"
#include "renderer.h"

namespace {

// Attributes of a vertex; place is 0, which every vertex must have.
enum : GLuint { place_attribute, normal_attribute, colour_attribute };

// Light is computed for each pixel, from GL's own lights and the material of the faces.
constexpr char face_vertex_source[] = R"(#version 120
attribute vec3 place, normal;
varying vec3 seen_place, seen_normal;
void main() {
  vec4 seen = gl_ModelViewMatrix * vec4(place, 1.0);
  seen_place = seen.xyz;
  seen_normal = gl_NormalMatrix * normal;
  gl_Position = gl_ProjectionMatrix * seen;
}
)";

constexpr char face_fragment_source[] = R"(#version 120
uniform vec4 ambient, diffuse, specular;
uniform float shininess;
varying vec3 seen_place, seen_normal;
void main() {
  vec3 normal = normalize(gl_FrontFacing ? seen_normal : -seen_normal);
  vec3 colour = ambient.rgb * gl_LightModel.ambient.rgb;
  for (int i = 0; i < 3; ++i) {
    vec4 from = gl_LightSource[i].position;
    vec3 direction = normalize(from.w == 0.0 ? from.xyz : from.xyz / from.w - seen_place);
    float facing = max(dot(normal, direction), 0.0);
    float shine = facing > 0.0 ? pow(max(dot(normal, normalize(direction + vec3(0.0, 0.0, 1.0))), 0.0), shininess) : 0.0;
    colour += diffuse.rgb * gl_LightSource[i].diffuse.rgb * facing;
    colour += specular.rgb * gl_LightSource[i].specular.rgb * shine;
  }
  gl_FragColor = vec4(colour, diffuse.a);
}
)";

constexpr char line_vertex_source[] = R"(#version 120
attribute vec3 place, colour;
varying vec3 line_colour;
void main() {
  line_colour = colour;
  gl_Position = gl_ModelViewProjectionMatrix * vec4(place, 1.0);
}
)";

constexpr char line_fragment_source[] = R"(#version 120
// In place of the vertices' colours, unless its last value is 0.
uniform vec4 tint;
varying vec3 line_colour;
void main() {
  gl_FragColor = tint.a > 0.0 ? vec4(tint.rgb, 1.0) : vec4(line_colour, 1.0);
}
)";

std::string first_line(const char* text) {
  const std::string line = text;
  return line.substr(0, line.find('\n'));
}

bool add_shader(GLuint program, GLenum kind, const char* source, std::string* why) {
  const GLuint shader = gl::glCreateShader(kind);
  gl::glShaderSource(shader, 1, &source, nullptr);
  gl::glCompileShader(shader);
  gl::glAttachShader(program, shader);
  GLint compiled = GL_FALSE;
  gl::glGetShaderiv(shader, GL_COMPILE_STATUS, &compiled);
  if (compiled) return true;
  char log[512] = "";
  gl::glGetShaderInfoLog(shader, sizeof log, nullptr, log);
  *why = "OpenGL does not compile a shader: " + first_line(log);
  return false;
}

bool make_program(const char* vertex, const char* fragment, unsigned* result, std::string* why) {
  const GLuint program = *result = gl::glCreateProgram();
  if (!add_shader(program, GL_VERTEX_SHADER, vertex, why) || !add_shader(program, GL_FRAGMENT_SHADER, fragment, why)) {
    return false;
  }
  gl::glBindAttribLocation(program, place_attribute, "place");
  gl::glBindAttribLocation(program, normal_attribute, "normal");
  gl::glBindAttribLocation(program, colour_attribute, "colour");
  gl::glLinkProgram(program);
  GLint linked = GL_FALSE;
  gl::glGetProgramiv(program, GL_LINK_STATUS, &linked);
  if (linked) return true;
  char log[512] = "";
  gl::glGetProgramInfoLog(program, sizeof log, nullptr, log);
  *why = "OpenGL does not link a program: " + first_line(log);
  return false;
}

bool prepare_programs(drawing* self, std::string* why) {
  face_program& faces = self->for_faces;
  line_program& lines = self->for_lines;
  if (!make_buffers(self, why) || !find_shader_entries(why) ||
      !make_program(face_vertex_source, face_fragment_source, &faces.program, why) ||
      !make_program(line_vertex_source, line_fragment_source, &lines.program, why)) {
    return false;
  }
  faces.ambient = gl::glGetUniformLocation(faces.program, "ambient");
  faces.diffuse = gl::glGetUniformLocation(faces.program, "diffuse");
  faces.specular = gl::glGetUniformLocation(faces.program, "specular");
  faces.shininess = gl::glGetUniformLocation(faces.program, "shininess");
  lines.tint = gl::glGetUniformLocation(lines.program, "tint");
  return true;
}

void set_attribute(GLuint attribute, size_t stride, size_t offset) {
  gl::glEnableVertexAttribArray(attribute);
  gl::glVertexAttribPointer(attribute, 3, GL_FLOAT, GL_FALSE, static_cast<GLsizei>(stride),
                            reinterpret_cast<const void*>(offset));
}

void end_drawing(GLuint last_attribute) {
  for (GLuint i = 0; i <= last_attribute; ++i) gl::glDisableVertexAttribArray(i);
  gl::glBindBuffer(GL_ARRAY_BUFFER, 0);
  gl::glUseProgram(0);
}

void shade_ground(const drawing& self) {
  static const GLfloat none[4] = {0, 0, 0, 0};
  gl::glUseProgram(self.for_lines.program);
  gl::glUniform4fv(self.for_lines.tint, 1, none);
  gl::glBindBuffer(GL_ARRAY_BUFFER, self.ground_buffer);
  set_attribute(place_attribute, sizeof(ground_vertex), offsetof(ground_vertex, place));
  set_attribute(colour_attribute, sizeof(ground_vertex), offsetof(ground_vertex, colour));
  glDrawArrays(GL_LINES, 0, static_cast<GLsizei>(self.shapes.ground.size()));
  end_drawing(colour_attribute);
}

void shade_faces(const drawing& self) {
  gl::glUseProgram(self.for_faces.program);
  gl::glBindBuffer(GL_ARRAY_BUFFER, self.faces_buffer);
  set_attribute(place_attribute, sizeof(face_vertex), offsetof(face_vertex, place));
  set_attribute(normal_attribute, sizeof(face_vertex), offsetof(face_vertex, normal));
  for (const material_run& run : self.shapes.runs) {
    const material& of = self.shown->materials[static_cast<size_t>(run.material)];
    gl::glUniform4fv(self.for_faces.ambient, 1, of.ambient);
    gl::glUniform4fv(self.for_faces.diffuse, 1, of.diffuse);
    gl::glUniform4fv(self.for_faces.specular, 1, of.specular);
    gl::glUniform1f(self.for_faces.shininess, of.shininess);
    glDrawArrays(GL_TRIANGLES, run.first, run.count);
  }
  end_drawing(normal_attribute);
}

void shade_edges(const drawing& self) {
  const GLfloat tint[4] = {edge_colour.x, edge_colour.y, edge_colour.z, 1};
  gl::glUseProgram(self.for_lines.program);
  gl::glUniform4fv(self.for_lines.tint, 1, tint);
  gl::glBindBuffer(GL_ARRAY_BUFFER, self.edge_places_buffer);
  gl::glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, self.edges_buffer);
  set_attribute(place_attribute, sizeof(vec3), 0);
  glDrawElements(GL_LINES, static_cast<GLsizei>(self.shapes.edges.size()), GL_UNSIGNED_INT, nullptr);
  gl::glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
  end_drawing(place_attribute);
}

}  // namespace

const renderer shaders_renderer = {"shaders", prepare_programs, shade_ground, shade_faces, shade_edges};
