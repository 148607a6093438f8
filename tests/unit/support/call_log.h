// A log, as text, of everything that reaches the driver: which thread made which call with what arguments, in which
// context, and what the memory held that the call points at; with it what the library reported. One run writes the same
// text as any other, on any machine: what differs between runs, addresses above all, is told by a word.
//
// A test writes the log in sections and looks at its digest. The text is for whoever wants to know what has changed.
#pragma once

#include <string>
#include <vector>

#include "support/library.h"

namespace call_log {

// The driver's answers to every call, so that each way through the library has something to work with.
constexpr u64 app_answer = 0xA1A2A3A4A5A6A7A8;   // in the application's own context
constexpr u64 part_answer = 0xB1B2B3B4B5B6B7B8;  // in any other
constexpr u32 mapped_bytes = 64;                 // of each buffer, as long as it is mapped

// Starts the log, before the library is called.
void begin();

// The application's own context from now on.
void set_app_context(HGLRC context);

// Whether the driver says that its buffers are mapped.
void set_mapped(bool mapped);

// All calls of the wgl functions are answered from now on without an effect in the driver, or no longer.
void answer_wgl(bool answers);

// Memory that calls of a GL op point at: `bytes` behind an argument, put down with each call. Set while no worker is in
// the driver.
void read(int op, u32 argument, std::size_t bytes);
void read_nothing();

// What the application's call gave back.
void add_result(const std::string& call, u64 result, bool may_be_address);

// Waits for the parts of the calling thread, and puts down what has been called and reported since the last section.
void end_section(const std::string& title);

const std::string& text();
u64 digest();

// Writes the text to a file. Result: its path.
std::string write(const std::string& name);

}  // namespace call_log
