// Contexts that are made with attributes: each part's child has the same ones.
#include <cstring>
#include <iterator>

#include "dispatch/report.h"
#include "ops/offered_version.h"
#include "pipeline/push.h"
#include "pipeline/replay_case.h"
#include "pipeline/threads.h"
#include "startup/config/monitors.h"
#include "wgl/child_windows.h"
#include "wgl/context.h"
#include "wgl/main_table.h"
#include "wgl/records/glrc.h"

namespace {

constexpr int context_major_version = 0x2091;
constexpr int context_minor_version = 0x2092;
constexpr int context_layer_plane = 0x2093;
constexpr int context_profile_mask = 0x9126;
constexpr int profiles_for_devices = 0x4;
constexpr DWORD error_invalid_version = 0x2095;

// The system knows a dozen attributes, and takes each once. What is longer has lost its end, or is read by somebody who
// knows more.
constexpr int most_attributes = 64;

// In memory as the system takes it: names and values in turn, up to a name that is 0.
struct attribute {
  int name;
  int value;
};
struct attribute_list {
  attribute of[most_attributes + 1];
  int count;
  bool is_whole;
};

attribute_list copy_attributes(const int* words) {
  attribute_list list{};
  for (; words && *words && list.count < most_attributes; words += 2) list.of[list.count++] = {words[0], words[1]};
  list.is_whole = !words || !*words;
  return list;
}

// The last one counts, as with the system.
int value_of(const attribute_list& list, int name, int otherwise) {
  int value = otherwise;
  for (int i = 0; i < list.count; ++i) {
    if (list.of[i].name == name) value = list.of[i].value;
  }
  return value;
}

bool is_for_devices(const attribute_list& list) {
  return (value_of(list, context_profile_mask, 0) & profiles_for_devices) != 0;
}

bool is_beyond_offer(const attribute_list& list) {
  const int major = value_of(list, context_major_version, 1);
  const int minor = value_of(list, context_minor_version, 0);
  const offered_version& newest = newest_offered_version();
  return major != newest.major ? major > newest.major : minor > newest.minor;
}

// The hidden windows of the parts have no planes.
attribute_list for_children(const attribute_list& list) {
  attribute_list rest{};
  for (int i = 0; i < list.count; ++i) {
    if (list.of[i].name != context_layer_plane) rest.of[rest.count++] = list.of[i];
  }
  return rest;
}

// What the workers make, on the stack of the issuing thread, which waits for them.
struct new_children {
  HDC hidden_hdc[max_parts];
  HGLRC hglrc[max_parts];
};

// Behind the command's arguments: the address of the children.
constexpr u32 children_slot = parameter_count<wglCreateContextAttribsARB_op>;

HGLRC create_child(wglCreateContextAttribsARB_op::type* create, HDC hidden_hdc, const __osw_glrc* share, i32 part,
                   const int* attributes) {
  if (!create || !hidden_hdc) return nullptr;
  return create(hidden_hdc, share ? relaxed_load(share->child_hglrc[part]) : nullptr, attributes);
}

// Whether the children of a context are current on this thread's workers.
bool is_on_workers(const __osw_thread_state* state, HGLRC hglrc) {
  return hglrc && __osw_has_pipeline(state) && state->glrc && state->glrc->app_hglrc == hglrc;
}

// Many systems let a context share with one that is current only on the thread which has that current.
void create_on_workers(__osw_thread_state* state, HDC hdc, HGLRC share, const int* attributes, new_children* made) {
  const u64 creation[] = {to_slot(hdc), to_slot(share), to_slot(attributes), to_slot(made)};
  static_assert(std::size(creation) == children_slot + 1);
  __osw_push_wgl_cmd(state, wglCreateContextAttribsARB_op::op, children_slot + 1, creation, 0);
}

void create_here(const __osw_thread_state* state, const __osw_glrc* share, const int* attributes, new_children* made) {
  auto* create = sys_wgl<wglCreateContextAttribsARB_op>(state);
  for (i32 part = 0; part < __osw_part_count; ++part) {
    made->hglrc[part] = create_child(create, made->hidden_hdc[part], share, part, attributes);
  }
}

bool has_all(const new_children& made) {
  for (i32 part = 0; part < __osw_part_count; ++part) {
    if (!made.hglrc[part]) return false;
  }
  return true;
}

void delete_children(const __osw_thread_state* state, const new_children& made) {
  for (i32 part = 0; part < __osw_part_count; ++part) {
    if (made.hglrc[part]) sys_wgl<wglDeleteContext_op>(state)(made.hglrc[part]);
  }
}

new_children create_children(__osw_thread_state* state, HDC hdc, HGLRC share, const attribute_list& list) {
  new_children made{};
  const int* attributes = &list.of[0].name;
  for (i32 part = 0; part < __osw_part_count; ++part) {
    made.hidden_hdc[part] = __osw_create_hidden_dc(state, hdc, part, 0, 1, 1);
  }
  if (is_on_workers(state, share)) {
    create_on_workers(state, hdc, share, attributes, &made);
  } else {
    create_here(state, share ? __osw_glrc_lookup(share) : nullptr, attributes, &made);
  }
  for (const HDC hidden_hdc : made.hidden_hdc) __osw_destroy_hidden_dc(hidden_hdc);
  return made;
}

// Whether the children were entered. A registry that is full takes none.
bool enter_children(HGLRC hglrc, const new_children& made) {
  __osw_glrc glrc = new_glrc(hglrc);
  memcpy(glrc.child_hglrc, made.hglrc, sizeof made.hglrc);
  glrc.profile_unknown = 1;
  __osw_glrc_enter(glrc);
  return __osw_glrc_lookup(hglrc) != nullptr;
}

// A context that gets no children works all the same, in the application's own window.
void give_children(__osw_thread_state* state, HDC hdc, HGLRC hglrc, HGLRC share, const attribute_list& list) {
  if (share && !__osw_glrc_lookup(share)) {
    __osw_report(severity_warning, "A context that shares with one without child contexts gets none either.\n");
    return;
  }
  settle_shares(state, share);
  const new_children made = create_children(state, hdc, share, for_children(list));
  if (has_all(made) && enter_children(hglrc, made)) return;
  delete_children(state, made);
  __osw_report(severity_error, "No child contexts for a context with attributes: it is not spread over the parts.\n");
}

}  // namespace

HGLRC changed<wglCreateContextAttribsARB_op>::handle(HDC hdc, HGLRC share, const int* attributes) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  const attribute_list list = copy_attributes(attributes);
  if (!is_for_devices(list) && is_beyond_offer(list)) {
    SetLastError(error_invalid_version);
    return nullptr;
  }
  const HGLRC hglrc = sys_wgl<wglCreateContextAttribsARB_op>(state)(hdc, share, attributes);
  if (hglrc && list.is_whole && !is_for_devices(list)) give_children(state, hdc, hglrc, share, list);
  return hglrc;
}

HGLRC changed<wglCreateContextAttribsARB_op>::replay(const replay_scene& on, HDC, HGLRC share, const int* attributes) {
  auto* made = from_slot<new_children*>(on.cmd->args[children_slot]);
  const HGLRC child = create_child(entry_in<wglCreateContextAttribsARB_op>(on.system), made->hidden_hdc[on.part],
                                   __osw_glrc_lookup(share), on.part, attributes);
  made->hglrc[on.part] = child;
  return child;
}
