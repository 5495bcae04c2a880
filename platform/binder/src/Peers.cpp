#include "RemoteBinder.h"
#include "Session.h"

#include <binder/peer.h>

#include <unistd.h>

pid_t AIBinder_getServerPid(AIBinder* binder) {
    const binder::RemoteBinder* remote = binder->remote();
    return remote == nullptr ? getpid() : remote->session()->peer().pid;
}

void ABinderProcess_forEachPeer(void (*onPeer)(const ABinderProcess_Peer* peer, void* cookie), void* cookie) {
    for (const auto& each : binder::Session::all()) {
        const ABinderProcess_Peer peer{each->peer().pid, each->waitingCalls(), each->outbox().unreadBytes(),
                                       each->outbox().undelivered()};
        onPeer(&peer, cookie);
    }
}
