// One thread at a time in a host that several cannot call at once.
//
// llvmpipe looks, at nearly every draw, upload and swap, through what the contexts of all threads have queued, and
// takes no lock that would keep those threads from changing it meanwhile: a call goes wrong in the middle, with the
// host's own locks held, and the process stands still. A program draws with one thread as a rule, and its parts with
// several.
#pragma once

// Lets each call wait for its turn from now on, if the process is spread and its host is such a one. Called on a thread
// with a context that is real on the host, before any call on it. Any number of times.
void take_turns_if_needed();
