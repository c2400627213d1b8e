# The probe the cases run as a child process with their own environment.
add_executable(CFLocaleDefaultsProbe ${CMAKE_CURRENT_LIST_DIR}/CFLocaleDefaultsProbe.m)
target_link_libraries(CFLocaleDefaultsProbe PRIVATE KORUPlatform)
add_dependencies(${KORU_TEST_TARGET} CFLocaleDefaultsProbe)
target_compile_definitions(${KORU_TEST_TARGET} PRIVATE
  CF_LOCALE_DEFAULTS_PROBE="$<TARGET_FILE:CFLocaleDefaultsProbe>")
# The probe uses no platform symbol itself: keep the library it tests.
target_link_options(CFLocaleDefaultsProbe PRIVATE "LINKER:--no-as-needed")
