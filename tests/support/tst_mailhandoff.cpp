#include "core/Platform.h"
#include "support/MailHandoff.h"
#include "testsupport/TestSupport.h"

#include <QtTest>

#ifdef Q_OS_WIN
#include <QFileInfo>
#include <QUuid>

#include <string>

#include <windows.h>
#endif

namespace {
const QString kSupport = QStringLiteral("support@pawnsketch.de");
const QString kTo = QStringLiteral("mailto:support@pawnsketch.de?Subject=");
QString mailto(const MailContent &mail)
{
    return MailtoAddress(kSupport, mail.subject, mail.body);
}
} // namespace

#ifdef Q_OS_WIN
// For its lifetime, this process sees the registry's classes and current user as keys of its
// own below a volatile key, which goes with the user's session should the test not end.
class RegistryOverride
{
public:
    // command: the open command of mailto, "" for no association.
    explicit RegistryOverride(const QString &command)
    {
        const std::wstring name =
            L"Software\\SupportKit test " + QUuid::createUuid().toString(QUuid::Id128).toStdWString();
        m_name = name;
        if (!create(HKEY_CURRENT_USER, name, m_root) || !create(m_root, L"classes", m_classes) ||
            !create(m_root, L"user", m_user))
            return;
        if (!command.isEmpty()) {
            HKEY mailto = nullptr;
            HKEY open = nullptr;
            const std::wstring text = command.toStdWString();
            const bool written = create(m_classes, L"mailto", mailto) &&
                                 RegSetValueExW(mailto, L"URL Protocol", 0, REG_SZ, bytes(L""),
                                                sizeof(wchar_t)) == ERROR_SUCCESS &&
                                 create(mailto, L"shell\\open\\command", open) &&
                                 RegSetValueExW(open, nullptr, 0, REG_SZ, bytes(text.c_str()),
                                                DWORD((text.size() + 1) * sizeof(wchar_t))) == ERROR_SUCCESS;
            RegCloseKey(open);
            RegCloseKey(mailto);
            if (!written)
                return;
        }
        m_active = RegOverridePredefKey(HKEY_CLASSES_ROOT, m_classes) == ERROR_SUCCESS &&
                   RegOverridePredefKey(HKEY_CURRENT_USER, m_user) == ERROR_SUCCESS;
    }
    ~RegistryOverride()
    {
        RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr);
        RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
        for (HKEY key : {m_user, m_classes, m_root}) {
            if (key)
                RegCloseKey(key);
        }
        RegDeleteTreeW(HKEY_CURRENT_USER, m_name.c_str());
    }
    RegistryOverride(const RegistryOverride &) = delete;
    RegistryOverride &operator=(const RegistryOverride &) = delete;
    bool active() const { return m_active; }

private:
    static bool create(HKEY parent, const std::wstring &name, HKEY &key)
    {
        return RegCreateKeyExW(parent, name.c_str(), 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr,
                               &key, nullptr) == ERROR_SUCCESS;
    }
    static const BYTE *bytes(const wchar_t *text) { return reinterpret_cast<const BYTE *>(text); }

    std::wstring m_name;
    HKEY m_root = nullptr;
    HKEY m_classes = nullptr;
    HKEY m_user = nullptr;
    bool m_active = false;
};
#endif

class TestMailHandoff : public QObject
{
    Q_OBJECT

private slots:
    void encode_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const QString &text, const QString &expected) {
            QTest::newRow(name) << text << expected;
        };
        row("percent first, then blank and umlaut", "% \u00e4", "%25%20%E4");
        row("escapes already there are encoded", "%20", "%2520");
        row("CR LF and lone CR one escape, lone LF kept", "a\r\nb\rc\nd", "a%0Ab%0Ac\nd");
        row("reserved characters, umlauts as Latin-1 bytes",
            "!#*/?\u00c4\u00d6\u00dc\u00df\u00e4\u00f6\u00fc", "%21%23%2A%2F%3F%C4%D6%DC%DF%E4%F6%FC");
        row("others pass", "&=:+\u00e9", "&=:+\u00e9");
    }
    void encode()
    {
        QFETCH(QString, text);
        QTEST(UrlEncodeMailText(text), "expected");
    }

    void address_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("expected");
        const QString hint = QStringLiteral("Betreff@Hinweis");
        const MailTextSource fonts = mailTextSource(MailTopic::MissingFonts);
        QTest::newRow("report default")
            << mailto(PasteHintMail(mailTextSource(MailTopic::ErrorReport).germanDefault))
            << kTo + "Pawnsketch: Fehlerreport&Body=Setzen Sie die Schreibmarke (Cursor) \u00fcber diesen "
                     "Hinweistext und druecken Sie die Tastenkombination <Strg><V>, um den Text aus der "
                     "Zwischenablage an der Cursorposition einzufuegen%0D%0A%0D%0A";
        QTest::newRow("language text unencoded, <var1> filled")
            << mailto(PasteHintMail("Log <var1> & #1@Dr\u00fccken <var1>@rest", "ERRORLOG.TXT"))
            << kTo + "Log ERRORLOG.TXT & #1&Body=Dr\u00fccken ERRORLOG.TXT%0D%0A%0D%0A";
        QTest::newRow("fonts default titled as start log")
            << PasteHintMail(fonts.germanDefault, fonts.var1).subject << "Pawnsketch: STARTLOG.TXT";
        QTest::newRow("text without hint") << mailto(PasteHintMail("Nur")) << kTo + "Nur&Body=%0D%0A%0D%0A";
        QTest::newRow("short feedback inline, unencoded, empty subject")
            << mailto(FeedbackMail({}, "a & b\n#1 100%\r\nc", hint))
            << kTo + "&Body=a & b%0D%0A#1 100%%0D%0Ac";
        QTest::newRow("1000 characters inline")
            << FeedbackMail("S", QString(998, u'x') + "\r\n", hint).body << QString(998, u'x') + "%0D%0A";
        QTest::newRow("1001 characters (LF counts two) give the hint")
            << FeedbackMail("S", QString(999, u'x') + u'\n', hint).body << "Hinweis%0D%0A%0D%0A";
    }
    void address()
    {
        QFETCH(QString, address);
        QTEST(address, "expected");
    }

