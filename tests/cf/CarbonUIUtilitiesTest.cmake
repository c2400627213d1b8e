koru_gui_test(${KORU_TEST_TARGET})
# The interface file the main-bundle calls look for, among the resources of
# the test program's bundle (GNUstep gives a tool the bundle
# Resources/<tool> beside it).
file(COPY ${CMAKE_CURRENT_SOURCE_DIR}/platform/HIToolbox/TestBundle/Resources/main.xib
     DESTINATION ${CMAKE_CURRENT_BINARY_DIR}/Resources/${KORU_TEST_TARGET}/Resources)
