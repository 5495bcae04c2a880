#include "RemoteBinder.h"
#include "Session.h"

#include <binder/peer.h>

#include <unistd.h>

#include <map>

pid_t AIBinder_getServerPid(AIBinder* binder) {
    const binder::RemoteBinder* remote = binder->remote();
    return remote == nullptr ? getpid() : remote->session()->peer().pid;
}

void ABinderProcess_forEachPeer(void (*onPeer)(const ABinderProcess_Peer* peer, void* cookie), void* cookie) {
    std::map<pid_t, ABinderProcess_Peer> peers;
    for (const auto& each : binder::Session::all()) {
        ABinderProcess_Peer& peer = peers[each->peer().pid];
        peer.pid = each->peer().pid;
        peer.waitingCalls += each->waitingCalls();
        peer.unreadBytes += each->outbox().unreadBytes();
        peer.undelivered += each->outbox().undelivered();
    }
    for (const auto& [pid, peer] : peers) onPeer(&peer, cookie);
}
