/// What the library's own file says.
#pragma once

#include "zelto/time/version.h"

/// The version that users of the system see on the loaded library's file: on Linux the end of its name, on Windows its
/// version resource.
Zelto::Utilities::Version VersionOfLibraryFile();
