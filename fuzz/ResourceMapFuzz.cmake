set(KORU_FUZZ_SOURCES platform/CoreServices/ResourceMap.cpp)
set(KORU_FUZZ_LIBS KORUPlatform)
