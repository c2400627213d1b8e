set(KORU_FUZZ_SOURCES platform/CoreServices/MountTable.cpp)
