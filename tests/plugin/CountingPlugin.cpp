// A plugin whose `add` counts how often it is looked up: the loader asks the resolver each time.

namespace {

int sLookups = 0;

int addImpl(int a, int b) {
    return a + b;
}

}  // namespace

extern "C" {

using Add = int (*)(int, int);

Add resolveAdd() {
    ++sLookups;
    return addImpl;
}
int add(int a, int b) __attribute__((ifunc("resolveAdd")));

int lookups() {
    return sLookups;
}

int negate(bool value) {
    return value ? 0 : 1;
}

long askBack(long (*question)(void*), void* context) {
    return question(context);
}
}
