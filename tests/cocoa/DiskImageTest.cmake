# DiskImage runs the disk-image tools from their installed paths, so the
# tools are installed (alone, into the configured prefix) before it runs.
add_dependencies(${KORU_TEST_TARGET} hdiutil-koru hdid-koru)
add_test(NAME DiskImageToolsInstall
         COMMAND ${CMAKE_COMMAND} --install ${PROJECT_BINARY_DIR} --component DiskImageTools)
set_tests_properties(DiskImageToolsInstall PROPERTIES FIXTURES_SETUP DiskImageTools)
set_tests_properties(${KORU_TEST_TARGET} PROPERTIES FIXTURES_REQUIRED DiskImageTools)
