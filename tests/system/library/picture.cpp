#include "picture.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "window.h"

namespace {

constexpr unsigned colour_bits = 0xffffff;

RECT desktop() {
  const LONG left = GetSystemMetrics(SM_XVIRTUALSCREEN), top = GetSystemMetrics(SM_YVIRTUALSCREEN);
  return {left, top, left + GetSystemMetrics(SM_CXVIRTUALSCREEN), top + GetSystemMetrics(SM_CYVIRTUALSCREEN)};
}

BITMAPINFOHEADER header_of(int width, int height) {
  BITMAPINFOHEADER header = {};
  header.biSize = sizeof header;
  header.biWidth = width;
  header.biHeight = -height;
  header.biPlanes = 1;
  header.biBitCount = 32;
  header.biCompression = BI_RGB;
  return header;
}

// The largest difference of the two in one of the three colours.
int distance(unsigned a, unsigned b) {
  int largest = 0;
  for (int shift = 0; shift < 24; shift += 8) {
    const int by = static_cast<int>(a >> shift & 255) - static_cast<int>(b >> shift & 255);
    largest = std::max(largest, std::abs(by));
  }
  return largest;
}

}  // namespace

picture screen_picture(HWND hwnd) {
  const place at = client_place(hwnd);
  picture shown = {at.width, at.height, std::vector<unsigned>(static_cast<size_t>(at.width) * at.height), {}};
  const RECT client = {at.left, at.top, at.left + at.width, at.top + at.height}, whole = desktop();
  IntersectRect(&shown.known, &client, &whole);
  OffsetRect(&shown.known, -at.left, -at.top);
  BITMAPINFO info = {};
  info.bmiHeader = header_of(at.width, at.height);
  void* bits = nullptr;
  const HDC screen = GetDC(nullptr), memory = CreateCompatibleDC(screen);
  const HBITMAP bitmap = CreateDIBSection(screen, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
  if (bitmap) {
    const HGDIOBJ before = SelectObject(memory, bitmap);
    const RECT& part = shown.known;
    BitBlt(memory, part.left, part.top, part.right - part.left, part.bottom - part.top, screen, at.left + part.left,
           at.top + part.top, SRCCOPY);
    GdiFlush();
    memcpy(shown.pixels.data(), bits, shown.pixels.size() * sizeof(unsigned));
    SelectObject(memory, before);
    DeleteObject(bitmap);
  }
  DeleteDC(memory);
  ReleaseDC(nullptr, screen);
  for (unsigned& pixel : shown.pixels) pixel &= colour_bits;
  return shown;
}

picture read_back(HWND hwnd) {
  const place at = client_place(hwnd);
  const size_t row = at.width;
  std::vector<unsigned> upwards(row * at.height);
  glReadPixels(0, 0, at.width, at.height, GL_BGRA_EXT, GL_UNSIGNED_BYTE, upwards.data());
  picture shown = {at.width, at.height, std::vector<unsigned>(upwards.size()), {0, 0, at.width, at.height}};
  for (int y = 0; y < at.height; ++y) {
    memcpy(&shown.pixels[y * row], &upwards[(at.height - 1 - y) * row], row * sizeof(unsigned));
  }
  for (unsigned& pixel : shown.pixels) pixel &= colour_bits;
  return shown;
}

// The known part stands in the fields of the header that say how large a pixel is in print.
bool write_picture(const std::string& file, const picture& shown) {
  FILE* out = fopen(file.c_str(), "wb");
  if (!out) return false;
  const auto size = static_cast<DWORD>(shown.pixels.size() * sizeof(unsigned));
  BITMAPFILEHEADER head = {};
  head.bfType = 0x4d42;
  head.bfOffBits = sizeof head + sizeof(BITMAPINFOHEADER);
  head.bfSize = head.bfOffBits + size;
  BITMAPINFOHEADER header = header_of(shown.width, shown.height);
  header.biXPelsPerMeter = MAKELONG(shown.known.left, shown.known.top);
  header.biYPelsPerMeter = MAKELONG(shown.known.right, shown.known.bottom);
  fwrite(&head, sizeof head, 1, out);
  fwrite(&header, sizeof header, 1, out);
  const bool written = fwrite(shown.pixels.data(), 1, size, out) == size;
  return fclose(out) == 0 && written;
}

bool read_picture(const std::string& file, picture* shown) {
  FILE* in = fopen(file.c_str(), "rb");
  if (!in) return false;
  BITMAPFILEHEADER head;
  BITMAPINFOHEADER header;
  bool good = fread(&head, sizeof head, 1, in) == 1 && fread(&header, sizeof header, 1, in) == 1;
  if (good) {
    const LONG first = header.biXPelsPerMeter, last = header.biYPelsPerMeter;
    *shown = {header.biWidth, -header.biHeight, {}, {LOWORD(first), HIWORD(first), LOWORD(last), HIWORD(last)}};
    shown->pixels.resize(static_cast<size_t>(shown->width) * shown->height);
    good = fread(shown->pixels.data(), sizeof(unsigned), shown->pixels.size(), in) == shown->pixels.size();
  }
  fclose(in);
  return good;
}

difference compare(const picture& a, const picture& b) {
  difference found = {a.width == b.width && a.height == b.height, 0, {-1, -1}, 0};
  if (!found.comparable) return found;
  RECT both;
  IntersectRect(&both, &a.known, &b.known);
  for (LONG y = both.top; y < both.bottom; ++y) {
    const size_t row = static_cast<size_t>(y) * a.width;
    for (LONG x = both.left; x < both.right; ++x) {
      if (a.pixels[row + x] == b.pixels[row + x]) continue;
      if (distance(a.pixels[row + x], b.pixels[row + x]) <= 1) {
        ++found.rounded;
      } else if (found.pixels++ == 0) {
        found.first = {x, y};
      }
    }
  }
  return found;
}

long changes_within(const picture& shown) {
  long changes = 0;
  for (LONG y = shown.known.top; y < shown.known.bottom; ++y) {
    const size_t row = static_cast<size_t>(y) * shown.width;
    for (LONG x = shown.known.left; x < shown.known.right; ++x) {
      const unsigned pixel = shown.pixels[row + x];
      if (x > shown.known.left && shown.pixels[row + x - 1] != pixel) ++changes;
      if (y > shown.known.top && shown.pixels[row + x - shown.width] != pixel) ++changes;
    }
  }
  return changes;
}
