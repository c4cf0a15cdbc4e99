# cmake --install: headers, library, find_package(Zelto CONFIG), pkg-config and the debuggers' views. Packages by CPack.
include(CMakePackageConfigHelpers)

set(zelto_cmake_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Zelto")

install(TARGETS zelto EXPORT ZeltoTargets
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
  FILE_SET generated_headers DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
if(ZELTO_RUNTIME_DLLS AND BUILD_SHARED_LIBS)
  install(FILES ${ZELTO_RUNTIME_DLLS} DESTINATION "${CMAKE_INSTALL_BINDIR}")
endif()
install(EXPORT ZeltoTargets NAMESPACE Zelto:: DESTINATION "${zelto_cmake_dir}")

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/ZeltoConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/ZeltoConfig.cmake" INSTALL_DESTINATION "${zelto_cmake_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/ZeltoConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/ZeltoConfig.cmake" "${PROJECT_BINARY_DIR}/ZeltoConfigVersion.cmake"
  DESTINATION "${zelto_cmake_dir}")

# The pkg-config file finds the rest from where it lies itself, so what was installed may be moved as a whole. A static
# library's user links itself what the library uses.
set(zelto_pc_dir "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH ZELTO_PC_PREFIX "${zelto_pc_dir}" "${CMAKE_INSTALL_PREFIX}")
file(RELATIVE_PATH ZELTO_PC_LIBDIR "${CMAKE_INSTALL_PREFIX}" "${CMAKE_INSTALL_FULL_LIBDIR}")
file(RELATIVE_PATH ZELTO_PC_INCLUDEDIR "${CMAKE_INSTALL_PREFIX}" "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
string(STRIP "${CMAKE_THREAD_LIBS_INIT} ${CMAKE_DL_LIBS}" ZELTO_PC_LIBS_PRIVATE)
list(TRANSFORM ZELTO_PC_LIBS_PRIVATE REPLACE "^([^-].*)$" "-l\\1")
set(ZELTO_PC_STATIC "")
if(NOT BUILD_SHARED_LIBS)
  set(ZELTO_PC_STATIC "-DZELTO_STATIC")
endif()
configure_file("${PROJECT_SOURCE_DIR}/cmake/zelto.pc.in" "${PROJECT_BINARY_DIR}/zelto.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/zelto.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

# The debuggers' views. GDB loads its one by itself for a library under /usr.
install(FILES "${PROJECT_SOURCE_DIR}/debug/zelto.natvis" "${PROJECT_SOURCE_DIR}/debug/zelto_gdb.py"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/zelto")
if(CMAKE_SYSTEM_NAME STREQUAL "Linux" AND BUILD_SHARED_LIBS)
  install(FILES "${PROJECT_SOURCE_DIR}/debug/zelto_gdb.py" RENAME "libzelto.so.${PROJECT_VERSION}-gdb.py"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/gdb/auto-load/\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}")
endif()

install(FILES "${PROJECT_SOURCE_DIR}/README.md" "${PROJECT_SOURCE_DIR}/CHANGELOG.md" TYPE DOC)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/docs" TYPE DOC FILES_MATCHING PATTERN "*.md" PATTERN "*.svg")

if(PROJECT_IS_TOP_LEVEL)
  include(ZeltoPackage)
endif()
