#include "core/Platform.h"
#include "core/XdgSchemeHandler.h"
#include "support/MailHandoff.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {
const QString kSupport = QStringLiteral("support@pawnsketch.de");
const QString kUrl = QStringLiteral("mailto:a@b?Subject=50%25 %c&Body=x%u");
} // namespace

class TestMailHandoff : public QObject
{
    Q_OBJECT

private slots:
    void encode_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("percent first, then blank and umlaut") << "% \u00e4"
                                                              << "%25%20%E4";
        QTest::newRow("escapes already there are encoded") << "%20"
                                                           << "%2520";
        QTest::newRow("CR LF and lone CR one escape, lone LF kept") << "a\r\nb\rc\nd"
                                                                    << "a%0Ab%0Ac\nd";
        QTest::newRow("reserved characters, umlauts as Latin-1 bytes")
            << "!#*/?\u00c4\u00d6\u00dc\u00df\u00e4\u00f6\u00fc"
            << "%21%23%2A%2F%3F%C4%D6%DC%DF%E4%F6%FC";
        QTest::newRow("others pass") << "&=:+\u00e9"
                                     << "&=:+\u00e9";
    }
    void encode()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(UrlEncodeMailText(text), expected);
    }

    void address_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("expected");
        const auto mailto = [](const MailContent &mail) {
            return MailtoAddress(kSupport, mail.subject, mail.body);
        };
        const QString hint = QStringLiteral("Betreff@Hinweis");

        QTest::newRow("report default")
            << mailto(PasteHintMail(mailTextSource(MailTopic::ErrorReport).germanDefault))
            << "mailto:support@pawnsketch.de?Subject=Pawnsketch: Fehlerreport&Body=Setzen Sie die "
               "Schreibmarke "
               "(Cursor) \u00fcber diesen Hinweistext und druecken Sie die Tastenkombination <Strg><V>, um "
               "den "
               "Text aus der Zwischenablage an der Cursorposition einzufuegen%0D%0A%0D%0A";
        QTest::newRow("language text unencoded, <var1> filled")
            << mailto(PasteHintMail(QStringLiteral("Log <var1> & #1@Dr\u00fccken <var1>@rest"),
                                    QStringLiteral("ERRORLOG.TXT")))
            << "mailto:support@pawnsketch.de?Subject=Log ERRORLOG.TXT & #1&Body=Dr\u00fccken "
               "ERRORLOG.TXT%0D%0A%0D%0A";
        const MailTextSource fonts = mailTextSource(MailTopic::MissingFonts);
        QTest::newRow("fonts default titled as start log")
            << PasteHintMail(fonts.germanDefault, fonts.var1).subject << "Pawnsketch: STARTLOG.TXT";
        QTest::newRow("text without hint") << mailto(PasteHintMail(QStringLiteral("Nur")))
                                           << "mailto:support@pawnsketch.de?Subject=Nur&Body=%0D%0A%0D%0A";
        QTest::newRow("short feedback inline, unencoded, empty subject")
            << mailto(FeedbackMail({}, QStringLiteral("a & b\n#1 100%\r\nc"), hint))
            << "mailto:support@pawnsketch.de?Subject=&Body=a & b%0D%0A#1 100%%0D%0Ac";
        QTest::newRow("1000 characters inline")
            << FeedbackMail(QStringLiteral("S"), QString(998, u'x') + QStringLiteral("\r\n"), hint).body
            << QString(998, u'x') + QStringLiteral("%0D%0A");
        QTest::newRow("1001 characters (LF counts two) give the hint")
            << FeedbackMail(QStringLiteral("S"), QString(999, u'x') + u'\n', hint).body
            << "Hinweis%0D%0A%0D%0A";
    }
    void address()
    {
        QFETCH(QString, address);
        QFETCH(QString, expected);
        QCOMPARE(address, expected);
    }

    void handlerCandidates_data()
    {
        QTest::addColumn<QStringList>("files"); // mimeapps.list contents, most important first
        QTest::addColumn<bool>("firstIsDesktopSpecific");
        QTest::addColumn<QStringList>("cache");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("defaults of every file before any association")
            << QStringList{"[Added Associations]\nx-scheme-handler/mailto=a.desktop;\n[Default "
                           "Applications]\n"
                           "x-scheme-handler/mailto=d1.desktop;d2.desktop\n",
                           "[Default Applications]\r\n X-Scheme-Handler/Mailto = d3.desktop; \r\n"}
            << false << QStringList{"c.desktop"}
            << QStringList{"d1.desktop", "d2.desktop", "d3.desktop", "a.desktop", "c.desktop"};
        QTest::newRow("removals hide later associations only")
            << QStringList{"[Added Associations]\nx-scheme-handler/mailto=a.desktop\n[Removed Associations]\n"
                           "x-scheme-handler/mailto=b.desktop;c.desktop;\n",
                           "[Added Associations]\nx-scheme-handler/mailto=b.desktop;a2.desktop\n"
                           "[Removed Associations]\nx-scheme-handler/mailto=a.desktop\n"}
            << false << QStringList{"c.desktop", "e.desktop"}
            << QStringList{"a.desktop", "a2.desktop", "e.desktop"};
        QTest::newRow("other types, groups and comments")
            << QStringList{"# x-scheme-handler/mailto=c.desktop\n[Default Applications]\n"
                           "x-scheme-handler/http=h.desktop\n[Other]\nx-scheme-handler/mailto=o.desktop\n"}
            << false << QStringList{} << QStringList{};
        QTest::newRow("desktop-specific file gives defaults only")
            << QStringList{"[Default Applications]\nx-scheme-handler/mailto=k.desktop\n[Added Associations]\n"
                           "x-scheme-handler/mailto=ka.desktop\n[Removed Associations]\n"
                           "x-scheme-handler/mailto=c.desktop\n"}
            << true << QStringList{"c.desktop"} << QStringList{"k.desktop", "c.desktop"};
    }
    void handlerCandidates()
    {
        QFETCH(QStringList, files);
        QFETCH(bool, firstIsDesktopSpecific);
        QFETCH(QStringList, cache);
        QFETCH(QStringList, expected);
        QList<xdg::Associations> associations;
        for (const QString &content : files) {
            const bool specific = associations.isEmpty() && firstIsDesktopSpecific;
            associations << xdg::readAssociations(content, QStringLiteral("x-scheme-handler/mailto"),
                                                  specific);
        }
        QCOMPARE(xdg::handlerCandidates(associations, cache), expected);
    }

    void expandExec_data()
    {
        QTest::addColumn<QString>("exec"); // as written in the desktop file
        QTest::addColumn<QString>("icon");
        QTest::addColumn<QStringList>("expected"); // empty: rejected
        QTest::newRow("URL as one argument") << "mail %u"
                                             << "" << QStringList{"mail", kUrl};
        QTest::newRow("quoting and escapes")
            << R"("/opt/my mail/mail" --x "a \\"q\\" \\\\ \\$" "a\sb" %U)"
            << "" << QStringList{"/opt/my mail/mail", "--x", R"(a "q" \ $)", "a b", kUrl};
        QTest::newRow("other field codes, one pass")
            << "mail %i --name=%c %k %% --to=%u %d"
            << "mi"
            << QStringList{"mail", "--icon", "mi", "--name=Mail", "/apps/mail.desktop", "%", "--to=" + kUrl};
        QTest::newRow("no field code: URL appended; no icon")
            << "mail %i \"\" -compose"
            << "" << QStringList{"mail", "", "-compose", kUrl};
        QTest::newRow("unclosed quote") << "\"mail %u"
                                        << "" << QStringList{};
        QTest::newRow("only a removed code") << "%d"
                                             << "" << QStringList{};
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

    // The user's mail program found through a temporary freedesktop setup and started with the
    // address as composed: blanks, "#", "&", "%", umlauts and escaped line breaks unchanged.
    void handOff_data()
    {
        QTest::addColumn<QString>("desktops");
        QTest::addColumn<QStringList>("files"); // path below the setup, content, path, content ...
        QTest::addColumn<bool>("found");
        const QString recorder =
            QStringLiteral("[Desktop Entry]\nType=Application\nName=Rec\nExec=\"@REC@\" \"@OUT@\" %u\n");
        QTest::newRow("user default after an uninstalled one")
            << ""
            << QStringList{"config/mimeapps.list",
                           "[Default Applications]\nx-scheme-handler/mailto=gone.desktop;rec.desktop\n",
                           "data/applications/rec.desktop", recorder}
            << true;
        QTest::newRow("desktop default over a hidden user default")
            << "Test:Other"
            << QStringList{"config/mimeapps.list",
                           "[Default Applications]\nx-scheme-handler/mailto=hid.desktop\n",
                           "data/applications/hid.desktop",
                           recorder + "Hidden=true\n",
                           "configdirs/other-mimeapps.list",
                           "[Default Applications]\nx-scheme-handler/mailto=rec.desktop\n",
                           "datadirs/applications/rec.desktop",
                           recorder}
            << true;
        QTest::newRow("distribution cache, entry in a subfolder")
            << ""
            << QStringList{"datadirs/applications/mimeinfo.cache",
                           "[MIME Cache]\nx-scheme-handler/mailto=vendor-rec.desktop;\n",
                           "datadirs/applications/vendor/rec.desktop", recorder}
            << true;
        QTest::newRow("program missing")
            << ""
            << QStringList{"config/mimeapps.list",
                           "[Default Applications]\nx-scheme-handler/mailto=rec.desktop\n",
                           "data/applications/rec.desktop",
                           QString(recorder).replace("@REC@", "/nonexistent/mail")}
            << false;
        QTest::newRow("nothing registered") << "" << QStringList{} << false;
    }
    void handOff()
    {
#ifdef Q_OS_WIN
        QSKIP("the mail program is found through the freedesktop setup on Linux only");
#endif
        QFETCH(QString, desktops);
        QFETCH(QStringList, files);
        QFETCH(bool, found);

        QTemporaryDir root;
        QVERIFY(root.isValid());
        const QString out = root.filePath(QStringLiteral("received"));
        for (qsizetype i = 0; i + 1 < files.size(); i += 2) {
            const QString path = root.filePath(files[i]);
            QVERIFY(QDir().mkpath(QFileInfo(path).path()));
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            QString content = files[i + 1];
            file.write(content.replace("@REC@", SK_MAIL_RECORDER).replace("@OUT@", out).toUtf8());
        }
        for (const char *dir : {"config", "configdirs", "data", "datadirs"})
            QVERIFY(QDir(root.path()).mkpath(QString::fromLatin1(dir)));
        qputenv("XDG_CONFIG_HOME", root.filePath(QStringLiteral("config")).toUtf8());
        qputenv("XDG_CONFIG_DIRS", root.filePath(QStringLiteral("configdirs")).toUtf8());
        qputenv("XDG_DATA_HOME", root.filePath(QStringLiteral("data")).toUtf8());
        qputenv("XDG_DATA_DIRS", root.filePath(QStringLiteral("datadirs")).toUtf8());
        qputenv("XDG_CURRENT_DESKTOP", desktops.toUtf8());

        const MailContent mail = FeedbackMail(QStringLiteral("Fehler #1 & 50% \u00c4rger"),
                                              QStringLiteral("Gr\u00fc\u00dfe\r\n100% & #3 %0A"), QString());
        const QString address = MailtoAddress(kSupport, mail.subject, mail.body);
        QCOMPARE(address,
                 "mailto:support@pawnsketch.de?Subject=Fehler #1 & 50% \u00c4rger&Body=Gr\u00fc\u00dfe%0D%0A"
                 "100% & #3 %0A");

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
