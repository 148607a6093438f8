#include "scene.h"

#include <cstdarg>
#include <string>
#include <vector>

#include "parts.h"
#include "picture.h"

namespace {

// How long a picture may take to get to the screen.
constexpr DWORD patience = 10000;  // ms
constexpr DWORD look_interval = 30;
// The least that a picture must show, in changes from one pixel to the next.
constexpr long least_changes = 200;

scene_role role;
int part_count;
std::string scene_name;
picture last_shown;
std::vector<std::string> notes;
size_t notes_compared;

std::string file_of(const char* folder, const std::string& step, const char* what) {
  return std::string(folder) + "\\" + scene_name + "-" + step + what;
}

std::string reference_file(const std::string& step, const char* what) {
  return file_of(word_of(reference_role), step, what);
}

void fail_step(const std::string& step, const std::string& words) {
  fail(__FILE__, __LINE__, (scene_name + ", " + step).c_str(), (": " + words).c_str());
}

std::string words_of(const difference& found) {
  if (!found.comparable) return "another size";
  return std::to_string(found.pixels) + " pixels differ, the first at " + std::to_string(found.first.x) + "," +
         std::to_string(found.first.y);
}

// Empty when the pictures agree.
std::string complaint(const picture& got, const picture& wanted) {
  const difference all = compare(got, wanted);
  if (!all.comparable || !EqualRect(&got.known, &wanted.known)) return "another size";
  if (all.pixels == 0 && all.rounded == 0) return "";
  return words_of(all) + ", and " + std::to_string(all.rounded) + " by a rounding";
}

// Takes messages until the screen shows the picture, or patience is at its end. Result: what the screen showed then.
picture await_screen(HWND hwnd, const picture& wanted) {
  const DWORD start = GetTickCount();
  for (;;) {
    pump(look_interval);
    picture shown = screen_picture(hwnd);
    picture expected = wanted;
    expected.known = shown.known;
    if (complaint(shown, expected).empty() || GetTickCount() - start > patience) return shown;
  }
}

// The screen must agree with the read-back exactly: the same pixels have gone both ways.
void compare_screen_with_read(const std::string& step, const picture& shown, const picture& read) {
  const difference found = compare(shown, read);
  if (!found.comparable || found.pixels || found.rounded)
    fail_step(step, "the screen shows not what was read back, " + words_of(found));
}

void check_is_new(const std::string& step, const picture& shown) {
  if (changes_within(shown) < least_changes) fail_step(step, "the picture shows too little");
  const difference found = compare(shown, last_shown);
  if (found.comparable && found.pixels * 200 < static_cast<long>(shown.pixels.size())) {
    fail_step(step, "the picture is that of the step before");
  }
  last_shown = shown;
}

void keep(const std::string& step, const char* what, const picture& shown) {
  if (!write_picture(file_of(word_of(role), step, what), shown)) fail_step(step, "the picture cannot be kept");
}

bool take_kept(scene_role by, const std::string& step, const char* what, picture* kept) {
  if (read_picture(file_of(word_of(by), step, what), kept)) return true;
  fail_step(step, std::string(word_of(by)) + " has no such picture");
  return false;
}

bool take_reference(const std::string& step, const char* what, picture* kept) {
  return take_kept(reference_role, step, what, kept);
}

// The same calls reach the same contexts on both paths: nothing may differ.
void compare_paths(const std::string& step, const char* what, const picture& got) {
  picture kept;
  if (!take_kept(sequential_role, step, what, &kept)) return;
  const difference found = compare(got, kept);
  if (!found.comparable || found.pixels || found.rounded) {
    fail_step(step, std::string(what + 1) + ": the paths differ, " + std::to_string(found.rounded) +
                        " by a rounding, and " + words_of(found));
  }
}

void compare_with_reference(const std::string& step, const char* what, const picture& got) {
  keep(step, what, got);
  if (role == threaded_role) compare_paths(step, what, got);
  picture kept;
  if (!take_reference(step, what, &kept)) return;
  const std::string words = complaint(got, kept);
  if (!words.empty()) fail_step(step, std::string(what + 1) + ": " + words);
}

// A part without a share of the window may be kept at a single pixel.
bool covers(const std::vector<part_window>& parts, long area) {
  long unused = 0;
  for (const part_window& part : parts) {
    unused += part.rect.right - part.rect.left == 1 && part.rect.bottom - part.rect.top == 1;
  }
  const long covered = visible_area(parts);
  return covered >= area && covered <= area + unused;
}

// A window that shows something has its parts, and they leave nothing of it uncovered.
void check_parts(const std::string& step, HWND hwnd, const std::vector<part_window>& parts) {
  const place at = client_place(hwnd);
  if (static_cast<int>(parts.size()) != part_count) {
    fail_step(step, "the window has " + std::to_string(parts.size()) + " parts");
  } else if (part_count && !covers(parts, static_cast<long>(at.width) * at.height)) {
    fail_step(step, "the parts do not cover the window");
  }
}

void check_no_visible_parts(const std::string& step, const std::vector<part_window>& parts) {
  if (visible_area(parts) != 0) fail_step(step, "parts lie over the window");
}

// Waits for a picture that only the screen tells: until it stands still and is not that of the step before.
picture await_change(HWND hwnd) {
  const DWORD start = GetTickCount();
  picture before = screen_picture(hwnd);
  for (;;) {
    pump(5 * look_interval);
    picture shown = screen_picture(hwnd);
    const difference still = compare(shown, before), old = compare(shown, last_shown);
    const bool is_new = !old.comparable || old.pixels;
    if ((still.comparable && still.pixels == 0 && is_new) || GetTickCount() - start > patience) return shown;
    before = shown;
  }
}

void keep_screen(const std::string& step, const picture& shown) {
  check_is_new(step, shown);
  keep(step, "-screen.bmp", shown);
}

void keep_shown(HWND hwnd, const std::string& step, const picture& read) {
  const picture shown = await_screen(hwnd, read);
  compare_screen_with_read(step, shown, read);
  keep_screen(step, shown);
}

void compare_shown(HWND hwnd, const std::string& step, const picture* read) {
  picture kept;
  if (!take_reference(step, "-screen.bmp", &kept)) return;
  const picture shown = await_screen(hwnd, read ? *read : kept);
  compare_with_reference(step, "-screen.bmp", shown);
  if (read) compare_screen_with_read(step, shown, *read);
}

void await_shown(HWND hwnd, const std::string& step, const picture* read) {
  if (role == reference_role) {
    keep_shown(hwnd, step, *read);
  } else {
    compare_shown(hwnd, step, read);
  }
}

picture read_and_compare(HWND hwnd, const std::string& step) {
  const picture read = read_back(hwnd);
  note_error(step.c_str());
  if (role == reference_role) {
    keep(step, "-read.bmp", read);
  } else {
    compare_with_reference(step, "-read.bmp", read);
  }
  return read;
}

// In the basic mode a frame stays in its list until a call waits, as one does there that else does nothing.
void present(const gl_window& window) {
  CHECK(SwapBuffers(window.hdc));
  if (is_basic()) glInitNames();
}

void show_swapped(const gl_window& window, const char* step, bool with_parts) {
  const std::vector<part_window> parts = parts_of(window.hwnd);
  if (with_parts) {
    check_parts(step, window.hwnd, parts);
  } else {
    check_no_visible_parts(step, parts);
  }
  const picture read = read_and_compare(window.hwnd, step);
  present(window);
  repaints = true;
  await_shown(window.hwnd, step, &read);
  repaints = false;
}

// The reference may be asked for what it has drawn: nothing there waits to be handed over.
void show_unread_parts(HWND hwnd, const char* step, const picture& reference_read) {
  const std::vector<part_window> parts = parts_of(hwnd);
  check_parts(step, hwnd, parts);
  await_shown(hwnd, step, role == reference_role ? &reference_read : nullptr);
}

// The lines that the reference noted in this scene.
void read_notes() {
  FILE* in = fopen(reference_file("notes", ".txt").c_str(), "r");
  if (!in) {
    fail_step("notes", "the reference has none");
    return;
  }
  char line[512];
  while (fgets(line, sizeof line, in)) {
    notes.push_back(line);
    if (!notes.back().empty() && notes.back().back() == '\n') notes.back().pop_back();
  }
  fclose(in);
}

void keep_note(const char* line) {
  FILE* out = fopen(reference_file("notes", ".txt").c_str(), "a");
  CHECK(out != nullptr);
  if (!out) return;
  fprintf(out, "%s\n", line);
  fclose(out);
}

void compare_note(const char* line) {
  if (notes.empty()) read_notes();
  const std::string wanted = notes_compared < notes.size() ? notes[notes_compared] : "nothing";
  ++notes_compared;
  if (wanted != line) fail_step("notes", std::string(line) + "; the reference has " + wanted);
}

}  // namespace

