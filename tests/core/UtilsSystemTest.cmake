# The probe the locale cases run as a child process with their own environment.
add_executable(UtilsSystemProbe ${CMAKE_CURRENT_LIST_DIR}/UtilsSystemProbe.cpp)
target_link_libraries(UtilsSystemProbe PRIVATE KORU KORUPlatform)
add_dependencies(${KORU_TEST_TARGET} UtilsSystemProbe)
target_compile_definitions(${KORU_TEST_TARGET} PRIVATE
  UTILS_SYSTEM_PROBE="$<TARGET_FILE:UtilsSystemProbe>")
