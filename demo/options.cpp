#include "options.h"

#include <CLI/CLI.hpp>
#include <cstdio>

namespace {

// "800x600" or "10,-20": two numbers with one character between them.
bool read_pair(const std::string& text, char between, int* first, int* second) {
  char separator = 0, rest = 0;
  return sscanf(text.c_str(), "%d%c%d%c", first, &separator, second, &rest) == 3 && separator == between;
}

// Words that mean more than the parser knows of.
struct raw_words {
  std::string size = "1200x700", position, by = lists_renderer.name;
};

void declare(CLI::App& app, options* result, raw_words* raw) {
  // A path may begin with a slash.
  app.allow_windows_style_options(false);
  app.add_option("model", result->model, "the file to show")->required();
  app.add_option("--renderer", raw->by, "how to draw: lists (the default), arrays, buffers or shaders");
  app.add_option("--frame", result->frame, "which picture of the turntable to show, from 0")
      ->check(CLI::NonNegativeNumber);
  app.add_option("--frames", result->benchmark_frames, "draw so many pictures first and print the rate")
      ->check(CLI::NonNegativeNumber);
  app.add_option("--size", raw->size, "WxH of the picture in pixels");
  app.add_option("--position", raw->position, "X,Y of its upper left corner on the desktop");
  app.add_flag("--exit", result->exit, "end when the picture has been shown");
  app.add_option("--ready", result->ready,
                 "write FILE, with X Y W H of the picture on the desktop, when it is on the screen; with --exit, "
                 "removing FILE ends the viewer");
  app.add_option("--hold", result->hold, "with --exit, seconds that the picture stays at most (1, with --ready 60)");
}

// A wrong word ends this as it ends the parser, by an exception of the parser's library.
void take_words(const raw_words& raw, options* result) {
  if (!read_pair(raw.size, 'x', &result->width, &result->height) || result->width < 64 || result->height < 64 ||
      result->width > 16384 || result->height > 16384) {
    throw CLI::ValidationError("--size", "takes WxH, each from 64 to 16384");
  }
  result->by = find_renderer(raw.by);
  if (!result->by) throw CLI::ValidationError("--renderer", "takes lists, arrays, buffers or shaders");
  result->placed = !raw.position.empty();
  if (result->placed && !read_pair(raw.position, ',', &result->x, &result->y)) {
    throw CLI::ValidationError("--position", "takes X,Y");
  }
}

}  // namespace

bool read_options(int count, char** words, options* result, int* status) {
  *result = {};
  result->hold = -1;
  CLI::App app("Shows a model, Wavefront OBJ or STL, on a turntable.", "viewer");
  raw_words raw;
  declare(app, result, &raw);
  try {
    app.parse(count, words);
    take_words(raw, result);
  } catch (const CLI::Success& asked) {
    *status = app.exit(asked);
    return false;
  } catch (const CLI::Error& error) {
    fprintf(stderr, "viewer: %s\n", error.what());
    *status = 2;
    return false;
  }
  if (result->hold < 0) result->hold = result->ready.empty() ? 1 : 60;
  return true;
}