#ifndef Q_OS_WIN
    // The user's mail program found through a temporary freedesktop setup and started with the
    // address as composed: blanks, "#", "&", "%", umlauts and escaped line breaks unchanged.
    // Each case runs in a probe process of its own, as GLib reads the desktop's folders once.
    void handOff_data()
    {
        QTest::addColumn<QString>("desktops");
        QTest::addColumn<QStringList>("files"); // path below the setup, content, path, content ...
        QTest::addColumn<bool>("found");
        const QString rec = "[Desktop Entry]\nType=Application\nName=Rec\nExec=\"@REC@\" \"@OUT@\" %u\n";
        const QString def = "[Default Applications]\nx-scheme-handler/mailto=";
        QTest::newRow("desktop's default after an uninstalled one")
            << "Test:Other"
            << QStringList{"XDG_CONFIG_DIRS/other-mimeapps.list", def + "gone.desktop;rec.desktop\n",
                           "XDG_DATA_DIRS/applications/rec.desktop", rec}
            << true;
        QTest::newRow("program missing")
            << ""
            << QStringList{"XDG_CONFIG_HOME/mimeapps.list", def + "rec.desktop\n",
                           "XDG_DATA_HOME/applications/rec.desktop",
                           QString(rec).replace("@REC@", "/nonexistent/mail")}
            << false;
        QTest::newRow("nothing registered") << "" << QStringList{} << false;
    }
    void handOff()
    {
        QFETCH(QString, desktops);
        QFETCH(QStringList, files);
        QFETCH(bool, found);
        QTemporaryDir root;
        const QString out = root.filePath(QStringLiteral("received"));
        for (qsizetype i = 0; i + 1 < files.size(); i += 2) {
            const QString text =
                QString(files[i + 1]).replace("@REC@", SK_MAIL_RECORDER).replace("@OUT@", out);
            QVERIFY(TestSupport::writeFile(root.filePath(files[i]), text.toUtf8()));
        }
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const char *variable :
             {"XDG_CONFIG_HOME", "XDG_CONFIG_DIRS", "XDG_DATA_HOME", "XDG_DATA_DIRS"}) {
            QVERIFY(QDir(root.path()).mkpath(variable));
            env.insert(variable, root.filePath(variable));
        }
        env.insert("HOME", root.path());
        env.insert("XDG_CURRENT_DESKTOP", desktops);
        env.insert("GIO_USE_VFS", "local");
        env.remove("DBUS_SESSION_BUS_ADDRESS");
        QProcess probe;
        probe.setProcessEnvironment(env);
        probe.start(QStringLiteral(SK_MAIL_PROBE), {mailAddress()});
        QVERIFY(probe.waitForFinished(20000));
        // The probe's exit code: 1 when it found a mail program, plus 2 when it started one.
        QCOMPARE(probe.exitCode(), found ? 3 : 0);
        if (found)
            receives(out);
    }
#else
    // The shell's mailto association, in classes of the test's own: the registry's
    // predefined roots are redirected for this process to a volatile key of its own, so that
    // neither the user's choice nor the machine's mail program is seen or touched.
    void handOff_data()
    {
        QTest::addColumn<QString>("command"); // "": nothing registered
        QTest::addColumn<bool>("found");
        QTest::newRow("registered") << "\"@REC@\" \"@OUT@\" \"%1\"" << true;
        QTest::newRow("nothing registered") << "" << false;
    }
    void handOff()
    {
        QFETCH(QString, command);
        QFETCH(bool, found);
        QTemporaryDir root;
        const QString out = root.filePath(QStringLiteral("received"));
        const QString recorder = QFileInfo(QStringLiteral(SK_MAIL_RECORDER)).absoluteFilePath();
        command.replace("@REC@", QDir::toNativeSeparators(recorder))
            .replace("@OUT@", QDir::toNativeSeparators(out));
        const RegistryOverride registry(command);
        QVERIFY(registry.active());
        const std::unique_ptr<Platform> native = createNativePlatform();
        QCOMPARE(native->hasMailHandler(), found);
        QCOMPARE(native->openMailto(mailAddress()), found);
        if (found)
            receives(out);
    }
#endif

private:
    static QString mailAddress()
    {
        const MailContent mail =
            FeedbackMail("Fehler #1 & 50% \u00c4rger", "Gr\u00fc\u00dfe\r\n100% & #3 %0A", {});
        const QString address = mailto(mail);
        [&] {
            QCOMPARE(address, kTo + "Fehler #1 & 50% \u00c4rger&Body=Gr\u00fc\u00dfe%0D%0A100% & #3 %0A");
        }();
        return address;
    }
    // The recorder, started as the mail program, wrote what it received to out.
    static void receives(const QString &out)
    {
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(out), 20000);
        QFile received(out);
        QVERIFY(received.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(received.readAll()), mailAddress() + QChar(u'\0'));
    }
};

QTEST_GUILESS_MAIN(TestMailHandoff)
#include "tst_mailhandoff.moc"
