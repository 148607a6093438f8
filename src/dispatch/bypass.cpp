#include "dispatch/bypass.h"

u32 __osw_enable_wrapper_bypass;
