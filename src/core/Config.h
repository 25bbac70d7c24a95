#pragma once

#include <QString>

// Fixed addresses of the program. Each may be overridden by an environment variable
// of the same name so that tests and the demo can point SupportKit at a local server.
namespace Config {
QString versionUrl();  // SUPPORTKIT_VERSION_URL: base of version.txt and downloads.ini
QString downloadUrl(); // SUPPORTKIT_DOWNLOAD_URL: the current program file
QString websiteUrl();  // SUPPORTKIT_WEBSITE_URL
QString supportMail(); // SUPPORTKIT_SUPPORT_MAIL
// SUPPORTKIT_RELEASE_KEYS: the minisign public keys whose signatures are trusted. Whoever
// can set the user's environment can replace the program itself, so the variable gives
// no one a power they did not have.
QString releaseKeys();
// SUPPORTKIT_PUBLISHER: the Authenticode signer a downloaded program file must carry on
// Windows; "" requires none.
QString publisher();

int versionMajor();
int versionMinor();
int versionRevision();
// "Pawnsketch · Support Kit 1.0 Build 7"
QString windowCaption();
} // namespace Config
