// What has to be set up for a measured call, and is taken down behind it. All of it goes the way of the call itself.
#pragma once

#include "route.h"

constexpr int most_vertices = 300;
constexpr int texture_size = 512;  // pixels on a side

constexpr GLsizeiptr block_size = 65536;  // bytes

struct setting_memory {
  const route* through;
  GLint integers[16];
  GLfloat colour[4];
  GLfloat vertices[most_vertices][3];
  GLubyte pixels[texture_size * texture_size * 4];
  GLuint name;  // of the buffer, program or texture
  GLint location;
};

struct setting {
  void (*begin)(const route& through, setting_memory* memory);
  void (*end)(const route& through, setting_memory* memory);
};

namespace settings {

extern const setting plain;    // nothing
extern const setting points;   // between glBegin and glEnd
extern const setting arrays;   // most_vertices in the application's memory
extern const setting buffer;   // the same in a buffer object
extern const setting program;  // with a uniform at memory.location
extern const setting texture;  // of RGBA pixels, bound
extern const setting block;    // a buffer object of block_size, bound

}  // namespace settings
