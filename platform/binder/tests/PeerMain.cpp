// The other process of the tests. `serve NAME`: publishes an Echo; `single NAME`: with one thread. `lend NAME`: hands
// one to the service and waits.

#include "binder/tests/Echo.h"

#include <android/binder_process.h>

#include <signal.h>
#include <sys/prctl.h>

#include <cstdio>
#include <cstring>

int main(int count, char** arguments) {
    if (count != 3) return 2;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const bool isSingle = strcmp(arguments[1], "single") == 0;
    ABinderProcess_setThreadPoolMaxThreadCount(4);
    if (!isSingle) ABinderProcess_startThreadPool();
    const ndk::SpAIBinder own = test::newEcho(new test::Echo);
    const char* const name = arguments[2];
    if (isSingle || strcmp(arguments[1], "serve") == 0) {
        if (AServiceManager_addService(own.get(), name) != EX_NONE) return 3;
    } else if (test::keep(test::service(name), own) != STATUS_OK) {
        return 4;
    }
    puts("ready");
    fflush(stdout);
    ABinderProcess_joinThreadPool();
}
