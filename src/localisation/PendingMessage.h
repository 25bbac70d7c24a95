#pragma once

#include <QString>

// A message prepared by code that cannot show it itself (it runs before the window
// exists or in the middle of a network operation); the caller shows it with ShowMsg.
struct PendingMessage
{
    QString text; // complete message text: "message#title"
    int style = 0;
    bool isSet() const { return !text.isEmpty(); }
    void clear() { text.clear(), style = 0; }
};

PendingMessage &pendingMessage();
