// Windows: their classes, their making and end, their properties and longs.
#include <algorithm>
#include <cctype>
#include <thread>

#include "platform/process.h"
#include "state.h"
#include "window_table.h"

namespace platform {

std::mutex window_lock;
std::map<HWND, window_record> window_table;

namespace {

std::vector<class_facts> classes;
std::vector<std::string> classes_on_the_way;
bool registers_slowly;
UINT_PTR last_handle = 0x20000;

constexpr DWORD error_child_without_parent = 1406;

std::string lower(std::string text) {
  std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

const class_facts* find_class(const std::string& name) {
  for (const class_facts& known : classes) {
    if (_stricmp(known.name.c_str(), name.c_str()) == 0) return &known;
  }
  return nullptr;
}

bool is_on_the_way(const std::string& name) {
  return std::ranges::find(classes_on_the_way, name) != classes_on_the_way.end();
}

// With the lock held.
window_record& add_window() {
  last_handle += 2;
  const HWND hwnd = reinterpret_cast<HWND>(last_handle);
  window_record& record = window_table[hwnd];
  record.hwnd = hwnd;
  return record;
}

window_facts facts_of(const window_record& record) {
  window_facts facts = {
      record.hwnd, record.parent,       record.class_name,   record.title,     record.style,     record.extended_style,
      record.id,   screen_rect(record), client_rect(record), record.thread_id, record.procedure, record.pixel_format,
      {}};
  for (const auto& [name, value] : record.properties) facts.properties.push_back(name);
  return facts;
}

template <class Wanted>
std::vector<window_facts> select(Wanted wanted) {
  const std::lock_guard guard(window_lock);
  std::vector<window_facts> found;
  for (const auto& [hwnd, record] : window_table) {
    if (wanted(record)) found.push_back(facts_of(record));
  }
  return found;
}

bool takes_mouse(const window_record& record, POINT point) {
  const RECT area = screen_rect(record);
  return (record.style & (WS_VISIBLE | WS_DISABLED)) == WS_VISIBLE && point.x >= area.left && point.x < area.right &&
         point.y >= area.top && point.y < area.bottom;
}

void give_own_dc(HWND hwnd) {
  const HDC hdc = make_own_dc(hwnd);
  const std::lock_guard guard(window_lock);
  window_table[hwnd].own_dc = hdc;
}

// Told to each ancestor of a child window, as far as they are children themselves.
void notify_parents(HWND hwnd, UINT event) {
  for (;;) {
    HWND parent;
    LONG_PTR id;
    {
      const std::lock_guard guard(window_lock);
      const window_record* window = find_window(hwnd);
      if (window == nullptr || !is_child(*window) || (window->extended_style & WS_EX_NOPARENTNOTIFY)) return;
      parent = window->parent;
      id = window->id;
    }
    send_message(parent, WM_PARENTNOTIFY, static_cast<WPARAM>(event) | static_cast<WPARAM>(id) << 16,
                 reinterpret_cast<LPARAM>(hwnd));
    hwnd = parent;
  }
}

void remove_window(HWND hwnd) {
  forget_window_device_contexts(hwnd);
  const std::lock_guard guard(window_lock);
  window_table.erase(hwnd);
}

std::vector<HWND> dependents(HWND hwnd) {
  const std::lock_guard guard(window_lock);
  std::vector<HWND> found;
  for (const auto& [other, record] : window_table) {
    if (record.parent == hwnd) found.push_back(other);
  }
  return found;
}

DWORD owner_of(HWND hwnd) {
  const std::lock_guard guard(window_lock);
  const window_record* window = find_window(hwnd);
  return window == nullptr ? 0 : window->thread_id;
}

// On the owner's thread. Windows of other threads are ended by those, when they pump.
void destroy_tree(HWND hwnd) {
  send_message(hwnd, WM_DESTROY, 0, 0);
  for (const HWND dependent : dependents(hwnd)) {
    const DWORD owner = owner_of(dependent);
    if (owner == 0) continue;
    run_on_owner(owner, dependent, "DestroyWindow", false, [dependent] {
      if (IsWindow(dependent)) destroy_tree(dependent);
    });
  }
  send_message(hwnd, WM_NCDESTROY, 0, 0);
  remove_window(hwnd);
}

void collect_descendants(HWND hwnd, std::vector<HWND>& out) {
  for (const auto& [other, record] : window_table) {
    if (record.parent != hwnd || !is_child(record)) continue;
    out.push_back(other);
    collect_descendants(other, out);
  }
}

LONG_PTR read_long(const window_record& window, int index) {
  switch (index) {
    case GWLP_WNDPROC:
      return reinterpret_cast<LONG_PTR>(window.procedure);
    case GWLP_HINSTANCE:
      return reinterpret_cast<LONG_PTR>(window.instance);
    case GWLP_HWNDPARENT:
      return reinterpret_cast<LONG_PTR>(window.parent);
    case GWLP_ID:
      return window.id;
    case GWL_STYLE:
      return static_cast<LONG_PTR>(window.style);
    case GWL_EXSTYLE:
      return static_cast<LONG_PTR>(window.extended_style);
    case GWLP_USERDATA:
      return window.user_data;
    default:
      misuse("a window long that the simulation does not know");
  }
}

void write_long(window_record& window, int index, LONG_PTR value) {
  switch (index) {
    case GWLP_WNDPROC:
      window.procedure = reinterpret_cast<WNDPROC>(value);
      break;
    case GWLP_ID:
      window.id = value;
      break;
    case GWL_STYLE:
      window.style = static_cast<DWORD>(value);
      break;
    case GWLP_USERDATA:
      window.user_data = value;
      break;
    default:
      misuse("a window long that the simulation does not let change");
  }
}

}  // namespace

window_record* find_window(HWND hwnd) {
  const auto found = window_table.find(hwnd);
  if (found != window_table.end()) return &found->second;
  SetLastError(ERROR_INVALID_WINDOW_HANDLE);
  return nullptr;
}

void give_to_process(HWND hwnd, DWORD process_id) {
  const std::lock_guard guard(window_lock);
  window_record* window = find_window(hwnd);
  if (window == nullptr) misuse("a window that is not there cannot be another process's");
  window->process_id = process_id;
}

HWND create_window(const window_setup& setup) {
  const DWORD me = GetCurrentThreadId();
  HWND hwnd;
  {
    const std::lock_guard guard(window_lock);
    window_record& window = add_window();
    window.parent = setup.parent;
    window.class_name = "application";
    window.style = setup.style;
    window.rect = setup.rect;
    window.frame = setup.frame;
    window.thread_id = me;
    window.procedure = setup.procedure == nullptr ? DefWindowProcA : setup.procedure;
    hwnd = window.hwnd;
  }
  if (setup.own_dc) give_own_dc(hwnd);
  return hwnd;
}

std::vector<window_facts> windows() {
  return select([](const window_record&) { return true; });
}

window_facts window(HWND hwnd) {
  const auto found = select([&](const window_record& record) { return record.hwnd == hwnd; });
  return found.empty() ? window_facts{} : found.front();
}

std::vector<window_facts> windows_of_class(const std::string& class_name) {
  return select([&](const window_record& record) { return record.class_name == class_name; });
}

std::vector<window_facts> children_of(HWND parent) {
  return select([&](const window_record& record) { return record.parent == parent && is_child(record); });
}

HWND window_at(POINT point) {
  const std::vector<window_facts> on_top =
      select([&](const window_record& record) { return !is_child(record) && takes_mouse(record, point); });
  HWND found = on_top.empty() ? nullptr : on_top.back().hwnd;
  for (HWND within = found; within != nullptr;) {
    found = within;
    const std::vector<window_facts> children = select([&](const window_record& record) {
      return is_child(record) && record.parent == found && takes_mouse(record, point);
    });
    within = children.empty() ? nullptr : children.front().hwnd;
  }
  return found;
}

std::vector<class_facts> window_classes() {
  const std::lock_guard guard(window_lock);
  return classes;
}

void keep_window_properties() {
  const std::lock_guard guard(window_lock);
  for (const auto& [hwnd, record] : window_table) {
    for (const auto& [name, value] : record.properties) keep_until_end(value);
  }
}

void forget_thread_windows(DWORD thread_id) {
  const auto owned = select([&](const window_record& record) { return record.thread_id == thread_id; });
  for (const window_facts& facts : owned) remove_window(facts.hwnd);
}

int window_pixel_format(HWND hwnd) {
  const std::lock_guard guard(window_lock);
  const window_record* window = find_window(hwnd);
  return window == nullptr ? -1 : window->pixel_format;
}

void set_window_pixel_format(HWND hwnd, int format) {
  const std::lock_guard guard(window_lock);
  if (window_record* window = find_window(hwnd)) window->pixel_format = format;
}

HDC window_own_dc(HWND hwnd) {
  const std::lock_guard guard(window_lock);
  const window_record* window = find_window(hwnd);
  return window == nullptr ? nullptr : window->own_dc;
}

void reset_windows() {
  const std::lock_guard guard(window_lock);
  window_table.clear();
  classes.clear();
  classes_on_the_way.clear();
  registers_slowly = false;
}

void register_classes_slowly() {
  const std::lock_guard guard(window_lock);
  registers_slowly = true;
}

}  // namespace platform

using namespace platform;

extern "C" ATOM RegisterClassA(const WNDCLASSA* window_class) {
  if (ordered_to_fail("RegisterClassA")) return 0;
  std::unique_lock guard(window_lock);
  if (find_class(window_class->lpszClassName) != nullptr || is_on_the_way(window_class->lpszClassName)) {
    SetLastError(ERROR_CLASS_ALREADY_EXISTS);
    return 0;
  }
  if (registers_slowly) {
    classes_on_the_way.push_back(window_class->lpszClassName);
    guard.unlock();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    guard.lock();
  }
  classes.push_back(
      {window_class->lpszClassName, window_class->style, window_class->lpfnWndProc, window_class->hInstance});
  return static_cast<ATOM>(0xC000 + classes.size());
}

extern "C" HWND CreateWindowExA(DWORD extended_style, LPCSTR class_name, LPCSTR title, DWORD style, int x, int y,
                                int width, int height, HWND parent, HMENU menu, HINSTANCE instance, LPVOID parameter) {
  if (ordered_to_fail("CreateWindowExA")) return nullptr;
  const DWORD me = GetCurrentThreadId();
  std::unique_lock guard(window_lock);
  const class_facts* known = find_class(class_name);
  if (known == nullptr) {
    SetLastError(ERROR_CANNOT_FIND_WND_CLASS);
    return nullptr;
  }
  const bool child = (style & (WS_CHILD | WS_POPUP)) == WS_CHILD;
  if (child && parent == nullptr) {
    SetLastError(error_child_without_parent);
    return nullptr;
  }
  if (parent != nullptr && find_window(parent) == nullptr) return nullptr;
  const bool own_dc = (known->style & CS_OWNDC) != 0;
  window_record& window = add_window();
  window.parent = parent;
  window.instance = instance;
  window.class_name = known->name;
  window.title = title == nullptr ? "" : title;
  window.style = style;
  window.extended_style = extended_style;
  window.id = reinterpret_cast<LONG_PTR>(menu);
  window.rect = {x, y, x + std::max(width, 0), y + std::max(height, 0)};
  window.thread_id = me;
  window.procedure = known->procedure;
  const HWND hwnd = window.hwnd;
  guard.unlock();
  if (own_dc) give_own_dc(hwnd);
  if (send_message(hwnd, WM_CREATE, 0, reinterpret_cast<LPARAM>(parameter)) == -1) {
    remove_window(hwnd);
    return nullptr;
  }
  notify_parents(hwnd, WM_CREATE);
  return hwnd;
}

extern "C" BOOL DestroyWindow(HWND hwnd) {
  if (ordered_to_fail("DestroyWindow")) return FALSE;
  const DWORD owner = owner_of(hwnd);
  if (owner == 0) return FALSE;
  if (owner != GetCurrentThreadId()) {
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
  }
  notify_parents(hwnd, WM_DESTROY);
  destroy_tree(hwnd);
  return TRUE;
}

extern "C" BOOL IsWindow(HWND hwnd) {
  const std::lock_guard guard(window_lock);
  return find_window(hwnd) != nullptr;
}

// Of a child its parent and of a pop-up its owner; the owner of any other window is not told.
extern "C" HWND GetParent(HWND hwnd) {
  const std::lock_guard guard(window_lock);
  const window_record* window = find_window(hwnd);
  return window != nullptr && (window->style & (WS_CHILD | WS_POPUP)) != 0 ? window->parent : nullptr;
}

extern "C" BOOL EnumChildWindows(HWND hwnd, WNDENUMPROC callback, LPARAM data) {
  if (ordered_to_fail("EnumChildWindows")) return FALSE;
  std::vector<HWND> descendants;
  {
    const std::lock_guard guard(window_lock);
    collect_descendants(hwnd, descendants);
  }
  for (const HWND descendant : descendants) {
    if (IsWindow(descendant) && !callback(descendant, data)) return FALSE;
  }
  return TRUE;
}

extern "C" HANDLE GetPropA(HWND hwnd, LPCSTR name) {
  if (ordered_to_fail("GetPropA")) return nullptr;
  const std::lock_guard guard(window_lock);
  const window_record* window = find_window(hwnd);
  if (window == nullptr) return nullptr;
  const auto found = window->properties.find(lower(name));
  return found == window->properties.end() ? nullptr : found->second;
}

extern "C" BOOL SetPropA(HWND hwnd, LPCSTR name, HANDLE value) {
  if (ordered_to_fail("SetPropA")) return FALSE;
  const std::lock_guard guard(window_lock);
  window_record* window = find_window(hwnd);
  if (window == nullptr) return FALSE;
  window->properties[lower(name)] = value;
  return TRUE;
}

extern "C" HANDLE RemovePropA(HWND hwnd, LPCSTR name) {
  if (ordered_to_fail("RemovePropA")) return nullptr;
  const std::lock_guard guard(window_lock);
  window_record* window = find_window(hwnd);
  if (window == nullptr) return nullptr;
  const auto found = window->properties.find(lower(name));
  if (found == window->properties.end()) return nullptr;
  const HANDLE value = found->second;
  window->properties.erase(found);
  return value;
}

extern "C" LONG_PTR GetWindowLongPtrA(HWND hwnd, int index) {
  if (ordered_to_fail("GetWindowLongPtrA")) return 0;
  const std::lock_guard guard(window_lock);
  const window_record* window = find_window(hwnd);
  return window == nullptr ? 0 : read_long(*window, index);
}

extern "C" LONG_PTR SetWindowLongPtrA(HWND hwnd, int index, LONG_PTR value) {
  if (ordered_to_fail("SetWindowLongPtrA")) return 0;
  const std::lock_guard guard(window_lock);
  window_record* window = find_window(hwnd);
  if (window == nullptr) return 0;
  if (window->process_id != 0) {
    SetLastError(ERROR_ACCESS_DENIED);
    return 0;
  }
  const LONG_PTR previous = read_long(*window, index);
  write_long(*window, index, value);
  return previous;
}

extern "C" DWORD GetWindowThreadProcessId(HWND hwnd, LPDWORD process_id) {
  const DWORD own = GetCurrentProcessId();
  if (process_id != nullptr) {
    const std::lock_guard guard(window_lock);
    const window_record* window = find_window(hwnd);
    *process_id = window == nullptr ? 0 : window->process_id == 0 ? own : window->process_id;
  }
  return owner_of(hwnd);
}
