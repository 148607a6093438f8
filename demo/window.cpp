#include "window.h"

#include <windows.h>
#include <windowsx.h>
// GL's header needs the ones above.
#include <GL/gl.h>

#include <cstdio>

#include "figures.h"
#include "overlay.h"
#include "scene.h"

namespace {

struct viewer {
  const options* chosen;
  const model* shown;
  HWND window;
  HDC dc;
  HGLRC context;
  scene drawn;
  camera view;
  int frame;
  POINT mouse;     // where it was last seen, with a button held
  bool at_rest;    // the benchmark is over: what is drawn now stays
  bool announced;  // the ready file has been written
  DWORD shown_at;  // the tick count at which the picture was on the screen
  int status;
};

enum : UINT_PTR { settled_timer = 1, watch_timer };
// The picture counts as seen when the window has been left alone for so long, in milliseconds.
constexpr UINT settle_time = 400;
constexpr UINT watch_interval = 50;

viewer* viewer_of(HWND window) {
  return reinterpret_cast<viewer*>(GetWindowLongPtrA(window, GWLP_USERDATA));
}

void draw(viewer* self) {
  RECT client;
  GetClientRect(self->window, &client);
  char status[160];
  snprintf(status, sizeof status, "picture %d   azimuth %.1f   elevation %.1f   grid %g", self->frame,
           static_cast<double>(self->view.azimuth), static_cast<double>(self->view.elevation),
           static_cast<double>(self->drawn.grid_step));
  draw_scene(self->drawn, self->view, client.right, client.bottom);
  draw_overlay(self->drawn, self->view, client.right, client.bottom, status);
  SwapBuffers(self->dc);
}

void redraw(viewer* self) {
  InvalidateRect(self->window, nullptr, FALSE);
}

void set_frame(viewer* self, int frame) {
  self->frame = frame;
  self->view = camera_of_frame(frame, *self->shown);
}

void end(viewer* self, int status) {
  self->status = status;
  DestroyWindow(self->window);
}

void announce(viewer* self) {
  self->announced = true;
  self->shown_at = GetTickCount();
  const char* path = self->chosen->ready.c_str();
  if (!*path) return;
  RECT client;
  GetClientRect(self->window, &client);
  POINT corner = {0, 0};
  ClientToScreen(self->window, &corner);
  FILE* file = fopen(path, "w");
  if (!file) {
    fprintf(stderr, "viewer: %s cannot be written\n", path);
    end(self, 1);
    return;
  }
  fprintf(file, "%ld %ld %ld %ld\n", corner.x, corner.y, client.right, client.bottom);
  fclose(file);
}

// The picture has been seen: whoever waited for it has taken the ready file away, or its time is over.
bool seen(const viewer& self) {
  const options& chosen = *self.chosen;
  if (!chosen.ready.empty() && GetFileAttributesA(chosen.ready.c_str()) == INVALID_FILE_ATTRIBUTES) return true;
  return GetTickCount() - self.shown_at >= static_cast<DWORD>(chosen.hold * 1000);
}

void on_timer(viewer* self, UINT_PTR timer) {
  if (timer == settled_timer) {
    KillTimer(self->window, settled_timer);
    if (!self->announced) announce(self);
    if (self->chosen->exit) SetTimer(self->window, watch_timer, watch_interval, nullptr);
  } else if (timer == watch_timer && self->announced && seen(*self)) {
    end(self, 0);
  }
}

void on_mouse_move(viewer* self, POINT at, WPARAM buttons) {
  const int dx = at.x - self->mouse.x, dy = at.y - self->mouse.y;
  self->mouse = at;
  RECT client;
  GetClientRect(self->window, &client);
  if (buttons & MK_LBUTTON) {
    orbit(&self->view, dx, dy);
  } else if (buttons & (MK_RBUTTON | MK_MBUTTON)) {
    pan(&self->view, dx, dy, client.bottom);
  } else {
    return;
  }
  redraw(self);
}

void on_key(viewer* self, WPARAM key) {
  switch (key) {
    case 'R':
      set_frame(self, self->chosen->frame);
      break;
    case 'G':
      self->drawn.show_ground = !self->drawn.show_ground;
      break;
    case 'E':
      self->drawn.show_edges = !self->drawn.show_edges;
      break;
    case 'L':
      self->drawn.show_labels = !self->drawn.show_labels;
      break;
    case VK_ESCAPE:
      end(self, 0);
      return;
    default:
      return;
  }
  redraw(self);
}

void on_paint(viewer* self) {
  PAINTSTRUCT paint;
  BeginPaint(self->window, &paint);
  draw(self);
  EndPaint(self->window, &paint);
  if (self->at_rest && !self->announced) SetTimer(self->window, settled_timer, settle_time, nullptr);
}

// The messages of mouse and keyboard. Result: whether it was one of them.
bool on_input(viewer* self, UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_LBUTTONDOWN:
    case WM_MBUTTONDOWN:
    case WM_RBUTTONDOWN:
      self->mouse = {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
      SetCapture(self->window);
      return true;
    case WM_LBUTTONUP:
    case WM_MBUTTONUP:
    case WM_RBUTTONUP:
      if (!(wparam & (MK_LBUTTON | MK_MBUTTON | MK_RBUTTON))) ReleaseCapture();
      return true;
    case WM_MOUSEMOVE:
      on_mouse_move(self, {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)}, wparam);
      return true;
    case WM_MOUSEWHEEL:
      zoom(&self->view, GET_WHEEL_DELTA_WPARAM(wparam));
      redraw(self);
      return true;
    case WM_KEYDOWN:
      on_key(self, wparam);
      return true;
    default:
      return false;
  }
}

