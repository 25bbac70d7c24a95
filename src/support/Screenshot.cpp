#include "support/Screenshot.h"

#include "core/Platform.h"
#include "support/ClipboardAction.h"

#include <QApplication>
#include <QCoreApplication>
#include <QScreen>
#include <QWidget>
#include <QWindow>

bool copyScreenshotToClipboard(QWidget *window)
{
    if (platform().sendSnapshotKeys()) {
        // The system copies the window when it handles the keys.
        QCoreApplication::processEvents();
        return true;
    }
    QWidget *active = QApplication::activeWindow() ? QApplication::activeWindow() : window;
    if (!active)
        return false;
    QScreen *screen = active->screen();
    const QRect frame = active->frameGeometry();
    // From the screen, so that the frame and anything on top are in the picture as the
    // user sees them; where the screen cannot be read, the window draws itself.
    QPixmap picture =
        screen ? screen->grabWindow(0, frame.x(), frame.y(), frame.width(), frame.height()) : QPixmap();
    if (picture.isNull())
        picture = active->grab();
    return ClipboardAction(2, picture).toBool();
}
