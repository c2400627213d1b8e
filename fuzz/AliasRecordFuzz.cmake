set(KORU_FUZZ_SOURCES platform/CoreServices/Aliases.cpp)
set(KORU_FUZZ_LIBS KORUPlatform)
