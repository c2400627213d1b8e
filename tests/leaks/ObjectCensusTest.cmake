# The table controller's commands run on a real table in a real window.
koru_gui_test(${KORU_TEST_TARGET})
