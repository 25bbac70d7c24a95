#include "maintenance/NetworkChecks.h"

#include "localisation/LanguageState.h"
#include "localisation/Messages.h"
#include "maintenance/UpdateCheck.h"
#include "net/ConnectionTest.h"

namespace {

struct CauseTexts
{
    NetCause cause;
    const char *textKey;
    QString text;
    const char *adviceKey;
    QString advice;
};

const CauseTexts *causeTexts(NetCause cause)
{
    static const CauseTexts table[] = {
        {NetCause::NoNetwork, "T19350", QStringLiteral("Dieser Computer ist mit keinem Netzwerk verbunden."),
         "M19360", QStringLiteral("Bitte prüfen Sie das Netzwerkkabel oder die WLAN-Verbindung.")},
        {NetCause::NameNotResolved, "T19351",
         QStringLiteral("Der Name des Servers kann nicht aufgelöst werden (DNS)."), "M19361",
         QStringLiteral("Bitte prüfen Sie, ob sich Internetseiten im Browser öffnen lassen; wenn nicht, "
                        "starten Sie den Router neu oder fragen Sie Ihren Administrator.")},
        {NetCause::Refused, "T19352", QStringLiteral("Die Verbindung wurde abgelehnt."), "M19362",
         QStringLiteral("Eine Firewall oder ein Virenschutz blockiert die Verbindung möglicherweise; bitte "
                        "erlauben Sie Support-Kit den Zugang zum Internet.")},
        {NetCause::Timeout, "T19353", QStringLiteral("Der Server hat nicht rechtzeitig geantwortet."),
         "M19363",
         QStringLiteral("Bitte versuchen Sie es später noch einmal; bei einer langsamen Verbindung hilft es, "
                        "andere Downloads vorher zu beenden.")},
        {NetCause::Proxy, "T19354",
         QStringLiteral("Der Proxy-Server lehnt die Verbindung ab oder verlangt eine Anmeldung."), "M19364",
         QStringLiteral(
             "Bitte fragen Sie Ihren Administrator nach den Proxy-Einstellungen und Ihrem Proxy-Kennwort.")},
        {NetCause::Tls, "T19355",
         QStringLiteral("Die verschlüsselte Verbindung konnte nicht aufgebaut werden."), "M19365",
         QStringLiteral("Bitte prüfen Sie Datum und Uhrzeit des Computers; auch ein Virenschutz, der "
                        "Verbindungen prüft, kann die Ursache sein.")},
        {NetCause::HttpStatus, "T19356", QStringLiteral("Der Server hat mit dem Fehler <var1> geantwortet."),
         "M19366", QStringLiteral("Der Server hat ein Problem; bitte versuchen Sie es später noch einmal.")},
        {NetCause::WrongAnswer, "T19357",
         QStringLiteral("Statt der Downloadliste kam eine andere Seite zurück, z. B. die Anmeldeseite eines "
                        "Hotel- oder Firmennetzes."),
         "M19367",
         QStringLiteral(
             "Bitte öffnen Sie eine Internetseite im Browser und melden Sie sich dort am Netzwerk an.")},
        {NetCause::EmptyAnswer, "T19358",
         QStringLiteral("Der Server hat eine leere Antwort oder keine Größenangabe geschickt."), "M19368",
         QStringLiteral("Bitte versuchen Sie es später noch einmal; bleibt der Fehler, wenden Sie sich an "
                        "den Support.")},
        {NetCause::Other, "T19359", QStringLiteral("Die Verbindung wurde unterbrochen."), "M19369",
         QStringLiteral("Bitte prüfen Sie Ihre Internetverbindung und versuchen Sie es noch einmal.")},
    };
    for (const CauseTexts &entry : table) {
        if (entry.cause == cause)
            return &entry;
    }
    return nullptr;
}

} // namespace

