// What the tests open: with UNRESOLVED, a library that no loader can open.
extern "C" int missingFunction();

extern "C" int answer() {
#ifdef UNRESOLVED
    return missingFunction();
#else
    return 42;
#endif
}
