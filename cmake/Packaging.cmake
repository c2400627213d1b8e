# What `cmake --install` adds besides headers and libraries: the CMake
# package (find_package(KORU) gives KORU::KORU and KORU::KORUPlatform) and
# the pkg-config file koru.pc.
include(CMakePackageConfigHelpers)
set(KORU_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/KORU)

install(EXPORT KORUTargets NAMESPACE KORU:: DESTINATION ${KORU_CMAKE_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/KORUConfig.cmake.in
  ${PROJECT_BINARY_DIR}/KORUConfig.cmake INSTALL_DESTINATION ${KORU_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/KORUConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/KORUConfig.cmake
              ${PROJECT_BINARY_DIR}/KORUConfigVersion.cmake
              ${PROJECT_SOURCE_DIR}/cmake/GNUstep.cmake
        DESTINATION ${KORU_CMAKE_DIR})

# pkg-config: C and C++ programs need the include paths and libraries; an
# Objective-C program also finds GNUstep's headers and the runtime there.
set(KORU_PC_INCLUDES "")
foreach(flag IN LISTS _gs_objc_flags)
  if(flag MATCHES "^-I/" OR flag MATCHES "^-D")
    string(APPEND KORU_PC_INCLUDES " ${flag}")
  endif()
endforeach()
configure_file(${PROJECT_SOURCE_DIR}/cmake/koru.pc.in ${PROJECT_BINARY_DIR}/koru.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/koru.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
