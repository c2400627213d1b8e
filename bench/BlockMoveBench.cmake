# The benchmark reaches the toolkit only through a category, which references
# no symbol: keep the library the linker would drop as unused.
target_link_options(${KORU_BENCH_TARGET} PRIVATE "LINKER:--no-as-needed")
