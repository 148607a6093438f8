// Glyphs as display lists, which the extended mode makes on the parts too. The font is that of the application's device
// context, which serves one thread at a time: the parts take their turns.
#include "dispatch/path.h"
#include "dispatch/thread_state.h"
#include "pipeline/replay_case.h"
#include "wgl/main_table.h"

namespace {

template <class Op, class... Arguments>
BOOL make_glyphs(Arguments... arguments) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  const BOOL result = sys_wgl<Op>(state)(arguments...);
  const u64 slots[] = {to_slot(arguments)...};
  if (result) state->path->replay_one_by_one(state, Op::op, slots, sizeof...(Arguments));
  return result;
}

template <class Op, class... Arguments>
BOOL make_in_turn(const replay_scene& on, Arguments... arguments) {
  const auto turn = from_slot<i32>(on.cmd->args[parameter_count<Op>]);
  return turn == on.part ? entry_in<Op>(on.system)(arguments...) : 0;
}

}  // namespace

BOOL changed<wglUseFontBitmapsA_op>::handle(HDC hdc, DWORD first, DWORD count, DWORD list_base) {
  return make_glyphs<wglUseFontBitmapsA_op>(hdc, first, count, list_base);
}

BOOL changed<wglUseFontBitmapsA_op>::replay(const replay_scene& on, HDC hdc, DWORD first, DWORD count,
                                            DWORD list_base) {
  return make_in_turn<wglUseFontBitmapsA_op>(on, hdc, first, count, list_base);
}

BOOL changed<wglUseFontBitmapsW_op>::handle(HDC hdc, DWORD first, DWORD count, DWORD list_base) {
  return make_glyphs<wglUseFontBitmapsW_op>(hdc, first, count, list_base);
}

BOOL changed<wglUseFontBitmapsW_op>::replay(const replay_scene& on, HDC hdc, DWORD first, DWORD count,
                                            DWORD list_base) {
  return make_in_turn<wglUseFontBitmapsW_op>(on, hdc, first, count, list_base);
}

BOOL changed<wglUseFontOutlinesA_op>::handle(HDC hdc, DWORD first, DWORD count, DWORD list_base, FLOAT deviation,
                                             FLOAT extrusion, int format, LPGLYPHMETRICSFLOAT metrics) {
  return make_glyphs<wglUseFontOutlinesA_op>(hdc, first, count, list_base, deviation, extrusion, format, metrics);
}

BOOL changed<wglUseFontOutlinesA_op>::replay(const replay_scene& on, HDC hdc, DWORD first, DWORD count, DWORD list_base,
                                             FLOAT deviation, FLOAT extrusion, int format,
                                             LPGLYPHMETRICSFLOAT metrics) {
  return make_in_turn<wglUseFontOutlinesA_op>(on, hdc, first, count, list_base, deviation, extrusion, format, metrics);
}

BOOL changed<wglUseFontOutlinesW_op>::handle(HDC hdc, DWORD first, DWORD count, DWORD list_base, FLOAT deviation,
                                             FLOAT extrusion, int format, LPGLYPHMETRICSFLOAT metrics) {
  return make_glyphs<wglUseFontOutlinesW_op>(hdc, first, count, list_base, deviation, extrusion, format, metrics);
}

BOOL changed<wglUseFontOutlinesW_op>::replay(const replay_scene& on, HDC hdc, DWORD first, DWORD count, DWORD list_base,
                                             FLOAT deviation, FLOAT extrusion, int format,
                                             LPGLYPHMETRICSFLOAT metrics) {
  return make_in_turn<wglUseFontOutlinesW_op>(on, hdc, first, count, list_base, deviation, extrusion, format, metrics);
}
