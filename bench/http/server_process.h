/// @file
/// A web server in a process of its own, which ends with this one.
#pragma once

#include <string>

/// Starts it. GET /N answers with N bytes. @return its address, without a path
std::string StartServerProcess();
