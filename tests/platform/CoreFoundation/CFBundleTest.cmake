# The bundles' executable, copied into both bundle layouts by the test, and
# a fixed language preference so that the localised look-ups are predictable.
add_library(CFBundleTestPlugin MODULE ${CMAKE_CURRENT_LIST_DIR}/CFBundleTestPlugin.c)
set_target_properties(CFBundleTestPlugin PROPERTIES PREFIX "" SUFFIX ".so")
add_dependencies(${KORU_TEST_TARGET} CFBundleTestPlugin)
target_compile_definitions(${KORU_TEST_TARGET} PRIVATE
  KORU_TEST_PLUGIN="$<TARGET_FILE:CFBundleTestPlugin>")
set_property(TEST ${KORU_TEST_TARGET} APPEND PROPERTY ENVIRONMENT "LANGUAGE=fr:en")

# A library the test links and also loads as a bundle's executable.
add_library(CFBundleTestLibrary SHARED ${CMAKE_CURRENT_LIST_DIR}/CFBundleTestLibrary.c)
target_sources(${KORU_TEST_TARGET} PRIVATE ${CMAKE_CURRENT_LIST_DIR}/CFBundleTestLibraryAddress.c)
target_link_libraries(${KORU_TEST_TARGET} PRIVATE CFBundleTestLibrary)
target_compile_definitions(${KORU_TEST_TARGET} PRIVATE
  KORU_TEST_LIBRARY="$<TARGET_FILE:CFBundleTestLibrary>")
