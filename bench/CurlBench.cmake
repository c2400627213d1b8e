# The benchmark's server is the tests' loopback server.
find_package(OpenSSL REQUIRED COMPONENTS SSL Crypto)
target_sources(${KORU_BENCH_TARGET} PRIVATE ${PROJECT_SOURCE_DIR}/tests/net/LoopbackServer.cpp)
target_include_directories(${KORU_BENCH_TARGET} PRIVATE ${PROJECT_SOURCE_DIR}/tests/net)
target_link_libraries(${KORU_BENCH_TARGET} PRIVATE OpenSSL::SSL OpenSSL::Crypto Threads::Threads)
