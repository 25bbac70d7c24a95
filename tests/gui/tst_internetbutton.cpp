#include "GuiFixture.h"
#include "app/frmSelectAction.h"
#include "app/frmSupportKit.h"
#include "net/HttpTestServer.h"
#include "testsupport/FakePlatform.h"
#include "testsupport/TestSigning.h"

#include "ui_frmSelectAction.h"
#include "ui_frmSupportKit.h"

#include <QtNetwork>
#include <QtTest>
#include <QtWidgets>

class TestInternetButton : public QObject
{
    Q_OBJECT

    QTemporaryDir m_install;
    HttpTestServer m_server;
    QTcpServer m_silent; // accepts connections and never answers
    QList<ShownMessage> m_messages;
    FakePlatform m_platform; // a network is there, whatever the machine has
    PlatformOverride m_override{m_platform};

    // Served signed for the version it names ("signedAs" when given).
    void serve(const QString &name, const QByteArray &content, const QString &signedAs = {})
    {
        HttpTestServer::Resource resource;
        resource.body = content;
        m_server.setResource(QLatin1Char('/') + name, resource);
        const QByteArray named = content.mid(content.indexOf('=') + 1).split('\n').first().trimmed();
        resource.body =
            TestSigning::signRelease(content, name, signedAs.isEmpty() ? QString::fromUtf8(named) : signedAs);
        m_server.setResource(QLatin1Char('/') + name + QStringLiteral(".minisig"), resource);
    }
    void useServer(const QString &url) { qputenv("SUPPORTKIT_VERSION_URL", url.toUtf8()); }
    QString silentUrl() const { return QStringLiteral("http://127.0.0.1:%1").arg(m_silent.serverPort()); }

    static QString picture(frmSupportKit &w) { return w.form()->cmdInet->property("picture").toString(); }
    static bool isRed(frmSupportKit &w) { return w.form()->lblBuild_0->styleSheet().contains("255, 0, 0"); }
    static void waitForChecks(frmSupportKit &w)
    {
        QTRY_VERIFY_WITH_TIMEOUT(!w.networkChecksRunning(), 20000);
        // What the window does when the checks end runs queued after them.
        QTest::qWait(0);
    }

private slots:
    void initTestCase()
    {
        // German texts, so that the messages read as their defaults.
        QVERIFY(GuiFixture::makeInstallation(m_install.path()));
        QVERIFY(m_server.listen());
        QVERIFY(m_silent.listen(QHostAddress::LocalHost));
        qputenv("SUPPORTKIT_WEBSITE_URL", "http://www.example.invalid/");
    }

    void init()
    {
        GuiFixture::resetProgram(m_messages);
        frmSupportKit::setActionDialogAnswererForTesting({});
        serve("version.txt", "version=13.2 Build 2210\n");
        serve("downloads.ini", "[Downloads]\r\npawnsketch.exe=13.2 Build 2210\r\n");
        useServer(m_server.url({}));
    }

    void startupChecks_data()
    {
        QTest::addColumn<QByteArray>("versionFile");
        QTest::addColumn<QString>("serverVersion");
        QTest::addColumn<bool>("red");
        QTest::addColumn<QString>("signedAs");
        QTest::addColumn<QString>("status");
        QTest::newRow("newer on the server")
            << QByteArray("version=13.2 Build 2210\n") << "13.2 Build 2210" << true << ""
            << "";
        QTest::newRow("same version") << QByteArray("v=13.2 Build 2209\n") << "13.2 Build 2209" << false << ""
                                      << "";
        QTest::newRow("no line feed: nothing shown")
            << QByteArray("version=13.3 Build 1") << "" << false << ""
            << "";
        QTest::newRow("forged: nothing shown, the status says why")
            << QByteArray("version=13.3 Build 1\n") << "" << false << "13.2 Build 2210"
            << "Update-Prüfung: Die Version des Servers wird nicht angenommen: Die Signatur zu version.txt "
               "nennt eine andere Version.";
    }
    void startupChecks()
    {
        QFETCH(QByteArray, versionFile);
        QFETCH(QString, signedAs);
        serve("version.txt", versionFile, signedAs);
        frmSupportKit w;
        QVERIFY(w.Form_Load("1"));
        // The window appears before the server has answered.
        QCOMPARE(picture(w), QString("www_unconnected"));
        QVERIFY(w.networkChecksRunning());
        w.show();
        waitForChecks(w);
        QCOMPARE(picture(w), QString("www_connected"));
        QCOMPARE(w.form()->lblBuild_0->text(), QString("13.2 Build 2209"));
        QTEST(w.form()->lblBuild_1->text(), "serverVersion");
        QTEST(isRed(w), "red");
        QTEST(w.statusBar()->currentMessage(), "status");
        QVERIFY(m_messages.isEmpty());
    }

