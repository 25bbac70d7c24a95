#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

class QIODevice;

// The fixed part of a Windows version resource (VS_FIXEDFILEINFO without its
// signature and structure version).
struct PeFixedFileInfo
{
    quint32 fileVersionMS = 0;
    quint32 fileVersionLS = 0;
    quint32 productVersionMS = 0;
    quint32 productVersionLS = 0;
    quint32 fileFlagsMask = 0;
    quint32 fileFlags = 0;
    quint32 fileOS = 0;
    quint32 fileType = 0;
    quint32 fileSubtype = 0;
    quint32 fileDateMS = 0;
    quint32 fileDateLS = 0;
};

struct PeVersionResult
{
    bool ok = false;
    QString error; // why no fixed file info was found; empty when ok
    PeFixedFileInfo info;
};

// Reads the fixed file info from the first RT_VERSION resource of a PE image
// (PE32 or PE32+). Only the bytes needed are read, every offset is checked
// against the device size, so corrupt or hostile files just give an error.
// The device must be open and random-access.
PeVersionResult readPeVersion(QIODevice &device);
PeVersionResult readPeVersion(const QByteArray &image);
