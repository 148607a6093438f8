// The viewer's command line.
#pragma once

#include <string>

#include "renderer.h"

struct options {
  std::string model;
  const renderer* by;
  int frame;             // the picture of the turntable to show, from 0
  bool exit;             // end by itself once the picture has been shown
  std::string ready;     // a file to write when the picture is on the screen; empty: none
  double hold;           // seconds that the picture stays at most, with exit
  int benchmark_frames;  // pictures to draw first, as fast as they go
  int width, height;     // of the picture, in pixels
  bool placed;           // x and y were given
  int x, y;              // of the picture's upper left corner on the desktop
};

// Reads the command line. On success the result is true. Otherwise the program is to end with `*status`: after a wrong
// word, one line about it on standard error, 2; after a request for help, that on standard output, 0.
bool read_options(int count, char** words, options* result, int* status);
