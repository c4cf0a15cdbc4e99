/// @file
/// A web server in a process of its own, which ends with this one.
#pragma once

/// Starts it on a loopback port, which it returns. GET /N answers with N bytes.
unsigned int StartServerProcess();
