// The viewer's letters: a font of 5 by 7 dots, drawn by hand, for the printable ASCII characters.
#pragma once

#include <cstdint>

constexpr int glyph_columns = 5;
constexpr int glyph_rows = 7;
constexpr char first_glyph = ' ';
constexpr char last_glyph = '~';

// For each character its rows from the top; the lowest five bits of a row are its dots, the leftmost the highest.
extern const uint8_t glyphs[last_glyph - first_glyph + 1][glyph_rows];

// Letters that hang below the line, by so many dots.
constexpr char hanging_glyphs[] = "gpqy";
constexpr int hanging_dots = 2;
