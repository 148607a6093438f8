// Strings that the driver answers in place of the host's.
#pragma once

// A string that equals `text` and lasts as long as the process, one for all equal ones. `text` is from the allocator
// behind `free`, and is taken over; null, when there was no memory for it, gives an empty string. Any thread.
const char* lasting_string(char* text);
