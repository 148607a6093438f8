// Whether the driver's switch of contexts is a fast one. Whoever stands on the driver can draw on several contexts from
// one thread if it is, and had better give each a thread if not.
#pragma once

// Whether wglFastSwitchContextZ4 is offered. OSW_DRIVER_FAST_SWITCH decides, if it is 0 or 1; else it is measured once
// in the process how long the host takes for a switch, and reported. That needs a context current on the calling
// thread, whose pixel format is taken, and without one the answer is false and may yet become true. Any thread, outside
// DllMain; takes no lock, for the host may call the driver meanwhile, and is told false.
bool offers_fast_switch();