const char* word_of(scene_role which) {
  static const char* const words[] = {"reference", "sequential", "threaded"};
  return words[which];
}

void begin_scenes(scene_role chosen, int parts) {
  role = chosen;
  part_count = parts;
  CreateDirectoryA(word_of(role), nullptr);
}

void begin_scene(const char* name) {
  scene_name = name;
  last_shown = {};
  notes.clear();
  notes_compared = 0;
}

bool is_threaded() {
  return role == threaded_role;
}

bool is_basic() {
  return part_count != 0 && !GetEnvironmentVariableA("OSW_EXTENDED", nullptr, 0);
}

int expected_parts() {
  return part_count;
}

void show(const gl_window& window, const char* step) {
  show_swapped(window, step, true);
}

void show_without_parts(const gl_window& window, const char* step) {
  show_swapped(window, step, false);
}

void show_unread(const gl_window& window, const char* step) {
  picture read;
  if (role == reference_role) read = read_back(window.hwnd);
  present(window);
  show_unread_parts(window.hwnd, step, read);
}

void show_left_alone(const gl_window& window, const char* step) {
  picture read;
  if (role == reference_role) read = read_back(window.hwnd);
  show_unread_parts(window.hwnd, step, read);
}

void show_frame(HWND frame, const char* step) {
  repaints = true;
  if (role == reference_role) {
    keep_screen(step, await_change(frame));
  } else {
    compare_shown(frame, step, nullptr);
  }
  repaints = false;
}

void note(const char* format, ...) {
  char line[480];
  va_list values;
  va_start(values, format);
  vsnprintf(line, sizeof line, format, values);
  va_end(values);
  if (role == reference_role) {
    keep_note(line);
  } else {
    compare_note(line);
  }
}

void note_bytes(const char* name, const void* bytes, size_t size) {
  unsigned long long sum = 14695981039346656037u;
  for (size_t i = 0; i < size; ++i) sum = (sum ^ static_cast<const unsigned char*>(bytes)[i]) * 1099511628211u;
  note("%s: %u bytes, %016llx", name, static_cast<unsigned>(size), sum);
}

void note_error(const char* name) {
  const GLenum error = glGetError();
  note("error after %s: 0x%x", name, error);
  CHECK_EQUAL(error, GL_NO_ERROR);
}
