# The tools as built, and the platform's mount-table reader for the clean-up.
add_dependencies(${KORU_TEST_TARGET} hdiutil-koru hdid-koru)
target_compile_definitions(${KORU_TEST_TARGET} PRIVATE
  KORU_HDIUTIL="$<TARGET_FILE:hdiutil-koru>" KORU_HDID="$<TARGET_FILE:hdid-koru>")
target_include_directories(${KORU_TEST_TARGET} PRIVATE ${PROJECT_SOURCE_DIR}/platform/CoreServices)
