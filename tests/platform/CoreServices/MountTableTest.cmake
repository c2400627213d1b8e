# The mount table is internal to the platform library.
target_include_directories(${KORU_TEST_TARGET} PRIVATE ${PROJECT_SOURCE_DIR}/platform/CoreServices)