QString netErrorText(const NetResult &result)
{
    QString germanDefault;
    switch (result.error) {
    case NetError::None:
        return {};
    case NetError::ServerNotFound:
        germanDefault = QStringLiteral("Server nicht gefunden");
        break;
    case NetError::BadUrl:
        germanDefault = QStringLiteral("URL nicht interpretierbar");
        break;
    case NetError::ZeroSize:
        germanDefault = QStringLiteral("Downloadgröße 0 Byte");
        break;
    case NetError::ConnectionLost:
        germanDefault = QStringLiteral("Verbindung unterbrochen");
        break;
    case NetError::WriteFile:
        germanDefault = QStringLiteral("Datei kann nicht geschrieben werden");
        break;
    case NetError::HttpStatus:
        germanDefault = result.httpStatus == 404 ? QStringLiteral("Seite/Datei nicht gefunden")
                                                 : QStringLiteral("Unbekannter Fehler");
        break;
    }
    return lngText(result.messageKey(), germanDefault);
}

QString netCauseText(const NetDiagnosis &diagnosis)
{
    const CauseTexts *texts = causeTexts(diagnosis.cause);
    if (!texts)
        return QString();
    QString text = lngText(QLatin1String(texts->textKey), texts->text);
    text.replace(QLatin1String("<var1>"), QString::number(diagnosis.httpStatus));
    if (diagnosis.cause == NetCause::Proxy && diagnosis.httpStatus != 0)
        text += QStringLiteral(" (%1)").arg(diagnosis.httpStatus);
    return text;
}

QString netCauseAdvice(const NetDiagnosis &diagnosis)
{
    const CauseTexts *texts = causeTexts(diagnosis.cause);
    return texts ? messageText(QLatin1String(texts->adviceKey), texts->advice) : QString();
}

QString connectionCauseParagraph(const NetDiagnosis &diagnosis)
{
    if (diagnosis.cause == NetCause::None)
        return QString();
    return lngText(QStringLiteral("T19372"), QStringLiteral("Ursache:")) + u' ' + netCauseText(diagnosis) +
           u'\r' + netCauseAdvice(diagnosis);
}

QString connectionToolTip(bool connected, const NetDiagnosis &diagnosis)
{
    if (connected)
        return lngText(QStringLiteral("T19370"), QStringLiteral("Letzter Verbindungstest: erfolgreich"));
    return lngText(QStringLiteral("T19371"),
                   QStringLiteral("Letzter Verbindungstest: fehlgeschlagen - <var1>"))
        .replace(QLatin1String("<var1>"), netCauseText(diagnosis));
}

NetworkChecks::NetworkChecks(QObject *parent) : QObject(parent) {}

NetworkChecks::~NetworkChecks() = default;

void NetworkChecks::startStartupChecks()
{
    cancel();
    m_button = false;
    runUpdateCheck();
}

void NetworkChecks::startButtonChecks()
{
    cancel();
    m_button = true;
    runConnectionTest(false);
}

void NetworkChecks::cancel()
{
    // The engine may be deleted while it waits; a dropped check reports nothing.
    ++m_generation;
    delete m_updateCheck;
    delete m_connectionTest;
}

bool NetworkChecks::isRunning() const
{
    return m_updateCheck || m_connectionTest;
}

void NetworkChecks::runUpdateCheck()
{
    auto *check = new UpdateCheck(this);
    m_updateCheck = check;
    connect(check, &UpdateCheck::finished, this, [this, check](const UpdateCheckResult &result) {
        check->deleteLater();
        m_updateCheck = nullptr;
        // A receiver may start new checks; then this chain has ended.
        const quint64 generation = m_generation;
        if (result.found)
            emit serverVersionFound(result.serverVersion);
        else if (result.trust != TrustCheck::Ok)
            emit serverVersionRefused(
                refusedVersionText(trustCheckText(result.trust, QStringLiteral("version.txt"))));
        if (generation != m_generation)
            return;
        if (m_button)
            emit finished();
        else
            runConnectionTest(false);
    });
    check->start();
}

void NetworkChecks::runConnectionTest(bool report)
{
    auto *test = new ConnectionTest(this);
    m_connectionTest = test;
    connect(test, &ConnectionTest::finished, this, [this, test, report](bool connected) {
        test->deleteLater();
        m_connectionTest = nullptr;
        const quint64 generation = m_generation;
        if (report) {
            emit connectionReport(connected);
            emit finished();
            return;
        }
        emit connectionTested(connected);
        if (generation != m_generation)
            return;
        if (m_button && connected)
            runUpdateCheck();
        else if (m_button)
            runConnectionTest(true);
        else
            emit finished();
    });
    test->start();
}