    void checksGoOnWhileTheActionDialogIsOpen()
    {
        frmSupportKit *window = nullptr;
        bool endedWhileOpen = false;
        frmSupportKit::setActionDialogAnswererForTesting([&](frmSelectAction &d) {
            d.show();
            QTRY_VERIFY_WITH_TIMEOUT(!window->networkChecksRunning(), 20000);
            endedWhileOpen = d.isVisible() && picture(*window) == QLatin1String("www_connected");
            d.form()->Command->click();
        });
        frmSupportKit w;
        window = &w;
        QVERIFY(w.Form_Load(QString()));
        QVERIFY(endedWhileOpen);
        QCOMPARE(w.form()->lblBuild_1->text(), QString("13.2 Build 2210"));
    }

    void button_data()
    {
        QTest::addColumn<QString>("server"); // "good", "down", "empty list", "login page"
        QTest::addColumn<QString>("picture");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("cause");
        QTest::newRow("connected: silent update check") << "good"
                                                        << "www_connected"
                                                        << ""
                                                        << "";
        QTest::newRow("no server") << "down"
                                   << "www_disconnected"
                                   << "M189"
                                   << "Die Verbindung wurde abgelehnt.";
        QTest::newRow("empty download list")
            << "empty list"
            << "www_disconnected"
            << "M189"
            << "Der Server hat eine leere Antwort oder keine Größenangabe geschickt.";
        QTest::newRow("login page instead of the list") << "login page"
                                                        << "www_disconnected"
                                                        << "M189"
                                                        << "Statt der Downloadliste kam eine andere Seite "
                                                           "zurück, z. B. die Anmeldeseite eines Hotel- oder "
                                                           "Firmennetzes.";
    }
    void button()
    {
        QFETCH(QString, server);
        QFETCH(QString, picture);
        QFETCH(QString, message);
        QFETCH(QString, cause);
        frmSupportKit w;
        QVERIFY(w.Form_Load("1"));
        w.show();
        waitForChecks(w);
        serve("version.txt", "version=13.3 Build 1\n");
        if (server == "down")
            useServer(QStringLiteral("http://127.0.0.1:%1").arg(closedPort()));
        else if (server == "empty list")
            serve("downloads.ini", "");
        else if (server == "login page")
            serve("downloads.ini", "<html><body><form>Hotel-WLAN: Anmeldung</form></body></html>");

        w.form()->cmdInet->click();
        // The button waits for its checks without blocking the window.
        QVERIFY(!w.form()->cmdInet->isEnabled() && QGuiApplication::overrideCursor());
        waitForChecks(w);
        QVERIFY(w.form()->cmdInet->isEnabled() && !QGuiApplication::overrideCursor());
        QCOMPARE(TestInternetButton::picture(w), picture);
        QCOMPARE(w.form()->cmdInet->toolTip(), cause.isEmpty()
                                                   ? QString("Letzter Verbindungstest: erfolgreich")
                                                   : "Letzter Verbindungstest: fehlgeschlagen - " + cause);
        if (message.isEmpty()) {
            QVERIFY(m_messages.isEmpty());
            QCOMPARE(w.form()->lblBuild_1->text(), QString("13.3 Build 1"));
            return;
        }
        QCOMPARE(m_messages.size(), 1);
        const ShownMessage &m = m_messages[0];
        QCOMPARE(m.key + u'/' + QString::number(m.style), message + "/48");
        // The message as it always was, then a paragraph with the cause and what to do.
        const QStringList lines = m.message.split(u'\r');
        QCOMPARE(lines.mid(0, 3).join(u'\r') + u'#' + m.title,
                 QString("Eine Internetverbindung zu:\rhttp://www.example.invalid/\r"
                         "konnte nicht hergestellt werden!#Verbindungstest fehlgeschlagen"));
        QCOMPARE(lines.size(), 6);
        QCOMPARE(lines[3] + lines[4], "Ursache: " + cause);
        QVERIFY(lines[5].startsWith("Bitte") || lines[5].startsWith("Eine Firewall"));
        QCOMPARE(m.owner, &w);
    }

    void buttonReplacesHangingStartupChecks()
    {
        useServer(silentUrl());
        frmSupportKit w;
        QVERIFY(w.Form_Load("1"));
        w.show();
        QVERIFY(w.networkChecksRunning());
        useServer(m_server.url({}));
        w.form()->cmdInet->click();
        waitForChecks(w);
        QCOMPARE(picture(w), QString("www_connected"));
        QCOMPARE(w.form()->lblBuild_1->text(), QString("13.2 Build 2210"));
        QVERIFY(m_messages.isEmpty());
    }

    void escapeDuringChecksEndsCleanly()
    {
        useServer(silentUrl());
        frmSupportKit w;
        QVERIFY(w.Form_Load("1"));
        w.show();
        QVERIFY(QTest::qWaitForWindowActive(&w));
        w.form()->cmdInet->click();
        QVERIFY(w.networkChecksRunning());
        QTest::keyClick(&w, Qt::Key_Escape);
        QVERIFY(!w.isVisible() && !w.networkChecksRunning() && !QGuiApplication::overrideCursor());
        QTest::qWait(0);
        QVERIFY(m_messages.isEmpty());
    }
};

QTEST_MAIN(TestInternetButton)
#include "tst_internetbutton.moc"
