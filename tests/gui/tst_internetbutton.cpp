#include "GuiFixture.h"
#include "app/frmSelectAction.h"
#include "app/frmSupportKit.h"
#include "core/ProgramFolder.h"
#include "core/ProgramState.h"
#include "localisation/LanguageState.h"
#include "localisation/ShowMsg.h"
#include "net/NetTestServer.h"
#include "testsupport/TestSupport.h"

#include "pewriter/PeWriter.h"

#include "ui_frmSelectAction.h"
#include "ui_frmSupportKit.h"

#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

class TestInternetButton : public QObject
{
    Q_OBJECT

    QTemporaryDir m_install;
    QTemporaryDir m_served;
    NetTestServer m_server;
    QList<ShownMessage> m_messages;

    void serve(const QString &name, const QByteArray &content)
    {
        QFile f(m_served.filePath(name));
        QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(content);
    }

    QString picture(frmSupportKit &w) { return w.form()->cmdInet->property("picture").toString(); }
    bool isRed(frmSupportKit &w) { return w.form()->lblBuild_0->styleSheet().contains("255, 0, 0"); }

private slots:
    void initTestCase()
    {
        // German texts, so that the messages read as their defaults.
        QVERIFY(GuiFixture::makeInstallation(m_install.path()));
        QVERIFY2(m_server.startFileServer(m_served.path()), qPrintable(m_server.error()));
        qputenv("SUPPORTKIT_WEBSITE_URL", "http://www.example.invalid/");
    }

    void init()
    {
        GuiFixture::resetProgram(m_messages);
        serve("version.txt", "version=13.2 Build 2210\n");
        serve("downloads.ini", "[Downloads]\r\npawnsketch.exe=13.2 Build 2210\r\n");
        qputenv("SUPPORTKIT_VERSION_URL", m_server.url().toUtf8());
    }

    void startupChecksDoNotHoldTheWindow()
    {
        frmSupportKit w;
        QVERIFY(w.Form_Load("1"));
        // The window appears before the server has answered.
        QCOMPARE(picture(w), QString("www_unconnected"));
        QVERIFY(w.networkChecksRunning());
        w.show();
        QTRY_VERIFY_WITH_TIMEOUT(!w.networkChecksRunning(), 20000);
        QCOMPARE(picture(w), QString("www_connected"));
        QCOMPARE(w.form()->lblBuild_0->text(), QString("13.2 Build 2209"));
        QCOMPARE(w.form()->lblBuild_1->text(), QString("13.2 Build 2210"));
        QVERIFY(isRed(w));
        QVERIFY(m_messages.isEmpty());
    }

    void checksGoOnWhileTheActionDialogIsOpen()
    {
        frmSupportKit::setActionDialogAnswererForTesting([](frmSelectAction &d) {
            d.show();
            QTest::qWait(300); // the user reads the dialog while the checks run
            d.form()->Command->click();
        });
        frmSupportKit w;
        QVERIFY(w.Form_Load(QString()));
        frmSupportKit::setActionDialogAnswererForTesting({});
        w.show();
        QTRY_VERIFY_WITH_TIMEOUT(!w.networkChecksRunning(), 20000);
        QCOMPARE(picture(w), QString("www_connected"));
        QCOMPARE(w.form()->lblBuild_1->text(), QString("13.2 Build 2210"));
    }

    void sameVersionIsNotRed()
    {
        serve("version.txt", "v=13.2 Build 2209\n");
        frmSupportKit w;
        QVERIFY(w.Form_Load("1"));
        QTRY_VERIFY_WITH_TIMEOUT(!w.networkChecksRunning(), 20000);
        QCOMPARE(w.form()->lblBuild_1->text(), QString("13.2 Build 2209"));
        QVERIFY(!isRed(w));
    }

    void buttonWithConnectionChecksForUpdateSilently()
    {
        frmSupportKit w;
        QVERIFY(w.Form_Load("1"));
        QTRY_VERIFY_WITH_TIMEOUT(!w.networkChecksRunning(), 20000);
        serve("version.txt", "version=13.3 Build 1\n");
        w.form()->cmdInet->click();
        QCOMPARE(picture(w), QString("www_connected"));
        QCOMPARE(w.form()->lblBuild_1->text(), QString("13.3 Build 1"));
        QVERIFY(m_messages.isEmpty());
    }

    void buttonWithoutConnectionTellsTheUser_data()
    {
        QTest::addColumn<bool>("serverDown");
        QTest::newRow("no server") << true;
        QTest::newRow("empty download list") << false;
    }
    void buttonWithoutConnectionTellsTheUser()
    {
        QFETCH(bool, serverDown);
        if (serverDown)
            qputenv("SUPPORTKIT_VERSION_URL",
                    QByteArray("http://127.0.0.1:") + QByteArray::number(closedPort()));
        else
            serve("downloads.ini", "");
        frmSupportKit w;
        QVERIFY(w.Form_Load("1"));
        QTRY_VERIFY_WITH_TIMEOUT(!w.networkChecksRunning(), 20000);
        QCOMPARE(picture(w), QString("www_disconnected"));
        QVERIFY(m_messages.isEmpty());
        w.form()->cmdInet->click();
        QCOMPARE(picture(w), QString("www_disconnected"));
        QCOMPARE(m_messages.size(), 1);
        QCOMPARE(m_messages[0].key, QString("M189"));
        QCOMPARE(m_messages[0].style, 48);
        QCOMPARE(m_messages[0].message,
                 QString("Eine Internetverbindung zu:\rhttp://www.example.invalid/\rkonnte nicht hergestellt "
                         "werden!"));
        QCOMPARE(m_messages[0].title, QString("Verbindungstest fehlgeschlagen"));
        QCOMPARE(m_messages[0].owner, &w);
        QVERIFY(w.form()->cmdInet->isEnabled());
    }
};

QTEST_MAIN(TestInternetButton)
#include "tst_internetbutton.moc"
