set(KORU_FUZZ_SOURCES cf/BitFlags.cpp cf/MemoryCipher.cpp)
set(KORU_FUZZ_LIBS OpenSSL::Crypto)
