#include "maintenance/ReleaseTrust.h"
#include "maintenance/UpdateCheck.h"
#include "testsupport/TestSigning.h"

#include <QTest>

using namespace TestSigning;

// What the publisher's signature vouches for, byte by byte: each way a signed download list
// or version text can be forged, replayed or broken is refused with its own reason.
class TestReleaseTrust : public QObject
{
    Q_OBJECT

private slots:
    void signedFiles_data()
    {
        QTest::addColumn<QString>("keys"); // SUPPORTKIT_RELEASE_KEYS
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QByteArray>("signature");
        QTest::addColumn<int>("check");

        const KeyPair key = makeKeyPair();
        const KeyPair retired = makeKeyPair();
        const KeyPair stranger = makeKeyPair();
        const QString trusted = key.publicKeyLine();
        const QString version = QStringLiteral("13.2 Build 2210");
        const QByteArray list = downloadList(version, "program");
        const QByteArray listComment = trustedComment(QStringLiteral("downloads.ini"), version);
        const QByteArray good = sign(key, list, listComment);
        const QByteArray text = "version=13.2 Build 2210\r\n";
        const QByteArray textComment = trustedComment(QStringLiteral("version.txt"), version);
        const auto row = [](const char *name, const QString &keys, const char *file, const QByteArray &data,
                            const QByteArray &signature, TrustCheck check) {
            QTest::newRow(name) << keys << QString::fromLatin1(file) << data << signature << int(check);
        };
        const char *ini = "downloads.ini";
        row("list, prehashed", trusted, ini, list, good, TrustCheck::Ok);
        row("list, plain", trusted, ini, list, sign(key, list, listComment, false), TrustCheck::Ok);
        row("rotated: old key still listed",
            "untrusted comment: minisign public key\n" + trusted + "\n" + retired.publicKeyLine() + " x", ini,
            list, sign(retired, list, listComment), TrustCheck::Ok);
        row("build without key", QString(), ini, list, good, TrustCheck::NoReleaseKey);
        row("only unusable keys", QStringLiteral("RWQ= untrusted"), ini, list, good,
            TrustCheck::NoReleaseKey);
        row("signature missing", trusted, ini, list, {}, TrustCheck::NoSignature);
        row("signed by another key", trusted, ini, list, sign(stranger, list, listComment),
            TrustCheck::UnknownKey);
        row("signature of another file", trusted, ini, list, sign(key, "other", listComment),
            TrustCheck::SignatureMismatch);
        row("list changed after signing", trusted, ini, QByteArray(list).replace("2210", "2211"), good,
            TrustCheck::SignatureMismatch);
        row("trusted comment changed", trusted, ini, list,
            QByteArray(good).replace("version:13.2", "version:13.3"), TrustCheck::SignatureMismatch);
        row("truncated signature", trusted, ini, list, good.left(good.size() - 20),
            TrustCheck::BrokenSignature);
        row("garbage signature", trusted, ini, list, QByteArray(300, '\x9c'), TrustCheck::BrokenSignature);
        row("signature beyond the bound", trusted, ini, list,
            good + QByteArray(Minisign::kMaxSignatureFile, '\n'), TrustCheck::BrokenSignature);
        row("comment names another file", trusted, ini, list,
            sign(key, list, trustedComment(QStringLiteral("version.txt"), version)), TrustCheck::WrongFile);
        row("comment names another version", trusted, ini, list,
            sign(key, list,
                 trustedComment(QStringLiteral("downloads.ini"), QStringLiteral("13.2 Build 2209"))),
            TrustCheck::WrongVersion);
        row("no version field", trusted, ini, list, sign(key, list, "file:downloads.ini\ttimestamp:1"),
            TrustCheck::WrongVersion);
        const QByteArray noSize =
            "[Downloads]\npawnsketch.exe=13.2 Build 2210\npawnsketch.exe.sha256=" + QByteArray(64, 'a') +
            "\n";
        row("list without size", trusted, ini, noSize, sign(key, noSize, listComment),
            TrustCheck::MissingChecksum);
        row("version text", trusted, "version.txt", text, sign(key, text, textComment), TrustCheck::Ok);
        row("version text unsigned", trusted, "version.txt", text, {}, TrustCheck::NoSignature);
        row("version text with the list's signature", trusted, "version.txt", text,
            sign(key, text, listComment), TrustCheck::WrongFile);
    }

    void signedFiles()
    {
        QFETCH(QString, keys);
        QFETCH(QString, file);
        QFETCH(QByteArray, data);
        QFETCH(QByteArray, signature);
        qputenv("SUPPORTKIT_RELEASE_KEYS", keys.toUtf8());
        if (file == QStringLiteral("version.txt")) {
            const UpdateCheckResult result = checkVersionFile(data, signature);
            QTEST(int(result.trust), "check");
            QCOMPARE(result.found, result.trust == TrustCheck::Ok);
            QCOMPARE(result.serverVersion, result.found ? QStringLiteral("13.2 Build 2210\r") : QString());
            return;
        }
        const SignedDownloadList list = checkDownloadList(data, signature);
        QTEST(int(list.check), "check");
        if (list.check == TrustCheck::Ok) {
            QCOMPARE(list.size, 7);
            QCOMPARE(list.sha256.size(), 64);
        }
    }

    void compareVersions_data()
    {
        QTest::addColumn<QString>("a");
        QTest::addColumn<QString>("b");
        QTest::addColumn<int>("order");
        QTest::newRow("older build") << "13.2 Build 2209"
                                     << "13.2 Build 2210" << -1;
        QTest::newRow("numbers, not text") << "13.10 Build 1"
                                           << "13.9 Build 2000" << 1;
        QTest::newRow("same") << "13.2 Build 2210"
                              << "13.2 Build 2210" << 0;
        QTest::newRow("missing part counts as 0") << "13.2"
                                                  << "13.2 Build 1" << -1;
    }

    void compareVersions()
    {
        QFETCH(QString, a);
        QFETCH(QString, b);
        QTEST(qBound(-1, ::compareVersions(a, b), 1), "order");
    }
};

QTEST_GUILESS_MAIN(TestReleaseTrust)
#include "tst_releasetrust.moc"
