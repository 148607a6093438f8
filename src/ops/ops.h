// One tag type per op, made from the op lists. Templates over ops take the tag: it carries the op's number, prototype,
// name, words and base op as constants, so that nothing about an op is looked up at run time.
#pragma once

#include <type_traits>

#include "ops/op_list.h"
#include "ops/payload.h"
#include "ops/prototype.h"
#include "ops/relaxed.h"

// An entry point whose signature the op number stands for. 64-bit Windows has a single calling convention, so none is
// written anywhere.
using __osw_proc = void (*)();

struct none_op;    // base of an op that is no alias
struct driver_op;  // base of the driver's two private ops

enum class op_sync : bool { async = false, sync = true };

// The words of gl_ops.inc's columns `threaded`, `sequential` and `replay`. `none`, `create`, `app_only` and `first` are
// words of gl_wide.inc, `kept` one of gl_changed.inc.
enum class threaded_word { plain, query, copied, array, alias, own, none, kept, create, app_only };
enum class sequential_word { each, own, none, kept, create, first };
enum class replay_word { none, slots, own, kept, create, first };

// A row's word as a type: a thousand types cost a file less than a thousand constants.
template <auto word_value>
struct word {
  static constexpr auto value = word_value;
};

// The words of wgl_ops.inc's columns `main` and `pass`, as types.
struct wgl_forward;
struct wgl_warn;
struct wgl_zero;
struct wgl_own;
template <class Target>
struct wgl_to;
template <class Target>
struct wgl_row;

#define GL_OP(number, function, ...) , struct function##_op
using gl_op_list = op_list<before_first_op
#include "ops/gl_ops.inc"
                           >;
// What the extended mode adds, and all that it has.
using gl_wide_list = op_list<before_first_op
#include "ops/gl_wide.inc"
                             >;
using gl_all_list = joined_op_list<gl_op_list, gl_wide_list>;
#undef GL_OP

#define WGL_OP(number, function, ...) , struct function##_op
using wgl_op_list = op_list<before_first_op
#include "ops/wgl_ops.inc"
                            >;
#undef WGL_OP

constexpr int gl_op_count = gl_op_list::count;
constexpr int gl_all_count = gl_all_list::count;
constexpr int wgl_op_count = wgl_op_list::count;

// What a worker knows when it replays a command. `system` is the table of the op's space.
struct __osw_thread_state;
struct __osw_cmd;
struct replay_scene {
  __osw_thread_state* state;
  const __osw_proc* system;
  i32 part;
  __osw_cmd* cmd;
};

template <class Type>
struct replay_of;
template <class Result, class... Parameters>
struct replay_of<Result(Parameters...)> {
  using type = Result(const replay_scene&, Parameters...);
};

// The handlers that a row's words `own` declare, as members of the op's tag and with the row's prototype. One that is
// missing does not link, and one that no word declares does not compile. Each line is a word's; other words declare
// nothing.
#define threaded_plain(result, parameters)
#define threaded_query(result, parameters)
#define threaded_copied(result, parameters)
#define threaded_array(result, parameters)
#define threaded_alias(result, parameters)
#define threaded_own(result, parameters) static result encode parameters;
#define threaded_none(result, parameters)
#define threaded_kept(result, parameters)
#define threaded_create(result, parameters)
#define threaded_app_only(result, parameters)
#define sequential_each(result, parameters)
#define sequential_own(result, parameters) static result broadcast parameters;
#define sequential_none(result, parameters)
#define sequential_kept(result, parameters)
#define sequential_create(result, parameters)
#define sequential_first(result, parameters)
#define replay_none(result, parameters)
#define replay_kept(result, parameters)
#define replay_create(result, parameters)
#define replay_first(result, parameters)
#define replay_slots(result, parameters)
#define replay_own(result, parameters) static replay_of<result parameters>::type replay;

// A payload is a function of the call's parameters; where nothing is copied there is none, for a thousand functions
// more would be read with every file.
#define payload_absent(parameters, value)
#define payload_present(parameters, value)   \
  static constexpr auto payload parameters { \
    return value;                            \
  }
