#pragma once

#include <QString>
#include <array>

// The seven files of a language, in the order their names are built.
enum class LngFile
{
    Main,   // language.<c>: control texts without suffix
    Msg,    // lng_msg.<c>: message boxes ("M" keys)
    Two,    // lng_2.<c>: control keys with "@2"
    Txt,    // lng_txt.<c>: code texts ("T" keys)
    Three,  // lng_3.<c>: control keys with "@3"
    MsgTwo, // lng_msg_2.<c>: named and checked, never read
    MsgThree,
};
inline constexpr int kLngFileCount = 7;

struct LanguageState
{
    QString code;        // current language; also the section of every lookup
    QString defaultCode; // from the system's country code
    std::array<QString, kLngFileCount> fileNames;
    std::array<bool, kLngFileCount> exists{};
    int index = 1;    // 1 de, 2 us, 3 se
    QString lastFile; // last file chosen by GetLngFile
};

LanguageState &languageState();

// Full path of a language file (name only, e.g. "lng_txt.us"), resolved case-insensitively.
QString languageFilePath(const QString &fileName);
QString languageFilePath(LngFile file);

// Picks the file for a control key and strips its "@n" suffix in place.
QString GetLngFile(QString &key);
// Builds the names of language, lng_msg, lng_2 and lng_txt and tests them; re-tests lng_3.
void InitLngFiles(const QString &code);
// Parses the files a window's localisation reads in code on a worker thread, while the
// window is being built: in a whole application's size they are the longest part of the
// start-up. A wrong guess of the code costs nothing but that thread's time.
void preloadLanguageFiles(const QString &code);
// Builds and tests all seven names for code. When language.<code> is missing, prepares the
// missing-file message in PendingMessage and falls back to "de". Returns the code in use.
QString RefreshLngFiles(const QString &code);

// A code text ("T" key) from lng_txt with its German default.
QString lngText(const QString &key, const QString &germanDefault);
// A text from the main language file with its German default.
QString lngMainText(const QString &key, const QString &germanDefault);
