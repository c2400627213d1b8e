# The debug switch is decided once per process, so its tests run a probe program.
add_executable(KORUDebugProbe ${CMAKE_CURRENT_LIST_DIR}/DebugProbe.cpp)
target_link_libraries(KORUDebugProbe PRIVATE KORU KORUPlatform)
add_dependencies(${KORU_TEST_TARGET} KORUDebugProbe)
target_compile_definitions(${KORU_TEST_TARGET} PRIVATE
  KORU_DEBUG_PROBE="$<TARGET_FILE:KORUDebugProbe>")
