# The host process the exit-pool cases start and watch until it exits.
add_executable(ExitPoolProbe ${CMAKE_CURRENT_LIST_DIR}/ExitPoolProbe.m ${CMAKE_CURRENT_LIST_DIR}/ExitPoolProbeC.c)
target_link_libraries(ExitPoolProbe PRIVATE KORU KORUPlatform)
add_dependencies(${KORU_TEST_TARGET} ExitPoolProbe)
target_compile_definitions(${KORU_TEST_TARGET} PRIVATE EXIT_POOL_PROBE="$<TARGET_FILE:ExitPoolProbe>")