#define copies_none           payload_absent
#define copies_kept           payload_absent
#define copies_in_record(...) payload_present
#define copies_fits(...)      payload_present
#define copies_block(...)     payload_present
#define copies_items(...)     payload_present
#define copies_text(...)      payload_present
#define copies_pixels(...)    payload_present
#define copies_made(...)      payload_present
#define copies_texel(...)     payload_present
#define copies_arrays(...)    payload_present

// Payloads name some of a call's parameters, one of which may be called as what a row has.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-parameter"
#pragma GCC diagnostic ignored "-Wshadow"

// clang-format off
#define GL_OP(number, function, sync_word, threads, sequence, replays, alias_of, copies, result, parameters, arguments) \
  struct function##_op {                                         \
    static constexpr int op = number;                            \
    static constexpr const char* name = #function;               \
    static constexpr op_sync sync = op_sync::sync_word;          \
    using threaded = word<threaded_word::threads>;               \
    using sequential = word<sequential_word::sequence>;          \
    using replaying = word<replay_word::replays>;                \
    using type = result parameters;                              \
    using base = alias_of##_op;                                  \
    copies_##copies(parameters, payload_##copies)                \
    threaded_##threads(result, parameters)                       \
    sequential_##sequence(result, parameters)                    \
    replay_##replays(result, parameters)                         \
  };
// clang-format on
#include "ops/gl_ops.inc"
#include "ops/gl_wide.inc"
#undef GL_OP

// An op as the extended mode takes it, where that differs: what a row does not change is its op's.
template <class Op>
struct changed;

template <class Word, class Kept>
using word_or_kept = std::conditional_t<Word::value == decltype(Word::value)::kept, Kept, Word>;

// clang-format off
#define GL_CHANGED(function, sync_word, threads, sequence, replays, copies, result, parameters, arguments)                \
  template <>                                                                                                          \
  struct changed<function##_op> : function##_op {                                                                      \
    static_assert(std::is_same_v<result parameters, type>);                                                            \
    static constexpr op_sync sync = op_sync::sync_word;                                                                \
    using threaded = word_or_kept<word<threaded_word::threads>, function##_op::threaded>;                              \
    using sequential = word_or_kept<word<sequential_word::sequence>, function##_op::sequential>;                       \
    using replaying = word_or_kept<word<replay_word::replays>, function##_op::replaying>;                              \
    copies_##copies(parameters, payload_##copies)                                                                      \
    threaded_##threads(result, parameters)                                                                             \
    sequential_##sequence(result, parameters)                                                                          \
    replay_##replays(result, parameters)                                                                               \
  };
// clang-format on
#include "ops/gl_changed.inc"
#undef GL_CHANGED
#pragma GCC diagnostic pop

// As above: `main` declares handle, `pass` declares pass.
#define main_forward(result, parameters)
#define main_warn(result, parameters)
#define main_zero(result, parameters)
#define main_to(target)              main_forward
#define main_row(target)             main_forward
#define main_own(result, parameters) static result handle parameters;
#define pass_forward(result, parameters)
#define pass_zero(result, parameters)
#define pass_to(target)              pass_forward
#define pass_own(result, parameters) static result pass parameters;
#define word_forward                 wgl_forward
#define word_warn                    wgl_warn
#define word_zero                    wgl_zero
#define word_own                     wgl_own
#define word_to(target)              wgl_to<target##_op>
#define word_row(target)             wgl_row<target##_op>

// clang-format off
#define WGL_OP(number, function, sync_word, main_word, pass_word, replays, result, parameters, arguments) \
  struct function##_op {                                         \
    static constexpr int op = number;                            \
    static constexpr const char* name = #function;               \
    static constexpr op_sync sync = op_sync::sync_word;          \
    using replaying = word<replay_word::replays>;                \
    using type = result parameters;                              \
    using main = word_##main_word;                               \
    using bypassed = word_##pass_word;                           \
    main_##main_word(result, parameters)                         \
    pass_##pass_word(result, parameters)                         \
    replay_##replays(result, parameters)                         \
  };
// clang-format on
#include "ops/wgl_ops.inc"
#undef WGL_OP

