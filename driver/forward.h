// What an entry of the driver does: one template for all GL ops, and full specialisations, in the files of their
// subjects, for those that do more.
#pragma once

#include "binding.h"
#include "host.h"

// The first call on a binding that was only noted. Apart from the template below, so that the path of every other call
// is a load, a test and a jump.
template <class Op, class Result, class... Arguments>
[[gnu::noinline, gnu::cold]] Result bind_and_forward(Arguments... arguments) {
  bind_current();
  return host_gl_entry<Op>()(arguments...);
}

template <class Op, class Result, class... Arguments>
inline Result forward(Arguments... arguments) {
  if (!bound_thread()) [[unlikely]]
    return bind_and_forward<Op, Result>(arguments...);
  return host_gl_entry<Op>()(arguments...);
}
