#pragma once

#include <QString>

#include <functional>

// A proxy that asks for a password: the user is asked once per run (the window installs a
// dialog, tests an answer of their own). Qt keeps what was given for the proxy; when it is
// refused again, or the user cancelled, the transfer ends with the proxy's 407.
struct ProxyCredentials
{
    bool given = false; // false: cancelled
    QString user;
    QString password;
};
using ProxyPrompt = std::function<ProxyCredentials(const QString &proxy)>;
void setProxyPrompt(ProxyPrompt prompt);

// Whether the prompt is open: the user's typing is not the server's silence.
bool proxyPromptOpen();
// The next 407 asks again (tests).
void resetProxyPromptForTesting();
