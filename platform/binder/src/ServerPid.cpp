#include "RemoteBinder.h"
#include "Session.h"

#include <binder/peer.h>

#include <unistd.h>

pid_t AIBinder_getServerPid(AIBinder* binder) {
    const binder::RemoteBinder* remote = binder->remote();
    return remote == nullptr ? getpid() : remote->session()->peer().pid;
}
