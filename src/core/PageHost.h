#pragma once

#include <QString>

// What a page of the main window may ask of the window it sits in. The window creates
// the pages with itself as host; a page never reaches into another page or the window's
// controls, and the window never into a page's.
class PageHost
{
public:
    virtual ~PageHost() = default;

    // Shows a page (a tab number) as a click on its entry in the page list would.
    virtual void showPage(int tab) = 0;
    // The program file or the files around it changed: every status label is read again.
    virtual void refreshStatus() = 0;
    // A page tested the connection: the internet button shows the outcome.
    virtual void showConnectionState(bool connected) = 0;
    // The "#"-separated captions of the current language ("Start-Logdatei#...").
    virtual QString labelList() const = 0;
    // The localised word behind the character counters ("Zeichen").
    virtual QString counterUnit() const = 0;
};
