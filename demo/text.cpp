#include "text.h"

#include <windows.h>
// GL's header needs the one above.
#include <GL/gl.h>

#include <cstring>

#include "glyphs.h"

namespace {

constexpr int largest_scale = 3;
constexpr int row_bytes = (glyph_columns * largest_scale + 7) / 8;

// A glyph's dots blown up, as glBitmap takes them: rows from the bottom, the leftmost dot in the highest bit.
void blow_up(const uint8_t* glyph, int scale, GLubyte (*rows)[row_bytes]) {
  for (int y = 0; y < glyph_rows * scale; ++y) {
    unsigned dots = glyph[glyph_rows - 1 - y / scale], bits = 0;
    for (int x = 0; x < glyph_columns * scale; ++x) {
      if (dots >> (glyph_columns - 1 - x / scale) & 1) bits |= 1u << (row_bytes * 8 - 1 - x);
    }
    for (int i = 0; i < row_bytes; ++i) rows[y][i] = static_cast<GLubyte>(bits >> (row_bytes - 1 - i) * 8);
  }
}

}  // namespace

font make_font(int scale) {
  const int count = last_glyph - first_glyph + 1;
  const font result = {glGenLists(count), (glyph_columns + 1) * scale, glyph_rows * scale};
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  glPixelStorei(GL_UNPACK_ROW_LENGTH, row_bytes * 8);
  for (int i = 0; i < count; ++i) {
    GLubyte rows[glyph_rows * largest_scale][row_bytes];
    blow_up(glyphs[i], scale, rows);
    glNewList(result.lists + static_cast<GLuint>(i), GL_COMPILE);
    const int below = strchr(hanging_glyphs, first_glyph + i) ? hanging_dots * scale : 0;
    glBitmap(glyph_columns * scale, glyph_rows * scale, 0, static_cast<GLfloat>(below),
             static_cast<GLfloat>(result.advance), 0, rows[0]);
    glEndList();
  }
  glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
  return result;
}

int text_width(const font& letters, const std::string& text) {
  return letters.advance * static_cast<int>(text.size());
}

void draw_text(const font& letters, const std::string& text) {
  std::string drawn = text;
  for (char& letter : drawn) {
    if (letter < first_glyph || letter > last_glyph) letter = '?';
  }
  glListBase(letters.lists - static_cast<GLuint>(first_glyph));
  glCallLists(static_cast<GLsizei>(drawn.size()), GL_UNSIGNED_BYTE, drawn.data());
}

void draw_text_at(const font& letters, vec3 place, const std::string& text) {
  glRasterPos3f(place.x, place.y, place.z);
  draw_text(letters, text);
}
