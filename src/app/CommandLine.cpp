#include "app/CommandLine.h"

#include "localisation/Fields.h"

bool GetCommandItems(const QString &commandLine, QStringList &items)
{
    items.clear();
    QString line = commandLine;
    while (line.contains(QLatin1String("  ")))
        line.replace(QLatin1String("  "), QLatin1String(" "));
    if (line.endsWith(u' '))
        line.chop(1);
    // A leading blank would give an empty first item, which no caller can use.
    if (line.startsWith(u' '))
        line.remove(0, 1);
    if (line.isEmpty())
        return true;
    items = line.split(u' ');
    return false;
}

ErrorRecord parseErrorRecord(const QString &record)
{
    ErrorRecord result;
    const QStringList fields = record.split(u'@');
    for (const QString &field : fields) {
        const qsizetype eq = field.indexOf(u'=');
        const QString key = eq < 0 ? QString() : field.left(eq).trimmed();
        const QString value = eq < 0 ? field : field.mid(eq + 1);
        if (key.compare(QLatin1String("user"), Qt::CaseInsensitive) == 0) {
            result.userName = value;
        } else if (!field.isEmpty() && result.values.size() < 4) {
            result.values.append(value);
        }
    }
    return result;
}

QString errorRecordText(const ErrorRecord &record, const QString &labelList)
{
    // Positions in the label list: error number, error text, module, parameter -
    // the order in which Pawnsketch writes its record.
    static constexpr int kCaptionItems[4] = {4, 5, 9, 6};
    QStringList lines;
    for (qsizetype i = 0; i < record.values.size() && i < 4; ++i)
        lines.append(GetField(labelList, kCaptionItems[i], QStringLiteral("#")) + u' ' + record.values[i]);
    return lines.join(QLatin1String("\r\n"));
}
