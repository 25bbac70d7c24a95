#pragma once

#include <QString>

// Texts the support pages share, each from its language key with the German default.

// Tool tip of every send button; "<var1>" stands for what the button sends.
QString sendButtonTip();
// The hint below the report: what to do when no new mail window opens.
QString mailHint();
