// Texts that the library answers in place of the system's.
#pragma once

// A text that equals `text` and lasts as long as the process, one for all equal ones. `text` is from the allocator
// behind `free`, and is taken over; null, when there was no memory for it, gives an empty text. Any thread, no lock
// needed.
const char* lasting_text(char* text);
