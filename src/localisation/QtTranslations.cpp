#include "localisation/QtTranslations.h"

#include <QCoreApplication>
#include <QDir>
#include <QLibraryInfo>
#include <QTranslator>

namespace {
// Pawnsketch names its languages after countries where Qt takes language codes.
QString qtLanguage(const QString &code)
{
    const QString lower = code.toLower();
    if (lower == QLatin1String("us") || lower == QLatin1String("uk") || lower == QLatin1String("gb"))
        return QStringLiteral("en");
    return lower;
}
} // namespace

bool useQtTranslation(const QString &code)
{
    static QTranslator *installed = nullptr;
    if (installed) {
        QCoreApplication::removeTranslator(installed);
        delete installed;
        installed = nullptr;
    }
    const QString name = QStringLiteral("qtbase_") + qtLanguage(code);
    const QStringList folders{
        QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("translations")),
        QLibraryInfo::path(QLibraryInfo::TranslationsPath)};
    auto *translator = new QTranslator(QCoreApplication::instance());
    for (const QString &folder : folders) {
        if (translator->load(name, folder)) {
            installed = translator;
            QCoreApplication::installTranslator(installed);
            return true;
        }
    }
    delete translator;
    return false;
}
