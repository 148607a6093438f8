#include "pipeline/idle.h"

#include "pipeline/flush.h"
#include "pipeline/threads.h"

namespace {

// The shortest period that the system keeps. Timer messages come only when nothing else is waiting in the queue.
constexpr UINT idle_period_ms = USER_TIMER_MINIMUM;

void CALLBACK hand_over_when_idle(HWND, UINT, UINT_PTR timer, DWORD) {
  auto* state = static_cast<__osw_thread_state*>(TlsGetValue(__osw_state_slot));
  if (!state || state->idle_timer != timer) return;
  __osw_disarm_idle_timer(state);
  if (__osw_has_pipeline(state)) __osw_hand_over_idle(state);
}

}  // namespace

void __osw_arm_idle_timer(__osw_thread_state* state) {
  if (!state->idle_timer) state->idle_timer = SetTimer(nullptr, 0, idle_period_ms, hand_over_when_idle);
}

void __osw_disarm_idle_timer(__osw_thread_state* state) {
  if (state->idle_timer) KillTimer(nullptr, state->idle_timer);
  state->idle_timer = 0;
}
