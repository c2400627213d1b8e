koru_gui_test(${KORU_TEST_TARGET})
# The demo's strip, tested in a window of the test's own.
target_sources(${KORU_TEST_TARGET} PRIVATE ${PROJECT_SOURCE_DIR}/tools/koru-demo/DemoExtras.m)
target_include_directories(${KORU_TEST_TARGET} PRIVATE ${PROJECT_SOURCE_DIR}/tools/koru-demo)
