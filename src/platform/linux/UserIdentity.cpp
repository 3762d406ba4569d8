#include "platform/UserIdentity.h"

#include <unistd.h>

std::uint32_t currentUserID()
{
    return ::getuid();
}
