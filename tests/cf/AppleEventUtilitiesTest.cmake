# The second process and the stand-in login manager are built beside the
# platform's Apple-event test (tests/platform/CoreServices/AppleEventsTest.cmake).
add_dependencies(${KORU_TEST_TARGET} AppleEventsPeer LoginManagerStandIn)
target_compile_definitions(${KORU_TEST_TARGET} PRIVATE
  KORU_AE_PEER="$<TARGET_FILE:AppleEventsPeer>"
  KORU_LOGIN_STAND_IN="$<TARGET_FILE:LoginManagerStandIn>")