// clang-format off
#define WGL_CHANGED(function, sync_word, main_word, replays, result, parameters, arguments) \
  template <>                                                                            \
  struct changed<function##_op> : function##_op {                                        \
    static_assert(std::is_same_v<result parameters, type>);                              \
    static constexpr op_sync sync = op_sync::sync_word;                                  \
    using main = word_##main_word;                                                       \
    using replaying = word_or_kept<word<replay_word::replays>, function##_op::replaying>; \
    main_##main_word(result, parameters)                                                 \
    replay_##replays(result, parameters)                                                 \
  };
// clang-format on
#include "ops/wgl_changed.inc"
#undef WGL_CHANGED

#undef threaded_plain
#undef threaded_query
#undef threaded_copied
#undef threaded_array
#undef threaded_alias
#undef threaded_own
#undef threaded_none
#undef threaded_kept
#undef threaded_create
#undef threaded_app_only
#undef payload_absent
#undef payload_present
#undef copies_none
#undef copies_kept
#undef copies_in_record
#undef copies_fits
#undef copies_block
#undef copies_items
#undef copies_text
#undef copies_pixels
#undef copies_made
#undef copies_texel
#undef copies_arrays
#undef sequential_each
#undef sequential_own
#undef sequential_none
#undef sequential_kept
#undef sequential_create
#undef sequential_first
#undef replay_none
#undef replay_kept
#undef replay_create
#undef replay_first
#undef replay_slots
#undef replay_own
#undef main_forward
#undef main_warn
#undef main_zero
#undef main_to
#undef main_row
#undef main_own
#undef pass_forward
#undef pass_zero
#undef pass_to
#undef pass_own
#undef word_forward
#undef word_warn
#undef word_zero
#undef word_own
#undef word_to
#undef word_row

// Whether an op has handlers. A function that lacks them does not exist for the program.
template <class Op>
constexpr bool has_handlers = Op::threaded::value != threaded_word::none;

// Whether the parts' workers replay an op.
template <class Op>
constexpr bool makes_commands = has_handlers<Op>&& Op::threaded::value != threaded_word::app_only;

// Call `work.operator()<Op>()` for each op of a list, in op order.
template <class Work>
constexpr void for_each_gl_op(Work work) {
  gl_op_list::for_each(work);
}
template <class Work>
constexpr void for_each_wide_op(Work work) {
  gl_wide_list::for_each(work);
}
template <class Work>
constexpr void for_each_wgl_op(Work work) {
  wgl_op_list::for_each(work);
}

template <class Op>
constexpr bool is_changed = requires {
  changed<Op>::op;
};

// An alias of a changed op, which borrows what the extended mode makes of that. It may be a changed one itself.
template <class Op>
struct rebased : Op {
  using base = changed<typename Op::base>;
};

// The form of an op in the extended mode: a changed one, an alias of such a one, or the op itself.
template <class Op>
constexpr auto extended_form_of() {
  if constexpr (is_changed<Op> && is_changed<typename Op::base>) {
    return std::type_identity<rebased<changed<Op>>>();
  } else if constexpr (is_changed<Op>) {
    return std::type_identity<changed<Op>>();
  } else if constexpr (is_changed<typename Op::base>) {
    return std::type_identity<rebased<Op>>();
  } else {
    return std::type_identity<Op>();
  }
}
template <class Op>
using extended_form = typename decltype(extended_form_of<Op>())::type;

// Calls `work.operator()<Form>()` for the extended form of each op of the basic mode that has one of its own, in op
// order.
template <class Work>
constexpr void for_each_changed_op(Work work) {
  for_each_gl_op([&]<class Op>() {
    if constexpr (!std::is_same_v<extended_form<Op>, Op>) work.template operator()<extended_form<Op>>();
  });
}

// The same for the changed ops of wgl.
template <class Work>
constexpr void for_each_changed_wgl_op(Work work) {
  for_each_wgl_op([&]<class Op>() {
    if constexpr (is_changed<Op>) work.template operator()<changed<Op>>();
  });
}

// The entry of an op in a table of its space, as a function of the op's own type. A relaxed load: the system's wgl
// table may be refilled by another thread's binding.
template <class Op>
inline typename Op::type* entry_in(const __osw_proc* table) {
  return reinterpret_cast<typename Op::type*>(relaxed_load(table[Op::op]));
}

// A function of an op's type, as a table holds it.
template <class Op>
inline __osw_proc as_proc(typename Op::type* function) {
  return reinterpret_cast<__osw_proc>(function);
}
