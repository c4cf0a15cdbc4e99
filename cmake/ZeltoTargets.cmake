# What every target of this project shares: language, warnings, sanitizers, and the DLLs beside Windows programs.

# zelto_compile_options(<target>): the compile options of our own code, not passed on to users.
function(zelto_compile_options target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  if(MSVC)
    target_compile_options(${target} PRIVATE /W4 /permissive- /utf-8 $<$<BOOL:${ZELTO_WARNINGS_AS_ERRORS}>:/WX>)
    return()
  endif()
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wconversion -Wshadow
                         $<$<BOOL:${ZELTO_WARNINGS_AS_ERRORS}>:-Werror>)
endfunction()

if(ZELTO_SANITIZE)
  add_compile_options(-fsanitize=${ZELTO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g)
  add_link_options(-fsanitize=${ZELTO_SANITIZE})
endif()

if(ZELTO_BUILD_FUZZERS)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# The shared C++ runtime stands beside the programs of a mingw build: the system has none, and with two static copies
# exceptions across the DLL's boundary miscount.
if(MINGW AND PROJECT_IS_TOP_LEVEL)
  set(zelto_runtime_dlls)
  foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
                    OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT IS_ABSOLUTE "${path}")
      find_file(zelto_${name} ${name} PATHS /usr/x86_64-w64-mingw32/lib REQUIRED NO_CMAKE_FIND_ROOT_PATH)
      set(path "${zelto_${name}}")
    endif()
    file(COPY "${path}" DESTINATION "${PROJECT_BINARY_DIR}/bin")
    list(APPEND zelto_runtime_dlls "${path}")
  endforeach()
  set(ZELTO_RUNTIME_DLLS ${zelto_runtime_dlls} CACHE INTERNAL "The shared C++ runtime of this compiler")
endif()
