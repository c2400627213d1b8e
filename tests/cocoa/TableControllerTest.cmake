# Real windows and pasteboard; the rows in the user defaults are written and
# read back by a process of their own.
koru_gui_test(${KORU_TEST_TARGET})
add_executable(TableControllerProbe ${CMAKE_CURRENT_LIST_DIR}/TableControllerProbe.m)
target_link_libraries(TableControllerProbe PRIVATE KORU KORUPlatform)
target_link_options(TableControllerProbe PRIVATE "LINKER:--no-as-needed")
add_dependencies(${KORU_TEST_TARGET} TableControllerProbe)
target_compile_definitions(${KORU_TEST_TARGET} PRIVATE TABLE_CONTROLLER_PROBE="$<TARGET_FILE:TableControllerProbe>")
