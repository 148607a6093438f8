// Text on the picture, by glBitmap: each letter is a display list, a line of text one glCallLists.
#pragma once

#include <string>

#include "model.h"

struct font {
  unsigned lists;  // the display list of the first glyph
  int advance;     // pixels from letter to letter
  int height;      // pixels of a capital letter
};

// A font whose dots are scale by scale pixels. Needs a current context, like everything here.
font make_font(int scale);

int text_width(const font& letters, const std::string& text);

// Draws from the current raster position on, in the colour that was current when that was set.
void draw_text(const font& letters, const std::string& text);
// At a place of the model's space; the text moves with the model and is not scaled. Nothing if the place is not in
// view.
void draw_text_at(const font& letters, vec3 place, const std::string& text);
