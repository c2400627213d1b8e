koru_gui_test(${KORU_TEST_TARGET})
