#include "support/ClipboardAction.h"

#include "localisation/ShowMsg.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <QPixmap>

namespace {
constexpr int kAttempts = 10;

int &blockedAttempts()
{
    static int attempts = 0;
    return attempts;
}

QString mimeType(const QString &format)
{
    return format.isEmpty() ? QStringLiteral("text/plain") : format;
}

// One attempt. Qt does not report a clipboard it could not open (on Windows it gives up
// after its own short retries and only warns), so what was written is read back.
bool attempt(int action, const QVariant &data, const QString &format, QVariant &result)
{
    if (blockedAttempts() > 0) {
        --blockedAttempts();
        return false;
    }
    QClipboard *clipboard = QGuiApplication::clipboard();
    switch (action) {
    case 1: {
        auto *mime = new QMimeData;
        mime->setData(mimeType(format), data.toString().toUtf8());
        if (mimeType(format) == QLatin1String("text/plain"))
            mime->setText(data.toString());
        clipboard->setMimeData(mime);
        const QMimeData *now = clipboard->mimeData();
        result = true;
        return now && now->data(mimeType(format)) == data.toString().toUtf8();
    }
    case 2: {
        const QImage image =
            data.canConvert<QImage>() ? data.value<QImage>() : data.value<QPixmap>().toImage();
        clipboard->setImage(image);
        result = true;
        return clipboard->mimeData() && clipboard->mimeData()->hasImage();
    }
    case 3:
        clipboard->clear();
        result = true;
        return true;
    case 4: {
        const QMimeData *mime = clipboard->mimeData();
        result = mime ? QString::fromUtf8(mime->data(mimeType(format))) : QString();
        return true;
    }
    case 5: {
        const QMimeData *mime = clipboard->mimeData();
        result = mime && mime->hasFormat(mimeType(format));
        return true;
    }
    default:
        result = QVariant();
        return true;
    }
}
} // namespace

QVariant ClipboardAction(int action, const QVariant &data, const QString &format)
{
    QVariant result;
    for (int i = 0; i < kAttempts; ++i) {
        if (attempt(action, data, format, result))
            return result;
    }
    ShowMsg(
        1, QStringLiteral("M85"), 64,
        QStringLiteral("Auf die Zwischenablage kann nicht zugegriffen werden!@@Bitte versuchen Sie es nach "
                       "einer kurzer Pause erneut@oder starten Sie das Programm neu.#Fehler Zwischenablage"));
    return action == 4 ? QVariant(QString()) : QVariant(false);
}

void setClipboardBlockedForTesting(int failingAttempts)
{
    blockedAttempts() = failingAttempts;
}
