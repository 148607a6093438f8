// glFlush: a program that calls it may be done drawing, or wait on another thread for what it has drawn.
#include "pipeline/flush.h"
#include "threaded/encode.h"

void changed<glFlush_op>::encode() {
  encode_plain<changed<glFlush_op>, void>();
  offer_list(__osw_fetch_thread_state());
}
