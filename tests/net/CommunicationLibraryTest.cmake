# IsConnectionUp probes the loopback interface here instead of the build's
# public web site: the test program supplies its own probe URL.
target_sources(${KORU_TEST_TARGET} PRIVATE ${CMAKE_CURRENT_LIST_DIR}/LoopbackProbe.cpp)
target_include_directories(${KORU_TEST_TARGET} PRIVATE ${PROJECT_SOURCE_DIR}/net)
