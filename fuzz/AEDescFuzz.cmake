# The descriptor reader and writer are compiled in; coercions come from the library.
set(KORU_FUZZ_SOURCES platform/CoreServices/AEDataModel.cpp)
set(KORU_FUZZ_LIBS KORUPlatform)
