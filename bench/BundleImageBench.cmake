# GNUstep's own image loading is the other side.
target_link_libraries(${KORU_BENCH_TARGET} PRIVATE GNUstep::Gui)
