/// @file
/// What the user of an example program says, and where the answer goes: the same on both systems.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// The arguments of `main` in UTF-8, without the program's name.
///
/// Windows: those of the system's own command line, since `main` gets none that the code page cannot say.
std::vector<std::string> ReadArguments(int argc, char** argv);

/// The path that an argument names.
inline std::filesystem::path PathOf(const std::string& argument) {
  return std::u8string(argument.begin(), argument.end());
}

/// From now on the standard output takes bytes as they are. Windows: no carriage returns are added.
void WriteBytesToStandardOutput();
