// A host library for tests (test_host.cpp), which the program that links this bears within it.
#pragma once

#include <string>

// Writes it to `path`, a file that is not there or that may be overwritten. A failed check if that cannot be.
void place_test_host(const std::string& path);

// What it exports. All in whole numbers of the process; any thread.
using test_host_refuse = void(int bindings);  // TestHostRefuse: so many bindings to come are refused
                                              // TestHostTakeOneAtATime: with 1 those too that come during another
using test_host_count = int();                // TestHostAsked: bindings that it was asked for, but for releases;
                                              // TestHostUnprepared: calls that came without a context
                                              // TestHostMostAtOnce: threads that were in it at the same time, of those
                                              // calls that the library itself answers

// Environment variables: a binding takes OSW_TEST_HOST_DELAY microseconds of a processor, and each call that is counted
// OSW_TEST_HOST_STAY; OSW_TEST_HOST_RENDERER is what GL_RENDERER tells; OSW_TEST_HOST_LOADED is set in a process that
// has loaded the library, under whatever name.
