#include "core/Locale.h"
#include "core/Platform.h"

#include <QDir>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>

// Windows's own answers, checked against what Qt reads from the system by other ways.
class TestWindowsPlatform : public QObject
{
    Q_OBJECT

    const std::unique_ptr<Platform> m_native = createNativePlatform();

private slots:
    // The locale's calling code as text, without the terminating NUL of the API.
    void countryCode()
    {
        const QString code = m_native->countryCode();
        QVERIFY2(QRegularExpression(QStringLiteral("^[0-9]{1,3}$")).match(code).hasMatch(), qPrintable(code));
        const QString expected = countryCallingCode(QLocale::system().territory());
        if (!expected.isEmpty())
            QCOMPARE(code, expected);
    }

    void specialFolder_data()
    {
        QTest::addColumn<Platform::SpecialFolder>("kind");
        QTest::addColumn<QString>("expected");
        const auto standard = [](QStandardPaths::StandardLocation location) {
            return QStandardPaths::writableLocation(location);
        };
        QTest::newRow("fonts") << Platform::SpecialFolder::Fonts << standard(QStandardPaths::FontsLocation);
        QTest::newRow("desktop") << Platform::SpecialFolder::Desktop
                                 << standard(QStandardPaths::DesktopLocation);
        QTest::newRow("documents") << Platform::SpecialFolder::Documents
                                   << standard(QStandardPaths::DocumentsLocation);
        // The roaming application data, where Windows itself points APPDATA.
        QTest::newRow("application data") << Platform::SpecialFolder::AppData
                                          << QDir::fromNativeSeparators(qEnvironmentVariable("APPDATA"));
    }

    void specialFolder()
    {
        QFETCH(Platform::SpecialFolder, kind);
        QFETCH(QString, expected);
        QVERIFY(!expected.isEmpty());
        const QString folder = m_native->specialFolder(kind);
        QVERIFY2(QDir(folder).isAbsolute() && !folder.contains(u'\\'), qPrintable(folder));
        QCOMPARE(QDir::cleanPath(folder).toLower(), QDir::cleanPath(expected).toLower());
    }
};

QTEST_GUILESS_MAIN(TestWindowsPlatform)
#include "tst_windowsplatform.moc"
