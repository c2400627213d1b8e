set(KORU_FUZZ_SOURCES platform/CoreServices/Folders.cpp)
set(KORU_FUZZ_LIBS KORUPlatform)
