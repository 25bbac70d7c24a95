#include "app/frmSupportKit.h"
#include "gui/GuiFixture.h"
#include "testsupport/FakePlatform.h"

#include <QtTest>
#include <QtWidgets>

namespace {
// A fontconfig of the test's own, set before the application reads any font: a "system"
// folder with one chess font under its own name and once under another file name, the
// user's font folder and caches in a temporary folder. The user's real fonts stay unseen.
QTemporaryDir &fontSetup()
{
    static QTemporaryDir dir;
    return dir;
}

void prepareFonts()
{
    QTemporaryDir &dir = fontSetup();
    const QString shipped = TestSupport::sourceDir() + QStringLiteral("/demo/install/fonts/pwkdiagr.ttf");
    QDir().mkpath(dir.filePath("system"));
    QFile::copy(shipped, dir.filePath("system/pwkdiagr.ttf"));
    QFile::copy(shipped, dir.filePath("system/other.ttf"));
    QFile conf(dir.filePath("fonts.conf"));
    if (!conf.open(QIODevice::WriteOnly))
        qFatal("cannot write fonts.conf");
    conf.write(QStringLiteral("<?xml version=\"1.0\"?>\n<fontconfig>\n<dir>%1</dir>\n"
                              "<dir prefix=\"xdg\">fonts</dir>\n<cachedir>%2</cachedir>\n</fontconfig>\n")
                   .arg(dir.filePath("system"), dir.filePath("cache"))
                   .toUtf8());
    conf.close();
    qputenv("FONTCONFIG_FILE", QFile::encodeName(conf.fileName()));
    qputenv("XDG_DATA_HOME", QFile::encodeName(dir.filePath("data")));
    qputenv("XDG_CACHE_HOME", QFile::encodeName(dir.filePath("xdgcache")));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(dir.filePath("config")));
}
Q_CONSTRUCTOR_FUNCTION(prepareFonts)
} // namespace

using GuiFixture::control;

// The fonts page against that set-up: a usable font, one present but unknown by name, two
// absent of which one ships with Pawnsketch; installing, copying and mailing the result.
class TestFontsPage : public QObject
{
    Q_OBJECT

    QList<ShownMessage> m_messages;
    FakePlatform m_platform;

    std::unique_ptr<QTemporaryDir> m_install;

    static QString text(QWidget &w, const char *label) { return control<QLabel>(w, label)->text(); }
    static QString plain(QWidget &w, const char *box)
    {
        return control<QPlainTextEdit>(w, box)->toPlainText();
    }

private slots:
    void initTestCase()
    {
#ifdef Q_OS_WIN
        QSKIP("fonts are set up through fontconfig here; Windows has its own fonts folder");
#endif
    }
    void init()
    {
        GuiFixture::resetProgram(m_messages);
        m_platform = FakePlatform();
        QGuiApplication::clipboard()->clear();
        m_install = std::make_unique<QTemporaryDir>();
    }
    // The demo installation with this font list (and settings, unless empty), checked on the
    // fonts page.
    void check(frmSupportKit &w, const QByteArray &list, const QByteArray &ini = {})
    {
        QVERIFY(GuiFixture::makeInstallation(m_install->path()));
        QVERIFY(GuiFixture::writeFile(m_install->filePath("ini/chessfonts.ini"), list));
        QVERIFY(ini.isEmpty() || GuiFixture::writeFile(m_install->filePath("ini/pawnsketch.ini"), ini));
        QVERIFY(w.Form_Load("/e"));
        control<QPushButton>(w, "Command5")->click();
    }

    void checkInstallReport()
    {
        PlatformOverride use(m_platform);
        frmSupportKit w;
        check(w,
              "; Name;Datei\r\nPawnsketch Diagramm;pwkdiagr.ttf\r\n\r\nPawnsketch Anders;other.ttf;x\r\n"
              "Pawnsketch Figurine;pwkfigur.ttf\r\nPawnsketch Fehlt;pwkfehlt.ttf\r\n",
              "[Fonts]\r\nSeparator=59\r\n");
        auto *install_ = control<QPushButton>(w, "btnInstall");
        QCOMPARE(text(w, "Label21") + text(w, "Label17") + text(w, "Label14"), QString("432"));
        QCOMPARE(plain(w, "tbMissingFonts"), "Pawnsketch Anders\nPawnsketch Figurine\nPawnsketch Fehlt");
        QCOMPARE(plain(w, "tbInstalledFonts"), "Pawnsketch Figurine\nPawnsketch Fehlt");
        QVERIFY(install_->isEnabled() && control<QPushButton>(w, "btnCopyResult")->isEnabled());
        // The first font is selected, and with it its file among the fonts folders' files.
        const QListWidgetItem *file = control<QListWidget>(w, "lstWinFonts")->currentItem();
        QVERIFY(file && file->text() == "pwkdiagr.ttf");
        QVERIFY(text(w, "Label22").toInt() >= 1);

        install_->click();
        QCOMPARE(m_messages.size(), 1);
        QCOMPARE(m_messages[0].message + u'#' + m_messages[0].title,
                 "1 Font[s] wurde[n] installiert!#Font-Installation");
        QVERIFY(QFile::exists(fontSetup().filePath("data/fonts/pwkfigur.ttf")));
        QVERIFY(!QDir(fontSetup().filePath("cache")).isEmpty());
        QCOMPARE(text(w, "Label17") + text(w, "Label14"), QString("21"));
        QCOMPARE(plain(w, "tbMissingFonts"), "Pawnsketch Anders\nPawnsketch Fehlt");
        // Nothing left that ships: no message at all.
        install_->click();
        QCOMPARE(m_messages.size(), 1);

        control<QPushButton>(w, "btnCopyResult")->click();
        QCOMPARE(QGuiApplication::clipboard()->text(), "Pawnsketch Anders\r\nPawnsketch Fehlt");
        control<QPushButton>(w, "btnSendMissingFonts")->click();
        QCOMPARE(m_platform.mailtoAddresses.size(), 1);
        QVERIFY(m_platform.mailtoAddresses[0].contains("?Subject=Pawnsketch: Missing Fonts&Body="));
    }

    // Every font usable: nothing to report, nothing to press.
    void allUsable()
    {
        PlatformOverride use(m_platform);
        frmSupportKit w;
        check(w, "Pawnsketch Diagramm\tpwkdiagr.ttf\r\n");
        QCOMPARE(text(w, "Label21") + text(w, "Label17") + text(w, "Label14"), QString("100"));
        QVERIFY(plain(w, "tbMissingFonts").isEmpty() && plain(w, "tbInstalledFonts").isEmpty());
        QVERIFY(!control<QPushButton>(w, "btnCopyResult")->isEnabled() &&
                !control<QPushButton>(w, "btnSendMissingFonts")->isEnabled());
    }
};

QTEST_MAIN(TestFontsPage)
#include "tst_fontspage.moc"
