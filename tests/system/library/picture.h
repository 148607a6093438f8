// What a window shows, as pixels, and how two such pictures differ.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

struct picture {
  int width, height;
  std::vector<unsigned> pixels;  // 0xRRGGBB, the uppermost row first
  RECT known;                    // the pixels outside of it are not: they lie beyond the edge of the desktop
};

// What the desktop's own pixels are where the window's client area is, whoever has put them there.
picture screen_picture(HWND hwnd);

// The whole client area as glReadPixels gives it, from the read buffer of the context that is current. Wants the
// default pack state.
picture read_back(HWND hwnd);

bool write_picture(const std::string& file, const picture& shown);
bool read_picture(const std::string& file, picture* shown);

struct difference {
  bool comparable;  // they are of one size
  long pixels;
  POINT first;   // of them
  long rounded;  // pixels that differ by no more than 1 in a colour, as an interpolated one may; not among the others
};

// Over the pixels that are known of both.
difference compare(const picture& a, const picture& b);

// How many different pixels follow each other in a row or from row to row: 0 for a picture of one colour.
long changes_within(const picture& shown);
