// A plugin that can't be opened: it needs what no library has.

extern "C" int missingFromEveryLibrary();

extern "C" int callMissing() {
    return missingFromEveryLibrary();
}
