# The demo application, started under the test's display.
koru_gui_test(${KORU_TEST_TARGET})
add_dependencies(${KORU_TEST_TARGET} koru-demo)
target_compile_definitions(${KORU_TEST_TARGET} PRIVATE KORU_DEMO_PATH="$<TARGET_FILE:koru-demo>")
