# Run by CTest: installs the library, builds the consumer against it by find_package and by pkg-config, and runs it.
# WAY shared installs the build at hand; WAY unpacked takes what PREFIX holds. WAY static first makes the library a part
# of the consumer's own build, and installs it from there.
set(prefix "${WORK}/prefix")
set(programs "${WORK}/programs")
file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")

function(step)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGV}\n${output}${errors}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

# run_consumer(<folder>): it works, and is told the version of this project.
function(run_consumer folder)
  step(${EMULATOR} "${folder}/consumer${SUFFIX}")
  if(NOT output STREQUAL "${VERSION}.0")
    message(FATAL_ERROR "${folder}/consumer${SUFFIX} prints \"${output}\", not \"${VERSION}.0\"")
  endif()
endfunction()

# build_consumer(<folder> <option>...): as a CMake project.
function(build_consumer folder)
  step(${CMAKE_COMMAND} -G Ninja -S "${CONSUMER}" -B "${folder}" ${options} ${ARGN})
  step(${CMAKE_COMMAND} --build "${folder}")
endfunction()

set(options -DCMAKE_BUILD_TYPE=Release "-DCMAKE_CXX_FLAGS=${FLAGS}" "-DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER}"
    "-DZELTO_VERSION=${VERSION}")
if(TOOLCHAIN)
  list(APPEND options "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}")
else()
  list(APPEND options "-DCMAKE_CXX_COMPILER=${COMPILER}")
endif()

if(WAY STREQUAL "static")
  set(link_flags)
  if(TOOLCHAIN)
    set(link_flags -static)  # nothing lies beside the program
  endif()
  list(APPEND options "-DCMAKE_EXE_LINKER_FLAGS=${link_flags}")
  set(pkg_config_options --static)
  build_consumer("${WORK}/source" "-DZELTO_SOURCE=${LIBRARY}" -DZELTO_INSTALL=ON -DBUILD_SHARED_LIBS=OFF
                 -DCMAKE_CXX_FLAGS_RELEASE=-O0)
  run_consumer("${WORK}/source")
  step(${CMAKE_COMMAND} --install "${WORK}/source" --prefix "${prefix}")
else()
  if(WAY STREQUAL "shared")
    step(${CMAKE_COMMAND} --install "${BUILD}" --prefix "${prefix}")
  else()
    set(prefix "${PREFIX}")
  endif()
  if(TOOLCHAIN)
    set(programs "${prefix}/bin")  # beside the DLLs
  endif()
  if(NOT TOOLCHAIN AND NOT EXISTS "${prefix}/lib/libzelto.so.${VERSION}")
    message(FATAL_ERROR "No libzelto.so.${VERSION} in ${prefix}/lib")
  endif()
endif()

build_consumer("${WORK}/package" "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_RUNTIME_OUTPUT_DIRECTORY=${programs}")
run_consumer("${programs}")

file(REMOVE "${programs}/consumer${SUFFIX}")
set(ENV{PKG_CONFIG_LIBDIR} "${prefix}/lib/pkgconfig")
step("${PKG_CONFIG}" --modversion zelto)
if(NOT output STREQUAL "${VERSION}\n")
  message(FATAL_ERROR "pkg-config knows version ${output}")
endif()
step("${PKG_CONFIG}" ${pkg_config_options} --cflags --libs zelto)
separate_arguments(package UNIX_COMMAND "${output}")
separate_arguments(flags UNIX_COMMAND "${FLAGS}")
step("${COMPILER}" -std=c++20 ${flags} "${CONSUMER}/consumer.cpp" -o "${programs}/consumer${SUFFIX}" ${package}
     ${link_flags} -Wl,-rpath,${prefix}/lib)
run_consumer("${programs}")
