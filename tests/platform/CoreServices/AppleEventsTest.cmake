# A second process that receives events, and a stand-in for the login manager
# on a private D-Bus.
add_executable(AppleEventsPeer ${CMAKE_CURRENT_LIST_DIR}/AppleEventsPeer.m)
target_link_libraries(AppleEventsPeer PRIVATE KORUPlatform)
add_executable(LoginManagerStandIn ${CMAKE_CURRENT_LIST_DIR}/LoginManagerStandIn.c)
target_link_libraries(LoginManagerStandIn PRIVATE PkgConfig::KORU_APPLE_EVENTS)
add_dependencies(${KORU_TEST_TARGET} AppleEventsPeer LoginManagerStandIn)
target_compile_definitions(${KORU_TEST_TARGET} PRIVATE
  KORU_AE_PEER="$<TARGET_FILE:AppleEventsPeer>"
  KORU_LOGIN_STAND_IN="$<TARGET_FILE:LoginManagerStandIn>")
