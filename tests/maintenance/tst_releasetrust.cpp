#include "maintenance/ReleaseTrust.h"
#include "maintenance/UpdateCheck.h"
#include "testsupport/TestSigning.h"

#include <QTest>

using namespace TestSigning;

// The publisher's signature byte by byte, for what the repair page's table of hostile
// servers does not reach: signature kinds, key rotation, the trusted comment's fields, the
// list's mandatory lines and the version text.
class TestReleaseTrust : public QObject
{
    Q_OBJECT

private slots:
    void signedFiles_data()
    {
        QTest::addColumn<QString>("keys"); // SUPPORTKIT_RELEASE_KEYS
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QByteArray>("signature");
        QTest::addColumn<int>("check");

        const KeyPair key = makeKeyPair(), retired = makeKeyPair();
        const QString version = QStringLiteral("13.2 Build 2210");
        const QByteArray list = downloadList(version, "program");
        const QByteArray comment = trustedComment(QStringLiteral("downloads.ini"), version);
        const QByteArray noSize = QByteArray(list).replace("pawnsketch.exe.size=7", "");
        const auto row = [&](const char *name, const QByteArray &data, const QByteArray &signature,
                             TrustCheck check, const QString &keys = {}) {
            QTest::newRow(name) << (keys.isEmpty() ? key.publicKeyLine() : keys) << data << signature
                                << int(check);
        };
        row("prehashed", list, sign(key, list, comment), TrustCheck::Ok);
        row("plain", list, sign(key, list, comment, false), TrustCheck::Ok);
        row("rotated: old key still listed", list, sign(retired, list, comment), TrustCheck::Ok,
            "untrusted comment: minisign public key\n" + key.publicKeyLine() + "\n" +
                retired.publicKeyLine() + " x");
        row("only unusable keys", list, sign(key, list, comment), TrustCheck::NoReleaseKey, "RWQ= untrusted");
        row("signature beyond the bound", list,
            sign(key, list, comment) + QByteArray(Minisign::kMaxSignatureFile, '\n'),
            TrustCheck::BrokenSignature);
        row("comment names another file", list,
            sign(key, list, trustedComment(QStringLiteral("version.txt"), version)), TrustCheck::WrongFile);
        row("no version field", list, sign(key, list, "file:downloads.ini\ttimestamp:1"),
            TrustCheck::WrongVersion);
        row("list without size", noSize, sign(key, noSize, comment), TrustCheck::MissingChecksum);
        // The version text's line end is not part of the version it announces.
        row("version text", "version=13.2 Build 2210\r\n",
            sign(key, "version=13.2 Build 2210\r\n", trustedComment(QStringLiteral("version.txt"), version)),
            TrustCheck::Ok);
    }

    void signedFiles()
    {
        QFETCH(QString, keys);
        QFETCH(QByteArray, data);
        QFETCH(QByteArray, signature);
        qputenv("SUPPORTKIT_RELEASE_KEYS", keys.toUtf8());
        if (data.startsWith("version=")) {
            const UpdateCheckResult result = checkVersionFile(data, signature);
            QTEST(int(result.trust), "check");
            QCOMPARE(result.serverVersion, QStringLiteral("13.2 Build 2210\r"));
            return;
        }
        const SignedDownloadList list = checkDownloadList(data, signature);
        QTEST(int(list.check), "check");
        QCOMPARE(list.size, list.check == TrustCheck::Ok ? 7 : -1);
    }
};

QTEST_GUILESS_MAIN(TestReleaseTrust)
#include "tst_releasetrust.moc"
