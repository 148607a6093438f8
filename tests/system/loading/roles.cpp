#include "roles.h"

#include <cstring>
#include <string>

#include "look_up.h"
#include "module.h"
#include "parts.h"
#include "picture.h"
#include "processes.h"
#include "support/check.h"
#include "window.h"

namespace {

constexpr int role_limit = 60;                    // s
constexpr place over_all = {560, 270, 501, 377};  // over the middle of the screen

// What follows the role's own name on the command line.
char** words;

size_t count_of(const char* word) {
  return static_cast<size_t>(atoi(word));
}

HANDLE open_event(const char* name) {
  const HANDLE event = OpenEventA(EVENT_ALL_ACCESS, FALSE, name);
  CHECK(event != nullptr);
  return event;
}

void meet(const char* ready, const char* go) {
  SetEvent(open_event(ready));
  WaitForSingleObject(open_event(go), INFINITE);
}

void hold() {
  if (strcmp(words[0], "-") != 0) exported<char*(const char*)>("EnablePerformanceOptimization")(words[0]);
  meet(words[1], words[2]);
}

void switch_off() {
  exported<void()>("DisablePerformanceOptimization")();
}

void find_section() {
  const shared_section* section = find_shared_section();
  CHECK(section != nullptr);
  if (!section) return;
  CHECK_EQUAL(section->enable, atoi(words[0]));
  const std::string wanted = strcmp(words[1], "-") == 0 ? "" : words[1];
  if (section->list_path != wanted) fail(__FILE__, __LINE__, "the list is ", section->list_path);
}

void bind_hidden_window(const char* parts) {
  const HWND hwnd = CreateWindowExA(0, "STATIC", "", WS_POPUP, 100, 100, 40, 30, nullptr, nullptr, nullptr, nullptr);
  const HDC hdc = GetDC(hwnd);
  PIXELFORMATDESCRIPTOR wanted = {};
  wanted.nSize = sizeof wanted;
  wanted.nVersion = 1;
  wanted.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;
  wanted.cColorBits = 24;
  CHECK(SetPixelFormat(hdc, ChoosePixelFormat(hdc, &wanted), &wanted));
  CHECK(wglMakeCurrent(hdc, wglCreateContext(hdc)));
  CHECK_EQUAL(parts_of(hwnd).size(), count_of(parts));
}

void find_parts() {
  bind_hidden_window(words[0]);
}

void find_no_parts_late() {
  meet(words[0], words[1]);
  bind_hidden_window("0");
}

void draw() {
  glMatrixMode(GL_PROJECTION);
  glOrtho(0, over_all.width, 0, over_all.height, -1, 1);
  glClearColor(0.1f, 0.3f, 0.2f, 1);
  glClear(GL_COLOR_BUFFER_BIT);
  for (int i = 0; i < 20; ++i) {
    glColor3ub(static_cast<GLubyte>(12 * i), 200, static_cast<GLubyte>(255 - 11 * i));
    glRecti(23 * i, 17 * i, 23 * i + 90, 17 * i + 50);
  }
}

bool is_equal(const picture& a, const picture& b) {
  const difference found = compare(a, b);
  return found.comparable && found.pixels == 0 && found.rounded == 0;
}

picture await_screen(HWND hwnd, const picture& wanted) {
  const DWORD start = GetTickCount();
  for (;;) {
    pump(30);
    picture shown = screen_picture(hwnd);
    if (is_equal(shown, wanted) || GetTickCount() - start > 10000) return shown;
  }
}

void show() {
  const gl_window window = make_window(over_all);
  CHECK_EQUAL(parts_of(window.hwnd).size(), count_of(words[0]));
  draw();
  const picture read = read_back(window.hwnd);
  CHECK(SwapBuffers(window.hdc));
  const picture shown = await_screen(window.hwnd, read);
  CHECK(changes_within(shown) > 2000);
  picture kept;
  if (!read_picture(words[1], &kept)) {
    CHECK(write_picture(words[1], shown));
    kept = shown;
  }
  CHECK(is_equal(shown, kept));
  CHECK(is_equal(read, kept));
}

void ask_for_names() {
  bind_hidden_window(words[0]);
  check_look_ups(count_of(words[0]) > 0);
}

// On the threaded path the program's own thread never switches.
void find_path() {
  bind_hidden_window("2");
  auto* count = reinterpret_cast<unsigned long long (*)()>(
      reinterpret_cast<void*>(GetProcAddress(driver(), "OswDriverSwitchCount")));
  CHECK(count != nullptr);
  if (!count) return;
  glFinish();
  constexpr int calls = 500;
  const unsigned long long before = count();
  for (int i = 0; i < calls; ++i) glColor3ub(10, 20, 30);
  glFinish();
  const unsigned long long switches = count() - before;
  printf("%llu switches\n", switches);
  if (strcmp(words[0], "sequential") == 0) {
    CHECK(switches >= 2 * calls);
  } else {
    CHECK(switches < 20);
  }
}

// The library beside which it lies asks for a host at the first call.
void find_nothing_planted() {
  CHECK(!wglCreateContext(GetDC(nullptr)));
  CHECK(driver() != nullptr);
  char mark[4];
  CHECK_EQUAL(GetEnvironmentVariableA("OSW_TEST_HOST_LOADED", mark, sizeof mark), 0);
}

const struct {
  test_case role;
  int words;
} roles[] = {{{"hold", hold}, 3},
             {{"off", switch_off}, 0},
             {{"section", find_section}, 2},
             {{"parts", find_parts}, 1},
             {{"show", show}, 2},
             {{"late", find_no_parts_late}, 2},
             {{"look_up", ask_for_names}, 1},
             {{"unplanted", find_nothing_planted}, 0},
             {{"path", find_path}, 1}};

}  // namespace

int play_role(int count, char** arguments) {
  for (const auto& each : roles) {
    if (count != each.words + 2 || strcmp(arguments[1], each.role.name) != 0) continue;
    words = arguments + 2;
    const int failed = run_cases(&each.role, 1, 1, arguments, role_limit);
    return failed ? failed : static_cast<int>(good_status);
  }
  return -1;
}
