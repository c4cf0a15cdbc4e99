/// @file
/// The words that differ between compilers and between building and using the library. Every public header has it.
#pragma once

#if defined(ZELTO_STATIC)
#define ZELTO_API
#elif defined(_WIN32)
#if defined(ZELTO_BUILDING)
#define ZELTO_API __declspec(dllexport)
#else
#define ZELTO_API __declspec(dllimport)
#endif
#else
#define ZELTO_API __attribute__((visibility("default")))
#endif

// An exported class may have private members of standard types; MSVC warns although both sides share one runtime.
#if defined(_MSC_VER)
#pragma warning(disable : 4251 4275)
#endif

// A member function that may be called through a null pointer: UndefinedBehaviorSanitizer does not check its `this`.
#if defined(__GNUC__)
#define ZELTO_NULL_OBJECT_ALLOWED __attribute__((no_sanitize("null")))
#else
#define ZELTO_NULL_OBJECT_ALLOWED
#endif
