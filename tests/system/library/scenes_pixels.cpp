// Pixels that go to the window, come from it, and are copied within it.
#include <algorithm>
#include <cstring>

#include "scene.h"

namespace {

constexpr place over_all = {480, 231, 641, 423};  // over 800,450
constexpr int seam_x = 320;                       // where these lie in the window, from its lower left corner
constexpr int seam_y = 204;

void clear_to(float red, float green, float blue) {
  glClearColor(red, green, blue, 1);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
}

gl_window make_pixel_window(window_kind kind = double_buffered) {
  const gl_window window = make_window(over_all, nullptr, kind);
  glMatrixMode(GL_PROJECTION);
  glOrtho(0, over_all.width, 0, over_all.height, -1, 1);
  glMatrixMode(GL_MODELVIEW);
  return window;
}

// Squares of flat colours with their corners at odd places, no two alike.
void draw_squares(int shift) {
  for (int y = 0; y < 9; ++y) {
    for (int x = 0; x < 13; ++x) {
      glColor3ub(static_cast<GLubyte>(19 * x + shift), static_cast<GLubyte>(27 * y), static_cast<GLubyte>(x * y * 2));
      glRecti(51 * x, 49 * y, 51 * x + 40, 49 * y + 37);
    }
  }
}

// A picture of `width` by `height` with 4 bytes a pixel.
std::vector<GLubyte> image(int width, int height) {
  std::vector<GLubyte> bytes(static_cast<size_t>(width) * height * 4);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      GLubyte* pixel = &bytes[(static_cast<size_t>(y) * width + x) * 4];
      pixel[0] = static_cast<GLubyte>(x * 5);
      pixel[1] = static_cast<GLubyte>(y * 7);
      pixel[2] = static_cast<GLubyte>((x / 8 + y / 8) % 2 * 200);
      pixel[3] = static_cast<GLubyte>(255 - x);
    }
  }
  return bytes;
}

const GLubyte arrow[] = {0x18, 0x3c, 0x7e, 0xff, 0x18, 0x18, 0x18, 0x18,
                         0x0f, 0xf0, 0x33, 0xcc, 0x55, 0xaa, 0xff, 0x81};

void bitmaps() {
  begin_scene(__func__);
  const gl_window window = make_pixel_window();
  const gl_extensions gl = find_extensions();
  clear_to(0.1f, 0.1f, 0.3f);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  for (int row = 0; row < 20; ++row) {
    glColor3ub(255, static_cast<GLubyte>(12 * row), 90);
    glRasterPos2i(7 * row, 21 * row);
    for (int i = 0; i < 40; ++i) glBitmap(8, 16, 2, 3, 11, 0.25f, arrow);
  }
  show(window, "rows");
  clear_to(0.9f, 0.9f, 0.9f);
  glColor3ub(200, 0, 40);
  for (int i = 0; i < 30; ++i) {
    gl.glWindowPos2i(seam_x - 60 + 4 * i, seam_y - 60 + 4 * i);
    glBitmap(8, 16, 0, 0, 0, 0, arrow);
    gl.glWindowPos3f(static_cast<float>(20 * i), 5, 0.5f);
    glBitmap(8, 16, 0, 0, 0, 0, arrow);
  }
  const GLuint list = glGenLists(1);
  glNewList(list, GL_COMPILE);
  glBitmap(8, 16, 0, 0, 9, 1, arrow);
  glEndList();
  glRasterPos2i(100, 190);
  for (int i = 0; i < 45; ++i) glCallList(list);
  GLfloat at[4];
  glGetFloatv(GL_CURRENT_RASTER_POSITION, at);
  note("raster position %.2f %.2f", static_cast<double>(at[0]), static_cast<double>(at[1]));
  show(window, "places");
  destroy_window(window);
}

