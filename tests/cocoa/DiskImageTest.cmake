# DiskImage runs the freshly built disk-image tools, which the library finds
# beside itself in the build folder.
add_dependencies(${KORU_TEST_TARGET} hdiutil-koru hdid-koru)
