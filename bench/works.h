// Calls that belong together, as the measured loops make them.
#pragma once

#include "settings.h"

// Maps the bound block, writes all of it, and unmaps it: giving up what it held, or keeping that.
void write_whole_block(setting_memory* memory);
void write_into_block(setting_memory* memory);

// Makes a fence, waits for it and deletes it.
void wait_for_fence(setting_memory* memory);
