#include "core/Platform.h"
#include "core/XdgSchemeHandler.h"
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
const QString kUrl = QStringLiteral("mailto:a@b?Subject=50%25 %c&Body=x%u");
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

    void handlerCandidates_data()
    {
        QTest::addColumn<QStringList>("files"); // mimeapps.list contents, most important first
        QTest::addColumn<bool>("firstIsDesktopSpecific");
        QTest::addColumn<QStringList>("cache");
        QTest::addColumn<QStringList>("expected");
        const QString mt = QStringLiteral("x-scheme-handler/mailto=");
        const QString def = "[Default Applications]\n" + mt, add = "[Added Associations]\n" + mt,
                      rem = "[Removed Associations]\n" + mt;
        QTest::newRow("defaults of every file before any association")
            << QStringList{add + "a.desktop;\n" + def + "d1.desktop;d2.desktop\n",
                           "[Default Applications]\r\n X-Scheme-Handler/Mailto = d3.desktop; \r\n"}
            << false << QStringList{"c.desktop"}
            << QStringList{"d1.desktop", "d2.desktop", "d3.desktop", "a.desktop", "c.desktop"};
        QTest::newRow("removals hide later associations only")
            << QStringList{add + "a.desktop\n" + rem + "b.desktop;c.desktop;\n",
                           add + "b.desktop;a2.desktop\n" + rem + "a.desktop\n"}
            << false << QStringList{"c.desktop", "e.desktop"}
            << QStringList{"a.desktop", "a2.desktop", "e.desktop"};
        QTest::newRow("other types, groups and comments")
            << QStringList{"# " + mt +
                           "c.desktop\n[Default Applications]\nx-scheme-handler/http=h.desktop\n"
                           "[Other]\n" +
                           mt + "o.desktop\n"}
            << false << QStringList{} << QStringList{};
        QTest::newRow("desktop-specific file gives defaults only")
            << QStringList{def + "k.desktop\n" + add + "ka.desktop\n" + rem + "c.desktop\n"} << true
            << QStringList{"c.desktop"} << QStringList{"k.desktop", "c.desktop"};
    }
    void handlerCandidates()
    {
        QFETCH(QStringList, files);
        QFETCH(bool, firstIsDesktopSpecific);
        QFETCH(QStringList, cache);
        QList<xdg::Associations> associations;
        for (const QString &content : files)
            associations << xdg::readAssociations(content, QStringLiteral("x-scheme-handler/mailto"),
                                                  associations.isEmpty() && firstIsDesktopSpecific);
        QTEST(xdg::handlerCandidates(associations, cache), "expected");
    }

    void expandExec_data()
    {
        QTest::addColumn<QString>("exec"); // as written in the desktop file
        QTest::addColumn<QString>("icon");
        QTest::addColumn<QStringList>("expected"); // empty: rejected
        const auto row = [](const char *name, const QString &exec, const QString &icon,
                            const QStringList &exp) { QTest::newRow(name) << exec << icon << exp; };
        row("URL as one argument", "mail %u", "", {"mail", kUrl});
        row("quoting and escapes", R"("/opt/my mail/mail" --x "a \\"q\\" \\\\ \\$" "a\sb" %U)", "",
            {"/opt/my mail/mail", "--x", R"(a "q" \ $)", "a b", kUrl});
        row("other field codes, one pass", "mail %i --name=%c %k %% --to=%u %d", "mi",
            {"mail", "--icon", "mi", "--name=Mail", "/apps/mail.desktop", "%", "--to=" + kUrl});
        row("no field code: URL appended; no icon", "mail %i \"\" -compose", "",
            {"mail", "", "-compose", kUrl});
        row("unclosed quote", "\"mail %u", "", {});
        row("only a removed code", "%d", "", {});
    }
    void expandExec()
    {
        QFETCH(QString, exec);
        QFETCH(QString, icon);
        QFETCH(QStringList, expected);
        xdg::DesktopEntry entry;
        entry.exec = exec;
        entry.icon = icon;
        entry.name = QStringLiteral("Mail");
        entry.path = QStringLiteral("/apps/mail.desktop");
        QStringList arguments;
        QCOMPARE(xdg::expandExec(entry, kUrl, arguments), !expected.isEmpty());
        if (!expected.isEmpty())
            QCOMPARE(arguments, expected);
    }

#ifndef Q_OS_WIN
    // The user's mail program found through a temporary freedesktop setup and started with the
    // address as composed: blanks, "#", "&", "%", umlauts and escaped line breaks unchanged.
    void handOff_data()
    {
        QTest::addColumn<QString>("desktops");
        QTest::addColumn<QStringList>("files"); // path below the setup, content, path, content ...
        QTest::addColumn<bool>("found");
        const QString rec = "[Desktop Entry]\nType=Application\nName=Rec\nExec=\"@REC@\" \"@OUT@\" %u\n";
        const QString def = "[Default Applications]\nx-scheme-handler/mailto=";
        QTest::newRow("user default after an uninstalled one")
            << ""
            << QStringList{"XDG_CONFIG_HOME/mimeapps.list", def + "gone.desktop;rec.desktop\n",
                           "XDG_DATA_HOME/applications/rec.desktop", rec}
            << true;
        QTest::newRow("desktop default over a hidden user default")
            << "Test:Other" << QStringList{"XDG_CONFIG_HOME/mimeapps.list",
                                           def + "hid.desktop\n",
                                           "XDG_DATA_HOME/applications/hid.desktop",
                                           QString(rec).replace("@OUT@", "@OUT@-hidden") + "Hidden=true\n",
                                           "XDG_CONFIG_DIRS/other-mimeapps.list",
                                           def + "rec.desktop\n",
                                           "XDG_DATA_DIRS/applications/rec.desktop",
                                           rec}
            << true;
        QTest::newRow("distribution cache, entry in a subfolder")
            << ""
            << QStringList{"XDG_DATA_DIRS/applications/mimeinfo.cache",
                           "[MIME Cache]\nx-scheme-handler/mailto=vendor-rec.desktop;\n",
                           "XDG_DATA_DIRS/applications/vendor/rec.desktop", rec}
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
        for (const char *variable :
             {"XDG_CONFIG_HOME", "XDG_CONFIG_DIRS", "XDG_DATA_HOME", "XDG_DATA_DIRS"}) {
            QVERIFY(QDir(root.path()).mkpath(variable));
            qputenv(variable, root.filePath(variable).toUtf8());
        }
        qputenv("XDG_CURRENT_DESKTOP", desktops.toUtf8());
        handsOver(found, out);
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
        handsOver(found, out);
    }
#endif

private:
    // Hands the address to the native mail program; a found one records what it received in out.
    void handsOver(bool found, const QString &out)
    {
        const MailContent mail =
            FeedbackMail("Fehler #1 & 50% \u00c4rger", "Gr\u00fc\u00dfe\r\n100% & #3 %0A", {});
        const QString address = mailto(mail);
        QCOMPARE(address, kTo + "Fehler #1 & 50% \u00c4rger&Body=Gr\u00fc\u00dfe%0D%0A100% & #3 %0A");
        const std::unique_ptr<Platform> native = createNativePlatform();
        QCOMPARE(native->hasMailHandler(), found);
        QCOMPARE(native->openMailto(address), found);
        if (!found)
            return;
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(out), 20000);
        QFile received(out);
        QVERIFY(received.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(received.readAll()), address + QChar(u'\0'));
    }
};

QTEST_GUILESS_MAIN(TestMailHandoff)
#include "tst_mailhandoff.moc"
