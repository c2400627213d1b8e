# The decoders and data providers are compiled in; CoreFoundation comes from
# the library.
set(KORU_FUZZ_SOURCES platform/CoreGraphics/CGImage.cpp platform/CoreGraphics/CGDataProvider.cpp)
set(KORU_FUZZ_LIBS KORUPlatform png jpeg)
