#pragma once

class QWidget;

// Puts a picture of the active window, frame included, on the clipboard so that the user
// can paste it into a mail to support. window stands in when no window of the program is
// active. True when the picture is on the clipboard.
bool copyScreenshotToClipboard(QWidget *window);
