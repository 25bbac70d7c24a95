#include "localisation/PendingMessage.h"

PendingMessage &pendingMessage()
{
    static PendingMessage message;
    return message;
}
