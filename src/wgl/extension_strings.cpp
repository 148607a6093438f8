// The names of wgl's extensions, of which a program of the extended mode is told those whose functions it can have.
#include "extended/offered_names.h"
#include "wgl/main_table.h"

const char* changed<wglGetExtensionsStringARB_op>::handle(HDC hdc) {
  return offered_names(sys_wgl<wglGetExtensionsStringARB_op>(__osw_fetch_thread_state())(hdc));
}

const char* changed<wglGetExtensionsStringEXT_op>::handle() {
  return offered_names(sys_wgl<wglGetExtensionsStringEXT_op>(__osw_fetch_thread_state())());
}
