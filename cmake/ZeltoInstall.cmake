# cmake --install: headers, library, find_package(Zelto CONFIG) and pkg-config.
include(CMakePackageConfigHelpers)

set(zelto_cmake_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Zelto")

install(TARGETS zelto EXPORT ZeltoTargets
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
if(ZELTO_RUNTIME_DLLS)
  install(FILES ${ZELTO_RUNTIME_DLLS} DESTINATION "${CMAKE_INSTALL_BINDIR}")
endif()
install(EXPORT ZeltoTargets NAMESPACE Zelto:: DESTINATION "${zelto_cmake_dir}")

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/ZeltoConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/ZeltoConfig.cmake" INSTALL_DESTINATION "${zelto_cmake_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/ZeltoConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/ZeltoConfig.cmake" "${PROJECT_BINARY_DIR}/ZeltoConfigVersion.cmake"
  DESTINATION "${zelto_cmake_dir}")

# What a static library's user links itself.
set(ZELTO_PC_LIBS_PRIVATE "${CMAKE_THREAD_LIBS_INIT} ${CMAKE_DL_LIBS}")
set(ZELTO_PC_STATIC "")
if(NOT BUILD_SHARED_LIBS)
  set(ZELTO_PC_STATIC "-DZELTO_STATIC")
endif()
configure_file("${PROJECT_SOURCE_DIR}/cmake/zelto.pc.in" "${PROJECT_BINARY_DIR}/zelto.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/zelto.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
