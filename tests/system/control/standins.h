// The stand-ins of both libraries, carried in this program.
#pragma once

#include <string>

std::string standin_wrapper_bytes();
std::string standin_driver_bytes();