LRESULT CALLBACK window_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  viewer* self = viewer_of(window);
  // Until the context is there, only the system's own answers are needed.
  if (!self || !self->context) return DefWindowProcA(window, message, wparam, lparam);
  if (on_input(self, message, wparam, lparam)) return 0;
  switch (message) {
    case WM_PAINT:
      on_paint(self);
      return 0;
    case WM_ERASEBKGND:
      return 1;
    case WM_SIZE:
      redraw(self);
      return 0;
    case WM_TIMER:
      on_timer(self, wparam);
      return 0;
    case WM_DESTROY:
      PostQuitMessage(0);
      return 0;
    default:
      return DefWindowProcA(window, message, wparam, lparam);
  }
}

bool open_window(viewer* self) {
  WNDCLASSA described = {};
  described.style = CS_OWNDC;
  described.lpfnWndProc = window_procedure;
  described.hInstance = GetModuleHandleA(nullptr);
  described.hCursor = LoadCursorA(nullptr, reinterpret_cast<LPCSTR>(IDC_ARROW));
  described.lpszClassName = "viewer";
  RegisterClassA(&described);

  const options& chosen = *self->chosen;
  const DWORD style = WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN | WS_CLIPSIBLINGS;
  // Size and position are the picture's; the frame goes around it.
  RECT outer = {chosen.x, chosen.y, chosen.x + chosen.width, chosen.y + chosen.height};
  AdjustWindowRect(&outer, style, FALSE);
  self->window = CreateWindowA("viewer", self->shown->name.c_str(), style, chosen.placed ? outer.left : CW_USEDEFAULT,
                               chosen.placed ? outer.top : CW_USEDEFAULT, outer.right - outer.left,
                               outer.bottom - outer.top, nullptr, nullptr, described.hInstance, nullptr);
  if (!self->window) return false;
  SetWindowLongPtrA(self->window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
  return true;
}

bool open_context(viewer* self) {
  PIXELFORMATDESCRIPTOR wanted = {};
  wanted.nSize = sizeof wanted;
  wanted.nVersion = 1;
  wanted.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;
  wanted.iPixelType = PFD_TYPE_RGBA;
  wanted.cColorBits = 24;
  wanted.cDepthBits = 24;
  self->dc = GetDC(self->window);
  const int format = ChoosePixelFormat(self->dc, &wanted);
  if (!format || !SetPixelFormat(self->dc, format, &wanted)) return false;
  self->context = wglCreateContext(self->dc);
  return self->context && wglMakeCurrent(self->dc, self->context);
}

bool pump_messages() {
  MSG message;
  while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
    if (message.message == WM_QUIT) return false;
    TranslateMessage(&message);
    DispatchMessageA(&message);
  }
  return true;
}

// Draws pictures 0 to count - 1 and prints how long it took. False if the window was closed.
bool run_benchmark(viewer* self, int count) {
  LARGE_INTEGER frequency, start, stop;
  QueryPerformanceFrequency(&frequency);
  // The first picture pays for what is set up with it.
  draw(self);
  wait_for_picture(self->chosen->width, self->chosen->height);
  const double switches = count_switches(), busy = busy_seconds();
  QueryPerformanceCounter(&start);
  for (int i = 0; i < count; ++i) {
    if (!pump_messages()) return false;
    set_frame(self, i);
    draw(self);
  }
  wait_for_picture(self->chosen->width, self->chosen->height);
  QueryPerformanceCounter(&stop);
  const double seconds = static_cast<double>(stop.QuadPart - start.QuadPart) / static_cast<double>(frequency.QuadPart);
  printf("%d frames in %.3f seconds, %.1f frames per second", count, seconds, count / seconds);
  printf(", busy for %.2f ms per frame", 1000 * (busy_seconds() - busy) / count);
  if (switches >= 0) printf(", %.1f context switches per frame", (count_switches() - switches) / count);
  printf("\n");
  fflush(stdout);
  return true;
}

}  // namespace

int show_model(const options& chosen, const model& shown) {
  viewer self = {};
  self.chosen = &chosen;
  self.shown = &shown;
  if (!open_window(&self) || !open_context(&self)) {
    fprintf(stderr, "viewer: no window with OpenGL could be opened (error %lu)\n", GetLastError());
    return 1;
  }
  std::string why;
  if (!make_scene(shown, *chosen.by, &self.drawn, &why)) {
    fprintf(stderr, "viewer: the renderer %s cannot be used: %s\n", chosen.by->name, why.c_str());
    return 1;
  }
  set_frame(&self, chosen.frame);
  ShowWindow(self.window, SW_SHOW);

  const bool open = chosen.benchmark_frames == 0 || run_benchmark(&self, chosen.benchmark_frames);
  if (open) {
    self.at_rest = true;
    set_frame(&self, chosen.frame);
    redraw(&self);
    MSG message;
    while (GetMessageA(&message, nullptr, 0, 0) > 0) {
      TranslateMessage(&message);
      DispatchMessageA(&message);
    }
  }
  wglMakeCurrent(nullptr, nullptr);
  wglDeleteContext(self.context);
  return self.status;
}
