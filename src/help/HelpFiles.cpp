#include "help/HelpFiles.h"

#include "core/ProgramFolder.h"
#include "localisation/IniFile.h"

#include <QFileInfo>

QString helpFilePath(const QString &languageCode)
{
    const QString file = installPath(QStringLiteral("help/pawnsketch_%1.chm").arg(languageCode));
    return QFileInfo(file).isFile() ? file : installPath(QStringLiteral("help/pawnsketch_de.chm"));
}

quint32 helpContextId(const QString &key)
{
    const QString value = ReadIniString(QStringLiteral("ContentID"), key, QString(),
                                        installPath(QStringLiteral("ini/hlpidx.ini")));
    bool number = false;
    const quint32 id = value.trimmed().toUInt(&number);
    return number ? id : 0;
}
