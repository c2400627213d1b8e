set(KORU_FUZZ_SOURCES core/Utils.cpp)
set(KORU_FUZZ_LIBS KORU KORUPlatform)
