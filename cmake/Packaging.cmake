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

# pkg-config: koru.pc gives C and C++ hosts the toolkit's headers and
# libraries and nothing else, so that they compile warning-free;
# koru-objc.pc (Requires: koru) adds what an Objective-C host needs from
# GNUstep.  Neither names a folder of the machine or user that built them:
# GNUstep folders under the builder's home are left out.
# GNUstep's headers are named with -isystem, as in the build, so that a host
# compiling with -Wextra sees its own warnings only.
set(KORU_PC_OBJC_CFLAGS "")
foreach(flag IN LISTS GNUSTEP_OBJC_FLAGS)
  if(DEFINED ENV{HOME} AND NOT "$ENV{HOME}" STREQUAL "/")
    string(FIND "${flag}" "-isystem$ENV{HOME}/" at)
    if(at EQUAL 0)
      continue()
    endif()
  endif()
  list(APPEND KORU_PC_OBJC_CFLAGS "${flag}")
endforeach()
list(REMOVE_DUPLICATES KORU_PC_OBJC_CFLAGS)
list(JOIN KORU_PC_OBJC_CFLAGS " " KORU_PC_OBJC_CFLAGS)
# A host may use the toolkit only through its Objective-C categories and
# so name none of its symbols; a linker that drops unreferenced libraries
# (--as-needed) would then leave libKORU out and the methods missing at run
# time, so libKORU is always kept here.  AppKit (gnustep-gui) and
# Foundation come with it.
set(KORU_PC_OBJC_LIBS
  "-L\${libdir} -Wl,--push-state,--no-as-needed -lKORU -Wl,--pop-state -lgnustep-gui -lgnustep-base -lobjc")

# The prefix is written when the files are installed, as an absolute path,
# so that the run path they hand out works from any folder (${pcfiledir} is
# relative when PKG_CONFIG_PATH is).  The first pass leaves the placeholder
# @KORU_PC_PREFIX@ for the install step to fill in.
set(KORU_PC_PREFIX "@KORU_PC_PREFIX@")
foreach(pc koru koru-objc)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${pc}.pc.in ${PROJECT_BINARY_DIR}/${pc}.pc.in @ONLY)
endforeach()
install(CODE "
  get_filename_component(KORU_PC_PREFIX \"\${CMAKE_INSTALL_PREFIX}\" ABSOLUTE)
  foreach(pc koru koru-objc)
    set(pc_file \"\$ENV{DESTDIR}\${KORU_PC_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig/\${pc}.pc\")
    message(STATUS \"Installing: \${pc_file}\")
    configure_file(\"${PROJECT_BINARY_DIR}/\${pc}.pc.in\" \"\${pc_file}\" @ONLY)
  endforeach()
")