void drawn_images() {
  begin_scene(__func__);
  const gl_window window = make_pixel_window();
  const std::vector<GLubyte> bytes = image(100, 60);
  clear_to(0.2f, 0.2f, 0.2f);
  for (int i = 0; i < 6; ++i) {
    glRasterPos2i(10 + 100 * i, 20 + 60 * i);
    glDrawPixels(100, 60, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
  }
  glPixelZoom(2, -2);
  glRasterPos2i(seam_x - 100, seam_y + 50);
  glDrawPixels(100, 60, GL_BGRA_EXT, GL_UNSIGNED_BYTE, bytes.data());
  glPixelZoom(1, 1);
  show(window, "whole");
  clear_to(0.4f, 0.2f, 0.5f);
  glPixelStorei(GL_UNPACK_ROW_LENGTH, 100);
  glPixelStorei(GL_UNPACK_SKIP_PIXELS, 13);
  glPixelStorei(GL_UNPACK_SKIP_ROWS, 5);
  glPixelTransferf(GL_RED_SCALE, 0.5f);
  glPixelTransferf(GL_GREEN_BIAS, 0.25f);
  for (int i = 0; i < 5; ++i) {
    glRasterPos2i(seam_x - 150 + 70 * i, 30 + 80 * i);
    glDrawPixels(70, 50, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
  }
  glRasterPos2i(20, 330);
  glDrawPixels(50, 40, GL_LUMINANCE, GL_UNSIGNED_SHORT, bytes.data());
  // These two hold for reading too.
  glPixelTransferf(GL_RED_SCALE, 1);
  glPixelTransferf(GL_GREEN_BIAS, 0);
  show(window, "sections");
  destroy_window(window);
}

// The image is changed as soon as the call returns.
void reused_memory() {
  begin_scene(__func__);
  const gl_window window = make_pixel_window();
  clear_to(0, 0, 0);
  std::vector<GLubyte> bytes;
  for (int i = 0; i < 12; ++i) {
    bytes = image(200, 130);
    for (GLubyte& byte : bytes) byte = static_cast<GLubyte>(byte + 20 * i);
    glRasterPos2i(5 + 35 * i, 3 + 23 * i);
    glDrawPixels(200, 130, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
    std::fill(bytes.begin(), bytes.end(), static_cast<GLubyte>(0));
  }
  bytes.clear();
  bytes.shrink_to_fit();
  show(window, "images");
  destroy_window(window);
}

struct box {
  const char* name;
  int left, bottom, width, height;
};

constexpr box boxes[] = {{"whole", 0, 0, over_all.width, over_all.height},
                         {"one part", 10, 12, 100, 70},
                         {"corner", seam_x - 50, seam_y - 40, 90, 77},
                         {"over x", seam_x - 3, 20, 7, 30},
                         {"over y", 500, seam_y - 1, 60, 3},
                         {"on x", seam_x, 0, 1, over_all.height},
                         {"before x", seam_x - 1, 0, 1, over_all.height},
                         {"one pixel", seam_x, seam_y, 1, 1}};

template <class Element>
void read_boxes(const char* kind, GLenum format, GLenum type, int elements) {
  for (const box& from : boxes) {
    std::vector<Element> pixels(static_cast<size_t>(from.width) * from.height * elements);
    glReadPixels(from.left, from.bottom, from.width, from.height, format, type, pixels.data());
    const std::string name = std::string(kind) + ", " + from.name;
    note_bytes(name.c_str(), pixels.data(), pixels.size() * sizeof(Element));
  }
}

// Only the image's own pixels of the larger memory may be written.
void read_with_pack_state() {
  std::vector<GLubyte> bytes(400 * 300 * 3, 0x5a);
  glPixelStorei(GL_PACK_ROW_LENGTH, 391);
  glPixelStorei(GL_PACK_SKIP_PIXELS, 17);
  glPixelStorei(GL_PACK_SKIP_ROWS, 9);
  glReadPixels(seam_x - 101, seam_y - 77, 201, 133, GL_RGB, GL_UNSIGNED_BYTE, bytes.data());
  note_bytes("packed", bytes.data(), bytes.size());
  GLint state[4];
  glGetIntegerv(GL_PACK_ALIGNMENT, &state[0]);
  glGetIntegerv(GL_PACK_ROW_LENGTH, &state[1]);
  glGetIntegerv(GL_PACK_SKIP_PIXELS, &state[2]);
  glGetIntegerv(GL_PACK_SKIP_ROWS, &state[3]);
  note("pack state %d %d %d %d", state[0], state[1], state[2], state[3]);
  glPixelStorei(GL_PACK_ALIGNMENT, 4);
  glPixelStorei(GL_PACK_ROW_LENGTH, 0);
  glPixelStorei(GL_PACK_SKIP_PIXELS, 0);
  glPixelStorei(GL_PACK_SKIP_ROWS, 0);
}

void reads() {
  begin_scene(__func__);
  const gl_window window = make_pixel_window();
  clear_to(0.3f, 0.3f, 0.3f);
  glEnable(GL_STENCIL_TEST);
  glEnable(GL_DEPTH_TEST);
  glStencilOp(GL_KEEP, GL_INCR, GL_INCR);
  draw_squares(3);
  glTranslatef(17, 23, 0.5f);
  draw_squares(9);
  glLoadIdentity();
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  read_boxes<GLubyte>("bytes", GL_RGBA, GL_UNSIGNED_BYTE, 4);
  read_boxes<GLushort>("565", GL_RGB, GL_UNSIGNED_SHORT_5_6_5, 1);
  read_boxes<GLfloat>("floats", GL_BGR_EXT, GL_FLOAT, 3);
  read_boxes<GLfloat>("depth", GL_DEPTH_COMPONENT, GL_FLOAT, 1);
  read_boxes<GLubyte>("stencil", GL_STENCIL_INDEX, GL_UNSIGNED_BYTE, 1);
  read_boxes<GLubyte>("green", GL_GREEN, GL_UNSIGNED_BYTE, 4);
  read_with_pack_state();
  show(window, "squares");
  destroy_window(window);
}

void copied_pixels() {
  begin_scene(__func__);
  const gl_window window = make_pixel_window();
  clear_to(0.1f, 0.3f, 0.2f);
  draw_squares(0);
  // From one side of the seams to the other, over both, and back.
  glRasterPos2i(400, 250);
  glCopyPixels(10, 10, 200, 150, GL_COLOR);
  glRasterPos2i(5, 230);
  glCopyPixels(seam_x - 60, seam_y - 60, 180, 120, GL_COLOR);
  glRasterPos2i(seam_x - 90, seam_y - 20);
  glCopyPixels(430, 15, 150, 60, GL_COLOR);
  show(window, "copied");
  glPixelZoom(-2, 2);
  glRasterPos2i(600, 20);
  glCopyPixels(100, 180, 120, 90, GL_COLOR);
  glPixelZoom(1, 1);
  show(window, "zoomed");
  destroy_window(window);
}

void draw_textured(int left, int bottom, int right, int top) {
  glEnable(GL_TEXTURE_2D);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
  glBegin(GL_QUADS);
  glTexCoord2i(0, 0);
  glVertex2i(left, bottom);
  glTexCoord2i(1, 0);
  glVertex2i(right, bottom);
  glTexCoord2i(1, 1);
  glVertex2i(right, top);
  glTexCoord2i(0, 1);
  glVertex2i(left, top);
  glEnd();
  glDisable(GL_TEXTURE_2D);
}

void copied_textures() {
  begin_scene(__func__);
  const gl_window window = make_pixel_window();
  GLuint texture;
  glGenTextures(1, &texture);
  glBindTexture(GL_TEXTURE_2D, texture);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
  clear_to(0.3f, 0.1f, 0.1f);
  draw_squares(7);
  glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, seam_x - 128, seam_y - 100, 256, 256, 0);
  clear_to(0.1f, 0.1f, 0.1f);
  draw_textured(0, 0, 256, 256);
  draw_textured(352, 150, 608, 406);
  show(window, "whole");
  clear_to(0.1f, 0.4f, 0.4f);
  draw_squares(90);
  glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 30, 40, seam_x - 20, seam_y - 70, 150, 120);
  draw_textured(192, 90, 448, 346);
  show(window, "section");
  std::vector<GLubyte> texels(256 * 256 * 4);
  glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
  note_bytes("texels", texels.data(), texels.size());
  glDeleteTextures(1, &texture);
  destroy_window(window);
}

void accumulation() {
  begin_scene(__func__);
  const gl_window window = make_pixel_window(accumulating);
  clear_to(0.5f, 0.5f, 0.5f);
  glClearAccum(0, 0, 0, 0);
  glClear(GL_ACCUM_BUFFER_BIT);
  for (int i = 0; i < 4; ++i) {
    clear_to(0.5f, 0.5f, 0.5f);
    glTranslatef(5, 3, 0);
    draw_squares(10 * i);
    glAccum(GL_ACCUM, 0.25f);
  }
  glAccum(GL_RETURN, 1);
  show(window, "blurred");
  destroy_window(window);
}

}  // namespace

const scene_group pixel_scenes = {"pixels",
                                  {{"bitmaps", bitmaps},
                                   {"drawn_images", drawn_images},
                                   {"reused_memory", reused_memory},
                                   {"reads", reads},
                                   {"copied_pixels", copied_pixels},
                                   {"copied_textures", copied_textures},
                                   {"accumulation", accumulation}}};
