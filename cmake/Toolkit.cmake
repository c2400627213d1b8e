# The toolkit library KORU and the KORU bundle around the same binary.
koru_glob_sources(toolkit_sources
  ${PROJECT_SOURCE_DIR}/core ${PROJECT_SOURCE_DIR}/diag ${PROJECT_SOURCE_DIR}/files
  ${PROJECT_SOURCE_DIR}/net ${PROJECT_SOURCE_DIR}/cf ${PROJECT_SOURCE_DIR}/cocoa)

add_library(KORU SHARED ${toolkit_sources} ${PROJECT_SOURCE_DIR}/cmake/Banner.c)
# Installed, the library finds the platform library beside it through its
# own run path: a host's run path does not serve its libraries'
# dependencies.  Loaded as the bundle's executable (a link in KORU.bundle/),
# its $ORIGIN is the bundle folder, hence the second entry.
set_target_properties(KORU PROPERTIES
  VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
  INSTALL_RPATH "$ORIGIN;$ORIGIN/..")
target_include_directories(KORU PUBLIC
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_link_libraries(KORU
  PUBLIC KORUPlatform
  PRIVATE OpenSSL::Crypto CURL::libcurl Threads::Threads ${CMAKE_DL_LIBS})

# KORU::KORUObjC: what koru-objc.pc gives an Objective-C host, the toolkit
# with GNUstep's Objective-C flags (KORU::KORU alone carries them for
# Objective-C sources too).  libKORU stays linked even when the host names
# none of its symbols and uses only its categories, which a linker dropping
# unreferenced libraries (--as-needed) would otherwise leave out.  It is named
# in one link option of its own, which no merging of the host's library list
# (a host linking KORU::KORU too) can move away from its --no-as-needed.
# GNUstep::Gui gives the host AppKit and Foundation.
add_library(KORUObjC INTERFACE)
target_link_libraries(KORUObjC INTERFACE KORU GNUstep::Gui)
set(koru_linker_file
  "$<BUILD_INTERFACE:$<TARGET_LINKER_FILE:KORU>>$<INSTALL_INTERFACE:$<INSTALL_PREFIX>/${CMAKE_INSTALL_LIBDIR}/${CMAKE_SHARED_LIBRARY_PREFIX}KORU${CMAKE_SHARED_LIBRARY_SUFFIX}>")
target_link_options(KORUObjC INTERFACE
  "LINKER:--push-state,--no-as-needed,${koru_linker_file},--pop-state")
install(TARGETS KORUObjC EXPORT KORUTargets)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/KORU
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(TARGETS KORU EXPORT KORUTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})

# KORU.bundle in GNUstep's flattened layout: Resources/Info-gnustep.plist
# names the executable, and the executable is a link to the installed
# library, so linking and loading at run time share one binary and one copy
# of the toolkit's state.
set(KORU_BUNDLE_INFO ${PROJECT_BINARY_DIR}/Info-gnustep.plist)
configure_file(${PROJECT_SOURCE_DIR}/cmake/Info-gnustep.plist.in ${KORU_BUNDLE_INFO} @ONLY)

set(KORU_BUILD_BUNDLE ${PROJECT_BINARY_DIR}/KORU.bundle)
add_custom_command(TARGET KORU POST_BUILD
  COMMAND ${CMAKE_COMMAND} -E make_directory ${KORU_BUILD_BUNDLE}/Resources
  COMMAND ${CMAKE_COMMAND} -E copy_if_different ${KORU_BUNDLE_INFO}
          ${KORU_BUILD_BUNDLE}/Resources/Info-gnustep.plist
  COMMAND ${CMAKE_COMMAND} -E create_symlink $<TARGET_FILE:KORU> ${KORU_BUILD_BUNDLE}/KORU
  VERBATIM)

install(FILES ${KORU_BUNDLE_INFO} DESTINATION ${CMAKE_INSTALL_LIBDIR}/KORU.bundle/Resources)
install(CODE "
  set(bundle \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/KORU.bundle\")
  file(MAKE_DIRECTORY \"\${bundle}\")
  file(CREATE_LINK ../libKORU.so.${PROJECT_VERSION_MAJOR} \"\${bundle}/KORU\" SYMBOLIC)
")

# The web site CommunicationLibrary::IsConnectionUp probes: plain HTTP, a
# public server that is always there.
set(KORU_CONNECTION_PROBE_URL "http://www.apple.com/" CACHE STRING
    "Plain-HTTP URL whose host CommunicationLibrary::IsConnectionUp checks for reachability")
set_property(SOURCE ${PROJECT_SOURCE_DIR}/net/ConnectionProbe.cpp APPEND PROPERTY
  COMPILE_DEFINITIONS "KORU_CONNECTION_PROBE_URL=\"${KORU_CONNECTION_PROBE_URL}\"")

# DiskImage runs the disk-image tools from where `cmake --install` puts them.
target_compile_definitions(KORU PRIVATE
  KORU_DISK_IMAGE_EDITOR_PATH="${CMAKE_INSTALL_FULL_BINDIR}/hdiutil-koru"
  KORU_DISK_IMAGE_MOUNTER_PATH="${CMAKE_INSTALL_FULL_BINDIR}/hdid-koru")
