#pragma once

#include <optional>

// The user id of the process at the other end of a connected Unix socket, as the kernel vouches for it.
std::optional<unsigned> peerUid(int socketDescriptor);
