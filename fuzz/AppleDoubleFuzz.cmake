set(KORU_FUZZ_SOURCES platform/CoreServices/AppleDouble.cpp)
set(KORU_FUZZ_LIBS KORUPlatform)
