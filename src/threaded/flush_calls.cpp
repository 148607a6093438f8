// glFlush and glFinish: plain commands that wait for nobody. A program that calls one of them may be done drawing, so
// the list is handed over once the program is idle.
#include "pipeline/idle.h"
#include "threaded/encoders.h"

void glFinish_op::encode() {
  encode_plain<glFinish_op, void>();
  __osw_arm_idle_timer(__osw_fetch_thread_state());
}

void glFlush_op::encode() {
  encode_plain<glFlush_op, void>();
  __osw_arm_idle_timer(__osw_fetch_thread_state());
}
