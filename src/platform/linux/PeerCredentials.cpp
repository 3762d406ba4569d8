#include "platform/PeerCredentials.h"

#include <sys/socket.h>

std::optional<unsigned> peerUid(int socketDescriptor)
{
    struct ucred credentials { };
    socklen_t length = sizeof credentials;
    if (::getsockopt(socketDescriptor, SOL_SOCKET, SO_PEERCRED, &credentials, &length) != 0)
        return std::nullopt;
    return credentials.uid;
}
