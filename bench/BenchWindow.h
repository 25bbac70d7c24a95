#pragma once

#include "app/frmSupportKit.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTest>

// Opens w as the program does and returns the milliseconds from clock's start (taken before w
// was made) until the window is on the screen.
inline double openWindow(frmSupportKit &w, const QElapsedTimer &clock)
{
    if (!w.Form_Load(QStringLiteral("1")))
        qFatal("start-up failed");
    w.show();
    if (!QTest::qWaitForWindowExposed(&w))
        qFatal("window not shown");
    QCoreApplication::processEvents();
    return double(clock.nsecsElapsed()) / 1e6;
}
