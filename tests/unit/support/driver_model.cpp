// What the recording driver's wgl entries do to its contexts, drawables and pbuffers.
#include <algorithm>
#include <atomic>
#include <cstring>
#include <mutex>

#include "platform/desktop.h"
#include "support/driver_notes.h"
#include "support/wgl_names.h"

namespace driver {

thread_local thread_binding bound;

namespace {

context_record table[context_limit];
std::atomic<int> context_count{0};

struct pbuffer_record {
  bool live = false;
  int width = 0;
  int height = 0;
  int format = 0;
  HDC hdc = nullptr;
};

std::mutex pbuffer_lock;
std::vector<pbuffer_record> pbuffer_table;

const char* extensions;
std::atomic<int> swap_interval;

// A context's two handles are numbers that lie apart from each other and from those of windows and device contexts.
constexpr u64 hglrc_base = 0x40000000;
constexpr u64 driver_context_base = 0x50000000;
constexpr u64 pbuffer_base = 0x60000000;
constexpr u64 handle_step = 16;

int number_of(u64 handle, u64 base, int count) {
  if (handle < base || (handle - base) % handle_step != 0) return -1;
  const u64 number = (handle - base) / handle_step;
  return number < static_cast<u64>(count) ? static_cast<int>(number) : -1;
}

// The context's number, or -1 when the handle is none of a live context.
int find_context(u64 hglrc) {
  const int number = number_of(hglrc, hglrc_base, context_count.load());
  return number >= 0 && table[number].live ? number : -1;
}

u64 fail(DWORD error) {
  SetLastError(error);
  return 0;
}

u64 create_context(int op, u64 hdc_bits) {
  const HDC hdc = reinterpret_cast<HDC>(hdc_bits);
  const int format = platform::dc_pixel_format(hdc);
  if (format == 0) return fail(ERROR_INVALID_PIXEL_FORMAT);
  const int number = context_count.fetch_add(1);
  if (number >= context_limit) std::abort();
  context_record& record = table[number];
  record.made_by.store(GetCurrentThreadId());
  record.made_on = hdc;
  record.made_with = op;
  record.pixel_format = format;
  record.live = true;
  return bits_of(handle_of(number));
}

void release_current() {
  if (bound.context >= 0) table[bound.context].current_on.store(0);
  bound = {};
}

u64 make_current(u64 draw_bits, u64 read_bits, u64 hglrc) {
  if (hglrc == 0) {
    release_current();
    return 1;
  }
  const int number = find_context(hglrc);
  if (number < 0) return fail(ERROR_INVALID_HANDLE);
  context_record& record = table[number];
  const HDC draw = reinterpret_cast<HDC>(draw_bits);
  if (platform::dc_pixel_format(draw) != record.pixel_format) return fail(ERROR_INVALID_PIXEL_FORMAT);
  const DWORD me = GetCurrentThreadId();
  DWORD nobody = 0;
  if (!record.current_on.compare_exchange_strong(nobody, me) && nobody != me) return fail(ERROR_BUSY);
  if (bound.context >= 0 && bound.context != number) table[bound.context].current_on.store(0);
  bound = {number, number, draw, reinterpret_cast<HDC>(read_bits)};
  return 1;
}

u64 delete_context(u64 hglrc) {
  const int number = find_context(hglrc);
  if (number < 0) return fail(ERROR_INVALID_HANDLE);
  if (bound.context == number) release_current();
  if (table[number].current_on.load() != 0) return fail(ERROR_BUSY);
  table[number].live = false;
  return 1;
}

u64 fast_switch(u64 driver_context) {
  const int number = number_of(driver_context, driver_context_base, context_count.load());
  if (driver_context != 0 && (number < 0 || !table[number].live)) return 0;
  bound.switched_to = number;
  return 1;
}

u64 driver_context_of(u64 hglrc) {
  const int number = find_context(hglrc);
  return number < 0 ? 0 : driver_context_base + static_cast<u64>(number) * handle_step;
}

// With the pbuffer lock held.
pbuffer_record* find_pbuffer(u64 handle) {
  const int number = number_of(handle, pbuffer_base, static_cast<int>(pbuffer_table.size()));
  return number >= 0 && pbuffer_table[static_cast<std::size_t>(number)].live
             ? &pbuffer_table[static_cast<std::size_t>(number)]
             : nullptr;
}

u64 create_pbuffer(const u64* arguments) {
  const std::lock_guard guard(pbuffer_lock);
  pbuffer_table.push_back(
      {true, static_cast<int>(arguments[2]), static_cast<int>(arguments[3]), static_cast<int>(arguments[1]), nullptr});
  return pbuffer_base + (pbuffer_table.size() - 1) * handle_step;
}

u64 pbuffer_dc(u64 handle) {
  const std::lock_guard guard(pbuffer_lock);
  pbuffer_record* pbuffer = find_pbuffer(handle);
  if (pbuffer == nullptr) return fail(ERROR_INVALID_HANDLE);
  if (pbuffer->hdc == nullptr) {
    pbuffer->hdc = platform::create_windowless_dc();
    platform::set_dc_pixel_format(pbuffer->hdc, pbuffer->format);
  }
  return bits_of(pbuffer->hdc);
}

// A released device context goes on working until the pbuffer ends.
u64 release_pbuffer_dc(u64 handle, u64 hdc) {
  const std::lock_guard guard(pbuffer_lock);
  const pbuffer_record* pbuffer = find_pbuffer(handle);
  return pbuffer != nullptr && bits_of(pbuffer->hdc) == hdc ? 1 : fail(ERROR_INVALID_HANDLE);
}

u64 destroy_pbuffer(u64 handle) {
  const std::lock_guard guard(pbuffer_lock);
  pbuffer_record* pbuffer = find_pbuffer(handle);
  if (pbuffer == nullptr) return fail(ERROR_INVALID_HANDLE);
  if (pbuffer->hdc != nullptr) platform::destroy_windowless_dc(pbuffer->hdc);
  *pbuffer = {};
  return 1;
}

u64 query_pbuffer(u64 handle, int attribute, int* value) {
  const std::lock_guard guard(pbuffer_lock);
  const pbuffer_record* pbuffer = find_pbuffer(handle);
  if (pbuffer == nullptr) return fail(ERROR_INVALID_HANDLE);
  if (attribute == WGL_PBUFFER_WIDTH_ARB) *value = pbuffer->width;
  if (attribute == WGL_PBUFFER_HEIGHT_ARB) *value = pbuffer->height;
  return 1;
}

u64 knows_pbuffer(u64 handle) {
  const std::lock_guard guard(pbuffer_lock);
  return find_pbuffer(handle) != nullptr ? 1 : fail(ERROR_INVALID_HANDLE);
}

u64 describe_format(int format, UINT size, PIXELFORMATDESCRIPTOR* out) {
  PIXELFORMATDESCRIPTOR whole;
  if (!platform::describe_pixel_format(format, &whole)) return 0;
  if (out != nullptr) std::memcpy(out, &whole, std::min<std::size_t>(size, sizeof whole));
  return static_cast<u64>(platform::pixel_format_count());
}

u64 choose_formats(const u64* arguments) {
  int* formats = reinterpret_cast<int*>(arguments[4]);
  UINT* count = reinterpret_cast<UINT*>(arguments[5]);
  if (static_cast<UINT>(arguments[3]) > 0) formats[0] = 1;
  *count = 1;
  return 1;
}

bool is_drawable(u64 hdc) {
  return GetObjectType(reinterpret_cast<HGDIOBJ>(hdc)) != 0;
}

u64 both_live(u64 first, u64 second) {
  return find_context(first) >= 0 && find_context(second) >= 0;
}

context_facts facts_of(int number) {
  const context_record& record = table[number];
  return {handle_of(number),
          reinterpret_cast<HANDLE>(driver_context_base + static_cast<u64>(number) * handle_step),
          record.live,
          record.made_by.load(),
          record.made_on,
          record.made_with,
          record.current_on.load(),
          record.gl_calls,
          record.digest};
}

// The ops on contexts and what is current.
bool perform_on_contexts(int op, const u64* arguments, u64& result) {
  switch (op) {
    case wglCopyContext_op::op:
    case wglShareLists_op::op:
      result = both_live(arguments[0], arguments[1]);
      return true;
    case wglCreateContext_op::op:
    case wglCreateLayerContext_op::op:
    case wglCreateContextAttribsARB_op::op:
      result = create_context(op, arguments[0]);
      return true;
    case wglDeleteContext_op::op:
      result = delete_context(arguments[0]);
      return true;
    case wglGetCurrentContext_op::op:
      result = bits_of(bound.context < 0 ? nullptr : handle_of(bound.context));
      return true;
    case wglGetCurrentDC_op::op:
      result = bits_of(bound.draw);
      return true;
    case wglGetCurrentReadDCARB_op::op:
    case wglGetCurrentReadDCEXT_op::op:
      result = bits_of(bound.read);
      return true;
    case wglMakeCurrent_op::op:
      result = make_current(arguments[0], arguments[0], arguments[1]);
      return true;
    case wglMakeContextCurrentARB_op::op:
    case wglMakeContextCurrentEXT_op::op:
      result = make_current(arguments[0], arguments[1], arguments[2]);
      return true;
    case wglFastSwitchContextZ4_op::op:
      result = fast_switch(arguments[0]);
      return true;
    case wglGetGLContextZ4_op::op:
      result = driver_context_of(arguments[0]);
      return true;
    default:
      return false;
  }
}

bool perform_on_pbuffers(int op, const u64* arguments, u64& result) {
  switch (op) {
    case wglCreatePbufferARB_op::op:
    case wglCreatePbufferEXT_op::op:
      result = create_pbuffer(arguments);
      return true;
    case wglGetPbufferDCARB_op::op:
    case wglGetPbufferDCEXT_op::op:
      result = pbuffer_dc(arguments[0]);
      return true;
    case wglReleasePbufferDCARB_op::op:
    case wglReleasePbufferDCEXT_op::op:
      result = release_pbuffer_dc(arguments[0], arguments[1]);
      return true;
    case wglDestroyPbufferARB_op::op:
    case wglDestroyPbufferEXT_op::op:
      result = destroy_pbuffer(arguments[0]);
      return true;
    case wglQueryPbufferARB_op::op:
    case wglQueryPbufferEXT_op::op:
      result = query_pbuffer(arguments[0], static_cast<int>(arguments[1]), reinterpret_cast<int*>(arguments[2]));
      return true;
    case wglBindTexImageARB_op::op:
    case wglReleaseTexImageARB_op::op:
    case wglSetPbufferAttribARB_op::op:
      result = knows_pbuffer(arguments[0]);
      return true;
    default:
      return false;
  }
}

u64 perform_other(int op, const u64* arguments) {
  const HDC hdc = reinterpret_cast<HDC>(arguments[0]);
  switch (op) {
    case wglGetProcAddress_op::op:
    case wglGetDefaultProcAddress_op::op:
      return reinterpret_cast<u64>(entry_by_name(reinterpret_cast<const char*>(arguments[0])));
    case wglChoosePixelFormat_op::op:
      return is_drawable(arguments[0]);
    case wglDescribePixelFormat_op::op:
      return describe_format(static_cast<int>(arguments[1]), static_cast<UINT>(arguments[2]),
                             reinterpret_cast<PIXELFORMATDESCRIPTOR*>(arguments[3]));
    case wglGetPixelFormat_op::op:
      return static_cast<u64>(platform::dc_pixel_format(hdc));
    case wglSetPixelFormat_op::op:
      return platform::set_dc_pixel_format(hdc, static_cast<int>(arguments[1])) ? 1 : fail(ERROR_INVALID_PIXEL_FORMAT);
    case wglChoosePixelFormatARB_op::op:
    case wglChoosePixelFormatEXT_op::op:
      return choose_formats(arguments);
    case wglSwapBuffers_op::op:
    case wglSwapLayerBuffers_op::op:
      return is_drawable(arguments[0]) ? 1 : fail(ERROR_INVALID_HANDLE);
    case wglUseFontBitmapsA_op::op:
    case wglUseFontBitmapsW_op::op:
    case wglUseFontOutlinesA_op::op:
    case wglUseFontOutlinesW_op::op:
      return 1;
    case wglGetExtensionsStringARB_op::op:
    case wglGetExtensionsStringEXT_op::op:
      return reinterpret_cast<u64>(extensions);
    case wglSwapIntervalEXT_op::op:
      swap_interval.store(static_cast<int>(arguments[0]));
      return 1;
    case wglGetSwapIntervalEXT_op::op:
      return static_cast<u64>(swap_interval.load());
    default:
      return 0;
  }
}

}  // namespace

HGLRC handle_of(int number) {
  return reinterpret_cast<HGLRC>(hglrc_base + static_cast<u64>(number) * handle_step);
}

int number_of_context(HGLRC handle) {
  return find_context(bits_of(handle));
}

context_record& record_of(int number) {
  return table[number];
}

u64 perform(int op, const u64* arguments) {
  u64 result = 0;
  if (perform_on_contexts(op, arguments, result) || perform_on_pbuffers(op, arguments, result)) return result;
  return perform_other(op, arguments);
}

void set_extensions(const char* text) {
  extensions = text;
}

std::vector<context_facts> contexts() {
  std::vector<context_facts> all;
  for (int number = 0; number < context_count.load(); ++number) all.push_back(facts_of(number));
  return all;
}

context_facts context(HGLRC hglrc) {
  const int number = number_of(bits_of(hglrc), hglrc_base, context_count.load());
  return number < 0 ? context_facts{} : facts_of(number);
}

std::vector<HGLRC> contexts_made_after(HGLRC hglrc, int count) {
  std::vector<HGLRC> found;
  const int first = number_of(bits_of(hglrc), hglrc_base, context_count.load());
  if (first < 0) return found;
  for (int number = first + 1; number < context_count.load(); ++number) {
    if (static_cast<int>(found.size()) == count) break;
    if (table[number].made_by.load() == table[first].made_by.load()) found.push_back(handle_of(number));
  }
  return found;
}

binding current_binding() {
  const auto handle = [](int number) { return number < 0 ? nullptr : handle_of(number); };
  return {handle(bound.context), bound.draw, bound.read, handle(bound.switched_to)};
}

std::vector<HPBUFFERARB> pbuffers() {
  const std::lock_guard guard(pbuffer_lock);
  std::vector<HPBUFFERARB> live;
  for (std::size_t number = 0; number < pbuffer_table.size(); ++number) {
    if (pbuffer_table[number].live) live.push_back(reinterpret_cast<HPBUFFERARB>(pbuffer_base + number * handle_step));
  }
  return live;
}

void reset_contexts() {
  for (int number = 0; number < context_count.load(); ++number) {
    context_record& record = table[number];
    record.live = false;
    record.current_on.store(0);
    record.names.clear();
    record.last_name = record.below_names = 0;
  }
  reset_digests();
  context_count.store(0);
  bound = {};
  swap_interval.store(1);
  extensions = "WGL_ARB_extensions_string WGL_ARB_pbuffer WGL_EXT_swap_control";
  const std::lock_guard guard(pbuffer_lock);
  pbuffer_table.clear();
}

void reset_digests() {
  for (int number = 0; number < context_count.load(); ++number) {
    table[number].gl_calls = 0;
    table[number].digest = empty_digest;
  }
}

}  // namespace driver
