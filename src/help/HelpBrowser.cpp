#include "help/HelpBrowser.h"

#include "core/TextFile.h"

#include <QTextDocument>

HelpBrowser::HelpBrowser(QWidget *parent) : QTextBrowser(parent)
{
    // Links are followed by the help window, which keeps them inside the help file.
    setOpenLinks(false);
    setOpenExternalLinks(false);
}

QVariant HelpBrowser::loadResource(int type, const QUrl &name)
{
    if (!m_reader || name.scheme() != QLatin1String("chm"))
        return {};
    const QByteArray bytes = m_reader(name.path());
    if (bytes.isEmpty())
        return {};
    if (type == QTextDocument::HtmlResource || type == QTextDocument::StyleSheetResource)
        return decodeInstallationText(bytes);
    return bytes;
}
