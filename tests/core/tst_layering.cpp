#include "testsupport/TestSupport.h"

#include <QtTest>

// Includes run one way: app on top, then the subsystems in a fixed order, then
// localisation, then core. A lower folder never includes a higher one, and a form's
// generated header is included only by the form's own class.
class TestLayering : public QObject
{
    Q_OBJECT

    static int rank(const QString &folder)
    {
        static const QStringList order =
            QStringLiteral("core localisation net dialogs help support maintenance fonts app").split(u' ');
        return int(order.indexOf(folder));
    }

private slots:
    void includesRunOneWay()
    {
        const QString src = TestSupport::sourceDir() + QStringLiteral("/src");
        static const QRegularExpression include(QStringLiteral("^\\s*#\\s*include\\s+\"([^\"]+)\""),
                                                QRegularExpression::MultilineOption);
        QStringList violations;
        int files = 0;
        QDirIterator it(src, {QStringLiteral("*.h"), QStringLiteral("*.cpp")}, QDir::Files,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            const QString relative = QDir(src).relativeFilePath(path);
            const QString folder = relative.section(u'/', 0, 0);
            if (!relative.contains(u'/'))
                continue; // main.cpp stands above everything
            QVERIFY2(rank(folder) >= 0, qPrintable(QStringLiteral("unknown folder ") + folder));
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadOnly));
            ++files;
            const QString text = QString::fromUtf8(file.readAll());
            for (auto match = include.globalMatch(text); match.hasNext();) {
                const QString target = match.next().captured(1);
                const QString base = QFileInfo(path).completeBaseName();
                if (target.startsWith(QLatin1String("ui_"))) {
                    if (target != QStringLiteral("ui_%1.h").arg(base))
                        violations << relative + QStringLiteral(" -> ") + target;
                    continue;
                }
                const QString targetFolder = target.section(u'/', 0, 0);
                if (!target.contains(u'/') || rank(targetFolder) < 0)
                    continue; // generated headers of the folder itself
                if (rank(targetFolder) > rank(folder))
                    violations << relative + QStringLiteral(" -> ") + target;
            }
        }
        QVERIFY(files > 20);
        QVERIFY2(violations.isEmpty(), qPrintable(violations.join(QStringLiteral("\n"))));
    }
};

QTEST_GUILESS_MAIN(TestLayering)
#include "tst_layering.moc"
