# The transfer tests talk to servers of their own on 127.0.0.1, over TLS too.
find_package(OpenSSL REQUIRED COMPONENTS SSL Crypto)
target_sources(${KORU_TEST_TARGET} PRIVATE ${CMAKE_CURRENT_LIST_DIR}/LoopbackServer.cpp)
target_link_libraries(${KORU_TEST_TARGET} PRIVATE OpenSSL::SSL OpenSSL::Crypto Threads::Threads)
