// A module with one function that tests look for.
extern "C" __attribute__((visibility("default"))) int answer() { return 42; }
