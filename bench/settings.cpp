#include "settings.h"

namespace {

void begin_nothing(const route&, setting_memory*) {}
void end_nothing(const route&, setting_memory*) {}

void begin_points(const route& through, setting_memory*) {
  call_of<glBegin_op>(through)(GL_POINTS);
}

void end_points(const route& through, setting_memory*) {
  call_of<glEnd_op>(through)();
}

// Triangles too small to be seen: what they cost is their way, not their pixels.
void fill_vertices(setting_memory* memory) {
  for (int i = 0; i < most_vertices; ++i) {
    memory->vertices[i][0] = 1e-6f * static_cast<float>(i % 3);
    memory->vertices[i][1] = 1e-6f * static_cast<float>(i % 2);
    memory->vertices[i][2] = 0;
  }
}

void begin_arrays(const route& through, setting_memory* memory) {
  fill_vertices(memory);
  call_of<glVertexPointer_op>(through)(3, GL_FLOAT, 0, memory->vertices);
  call_of<glEnableClientState_op>(through)(GL_VERTEX_ARRAY);
}

void end_arrays(const route& through, setting_memory*) {
  call_of<glDisableClientState_op>(through)(GL_VERTEX_ARRAY);
}

void begin_buffer(const route& through, setting_memory* memory) {
  fill_vertices(memory);
  call_of<glGenBuffers_op>(through)(1, &memory->name);
  // A driver that does nothing names nothing; without a buffer the pointer below would be taken for memory.
  if (!memory->name) memory->name = 1;
  // The first vertex's bytes are zeros, which do as indices too.
  for (const GLenum target : {GL_ELEMENT_ARRAY_BUFFER, GL_ARRAY_BUFFER}) {
    call_of<glBindBuffer_op>(through)(target, memory->name);
  }
  call_of<glBufferData_op>(through)(GL_ARRAY_BUFFER, sizeof memory->vertices, memory->vertices, GL_STATIC_DRAW);
  call_of<glVertexPointer_op>(through)(3, GL_FLOAT, 0, nullptr);
  call_of<glEnableClientState_op>(through)(GL_VERTEX_ARRAY);
}

void end_buffer(const route& through, setting_memory* memory) {
  end_arrays(through, memory);
  for (const GLenum target : {GL_ELEMENT_ARRAY_BUFFER, GL_ARRAY_BUFFER}) call_of<glBindBuffer_op>(through)(target, 0);
  call_of<glDeleteBuffers_op>(through)(1, &memory->name);
}

GLuint compile(const route& through, GLenum kind, const char* source) {
  const GLuint shader = call_of<glCreateShader_op>(through)(kind);
  call_of<glShaderSource_op>(through)(shader, 1, &source, nullptr);
  call_of<glCompileShader_op>(through)(shader);
  return shader;
}

void begin_program(const route& through, setting_memory* memory) {
  const GLuint vertex = compile(through, GL_VERTEX_SHADER, "void main() { gl_Position = gl_Vertex; }");
  const GLuint fragment =
      compile(through, GL_FRAGMENT_SHADER, "uniform vec4 colour; void main() { gl_FragColor = colour; }");
  memory->name = call_of<glCreateProgram_op>(through)();
  call_of<glAttachShader_op>(through)(memory->name, vertex);
  call_of<glAttachShader_op>(through)(memory->name, fragment);
  call_of<glLinkProgram_op>(through)(memory->name);
  call_of<glUseProgram_op>(through)(memory->name);
  call_of<glDeleteShader_op>(through)(vertex);
  call_of<glDeleteShader_op>(through)(fragment);
  memory->location = call_of<glGetUniformLocation_op>(through)(memory->name, "colour");
}

void end_program(const route& through, setting_memory* memory) {
  call_of<glUseProgram_op>(through)(0);
  call_of<glDeleteProgram_op>(through)(memory->name);
}

void begin_texture(const route& through, setting_memory* memory) {
  call_of<glGenTextures_op>(through)(1, &memory->name);
  call_of<glBindTexture_op>(through)(GL_TEXTURE_2D, memory->name);
  call_of<glTexImage2D_op>(through)(GL_TEXTURE_2D, 0, GL_RGBA, texture_size, texture_size, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                                    memory->pixels);
}

void end_texture(const route& through, setting_memory* memory) {
  call_of<glBindTexture_op>(through)(GL_TEXTURE_2D, 0);
  call_of<glDeleteTextures_op>(through)(1, &memory->name);
}

void begin_block(const route& through, setting_memory* memory) {
  call_of<glGenBuffers_op>(through)(1, &memory->name);
  call_of<glBindBuffer_op>(through)(GL_ARRAY_BUFFER, memory->name);
  call_of<glBufferData_op>(through)(GL_ARRAY_BUFFER, block_size, nullptr, GL_STREAM_DRAW);
}

void end_block(const route& through, setting_memory* memory) {
  call_of<glBindBuffer_op>(through)(GL_ARRAY_BUFFER, 0);
  call_of<glDeleteBuffers_op>(through)(1, &memory->name);
}

}  // namespace

namespace settings {

const setting plain = {begin_nothing, end_nothing};
const setting points = {begin_points, end_points};
const setting arrays = {begin_arrays, end_arrays};
const setting buffer = {begin_buffer, end_buffer};
const setting program = {begin_program, end_program};
const setting texture = {begin_texture, end_texture};
const setting block = {begin_block, end_block};

}  // namespace settings
