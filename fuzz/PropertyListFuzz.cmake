# The parsers live in the platform library (over GNUstep); nothing is
# recompiled, the library's entry points are driven as a host drives them.
set(KORU_FUZZ_LIBS KORUPlatform)
