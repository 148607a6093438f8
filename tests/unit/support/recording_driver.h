// The host's `opengl32sys.dll`: an entry for each op, those of the extended mode too, which notes the call and gives a
// scripted result. It has contexts, drawables and pbuffers, and nothing that draws.
//
// Notes are kept per thread without a lock, so that the driver orders nothing between threads that the library under
// test has not ordered itself. A test therefore looks, and changes what the driver says, only while no other thread is
// inside a driver call: after a synchronous command, or when the threads have ended.
#pragma once

#include <array>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "ops/ops.h"

namespace driver {

enum class op_space { wgl, gl };

constexpr std::size_t most_arguments = 15;
using argument_bits = std::array<u64, most_arguments>;

// One call of an entry. Arguments are the bits as the call passed them: 8, 16 and 32-bit values and floats in the low
// bits of a word, the rest zero. `context` is the one that the driver had current, `before` any effect of the call.
struct call {
  u64 sequence = 0;  // rises over all threads
  DWORD thread_id = 0;
  HGLRC context = nullptr;
  op_space space = op_space::gl;
  int op = 0;
  u32 argument_count = 0;
  argument_bits arguments = {};
};

// Equal when it is the same function with the same arguments, whoever called it.
bool operator==(const call& first, const call& second);
std::ostream& operator<<(std::ostream& out, const call& shown);
const char* name_of(op_space space, int op);

// The bits of an argument, as the driver notes them.
template <class Value>
u64 bits_of(Value value) {
  static_assert(sizeof value <= sizeof(u64));
  u64 bits = 0;
  __builtin_memcpy(&bits, &value, sizeof value);
  return bits;
}

// Whether an op is one of wgl; its name tells.
template <class Op>
constexpr op_space space_of = Op::name[0] == 'w' ? op_space::wgl : op_space::gl;

// What the driver notes for a call of `Op` with these arguments, which are converted to the op's own types.
template <class Op, class Result, class... Parameters>
call expected_call(Result (*)(Parameters...), std::type_identity_t<Parameters>... arguments) {
  call expected;
  expected.space = space_of<Op>;
  expected.op = Op::op;
  expected.argument_count = sizeof...(Parameters);
  expected.arguments = {bits_of(arguments)...};
  return expected;
}
template <class Op, class... Arguments>
call expect(Arguments... arguments) {
  return expected_call<Op>(static_cast<typename Op::type*>(nullptr), arguments...);
}

// ---- the library itself ----

// Forgets contexts, notes and scripts, and puts the driver in the place of `opengl32sys.dll`. No thread may be in it.
void reset();

// What GetProcAddress of `opengl32sys.dll` answers.
FARPROC export_of(const char* name);

enum class recording {
  log,     // every call is kept
  digest,  // a running figure per context is kept: for streams too long to keep
  off      // nothing is kept or scripted; GL entries that are bound then do nothing at all
};
void record(recording what);

// Where a name can be had. At first the ops that the platform's library exports are `exported`, and all others
// `by_name`: from wglGetProcAddress, while a context is current.
enum class reach { exported, by_name, both, nowhere };
void set_reach(const char* name, reach where);

// What wglGetProcAddress answers for `name` while a context is current, whether the driver knows it or not.
void set_answer(const char* name, INT_PTR answer);

void set_extensions(const char* extensions);

// ---- notes ----

// All calls in order; those made with `context` current; those of one thread; those of one op.
std::vector<call> calls();
std::vector<call> calls_in(HGLRC context);
std::vector<call> calls_of_thread(DWORD thread_id);
template <class Op>
std::vector<call> calls_of() {
  std::vector<call> found = calls();
  std::erase_if(found, [](const call& one) { return one.space != space_of<Op> || one.op != Op::op; });
  return found;
}

// As calls_in, GL alone.
std::vector<call> gl_calls_in(HGLRC context);

// Forgets calls, figures and the counts below.
void clear_calls();

// GL calls made with no context current; the first of each op.
std::vector<std::string> calls_without_context();

// Calls made while the calling thread was in a critical section; the first of each op.
std::vector<std::string> calls_under_lock();

// The figure of a context that has seen nothing, and that of one which next sees a GL call.
constexpr u64 empty_digest = 0xCBF29CE484222325u;
u64 digest_after(u64 digest, int op, const u64* arguments, u32 argument_count);

// ---- contexts ----

struct context_facts {
  HGLRC hglrc;
  HANDLE driver_context;
  bool live;
  DWORD made_by;  // thread
  HDC made_on;
  int made_with;     // wgl op
  DWORD current_on;  // thread, or 0
  u64 gl_calls;
  u64 digest;  // in mode recording::digest
};
// All contexts, also deleted ones, in the order of their making.
std::vector<context_facts> contexts();
context_facts context(HGLRC hglrc);

// The `count` contexts that the same thread made next after `hglrc`: with the library above, its child contexts in part
// order.
std::vector<HGLRC> contexts_made_after(HGLRC hglrc, int count);

struct binding {
  HGLRC context;
  HDC draw;
  HDC read;
  HGLRC switched_to;  // what wglFastSwitchContextZ4 has set; else as context
};
// Of the calling thread.
binding current_binding();

// Pbuffers that exist, in the order of their making.
std::vector<HPBUFFERARB> pbuffers();

// ---- names of objects ----

// At first nothing makes names. From now on what makes some does, for each context the lowest that are free, from 1 on,
// whatever they are for; what is deleted is free again.
void hand_out_names();

// The next names of a context are by `count` higher, and none below them are ever free.
void skip_names(HGLRC context, u32 count);

// Names of a context are taken by somebody else, or free again. Also while threads are inside the driver.
void take_names(HGLRC context, const std::vector<GLuint>& names);
void free_names(HGLRC context, const std::vector<GLuint>& names);

// All that are taken, in order.
std::vector<GLuint> taken_names(HGLRC context);

// ---- scripts ----

// A call on its way, as a script sees it: on the calling thread, before the driver has done anything.
struct live_call {
  call what;
  u64 result = 0;
  bool answered = false;  // set: `result` is the result, and the driver does nothing of its own
};
using script = std::function<void(live_call&)>;

void on_call(op_space space, int op, script run);
void on_every_call(script run);
template <class Op>
void on_call(script run) {
  on_call(space_of<Op>, Op::op, std::move(run));
}

// The result of an op from now on, in all contexts or in one. A wgl op then has no effect. All 64 bits of an integer
// reach the caller's register, whatever the result's width.
void set_result(op_space space, int op, u64 result);
void set_result_in(HGLRC context, op_space space, int op, u64 result);
template <class Op>
void set_result(u64 result) {
  set_result(space_of<Op>, Op::op, result);
}
template <class Op>
void set_result_in(HGLRC context, u64 result) {
  set_result_in(context, space_of<Op>, Op::op, result);
}

// The n-th call from now on (from 1) of an op has no effect and the result 0.
void fail_call(op_space space, int op, int n);
template <class Op>
void fail_call(int n) {
  fail_call(space_of<Op>, Op::op, n);
}

void clear_scripts();

}  // namespace driver
