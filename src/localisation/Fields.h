#pragma once

#include <QString>

// The n-th field (1-based) of text split at separator; "" beyond the last field.
QString GetField(const QString &text, int n, const QString &separator);
