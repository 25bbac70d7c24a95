#include "maintenance/Authenticode.h"

#include <QTest>

#include <qt_windows.h>

namespace {
bool underWine()
{
    const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
    return ntdll && GetProcAddress(ntdll, "wine_get_version");
}
} // namespace

// The system's Authenticode check of files signed at build time with a self-made
// certificate, and what a build that names its publisher makes of the answers.
class TestAuthenticode : public QObject
{
    Q_OBJECT

private slots:
    void check_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("signer");
        const QString dir = QStringLiteral(SK_SIGNED_DIR "/");
        QTest::newRow("unsigned") << QStringLiteral(SK_UNSIGNED) << int(AuthenticodeResult::Unsigned) << "";
        // Intact, but the certificate was made for the test and no root trusts it. Wine's
        // WinVerifyTrust does not follow the chain to a trusted root and calls it valid.
        QTest::newRow("signed, intact")
            << dir + "signed.exe"
            << int(underWine() ? AuthenticodeResult::Valid : AuthenticodeResult::Untrusted)
            << "SupportKit Test Publisher";
        // Whether the signer of a changed file is named differs between systems: not compared.
        QTest::newRow("signed, then changed")
            << dir + "changed.exe" << int(AuthenticodeResult::Broken) << "*";
    }

    void check()
    {
        QFETCH(QString, file);
        const AuthenticodeResult result = checkAuthenticode(file);
        QVERIFY2(QFile::exists(file), qPrintable(file));
        QTEST(int(result.status), "status");
        QFETCH(QString, signer);
        if (signer != QLatin1String("*"))
            QCOMPARE(result.signer, signer);
        // No publisher named: shown, never refused; named: only its valid signature passes.
        QVERIFY(authenticodeAccepted(result, {}));
        const QString publisher = QStringLiteral("supportkit test PUBLISHER");
        QCOMPARE(authenticodeAccepted(result, publisher), result.status == AuthenticodeResult::Valid);
        QVERIFY(!authenticodeAccepted({AuthenticodeResult::Valid, QStringLiteral("Other"), 0}, publisher));
    }
};

QTEST_GUILESS_MAIN(TestAuthenticode)
#include "tst_authenticode.moc"
