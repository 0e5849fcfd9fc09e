// A library that tests load at run time.

extern "C" {
__attribute__((visibility("default"))) int zant_test_module_answer();
}

int zant_test_module_answer() {
    return 42;
}
