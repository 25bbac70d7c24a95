#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

#include <array>

// Writes small but well-formed PE images whose only content is a version
// resource: stand-ins for program files in the demo installation and tests.
namespace PeWriter {

using Version = std::array<quint16, 4>; // major, minor, release, build

struct Options
{
    Version version{1, 0, 0, 0}; // file and product version
    quint32 fileType = 1;        // VS_FIXEDFILEINFO dwFileType, 1 = application
    bool pe32Plus = false;
    quint16 machine = 0; // 0: i386 for PE32, x86-64 for PE32+
    quint16 language = 0x0407;
    bool stringFileInfo = true;             // StringFileInfo and VarFileInfo blocks
    QList<QPair<QString, QString>> strings; // StringFileInfo values besides FileVersion/ProductVersion
    // Sections of zeros ahead of .rsrc (at most 2), each ending in memory exactly where the next begins.
    int sectionsBefore = 0;
};

// File offsets of the structures in a built image, for tests that damage them.
struct Layout
{
    int peHeader = 0; // "PE\0\0", also the value of e_lfanew
    int optionalHeader = 0;
    int sectionTable = 0;
    int resources = 0; // root resource directory, start of .rsrc raw data
    int versionInfo = 0;
    int versionInfoSize = 0;
    int fixedFileInfo = 0; // its signature
};

QByteArray build(const Options &options, Layout *layout = nullptr);
bool writeFile(const QString &path, const Options &options, QString *error = nullptr);
// "13.2.0.2209" (missing trailing parts count as 0); false unless one to four
// numbers of 0..65535.
bool parseVersion(const QString &text, Version *version);

} // namespace PeWriter
