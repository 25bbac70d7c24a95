#pragma once

#include "core/ProgramFolder.h"
#include "core/ProgramState.h"
#include "localisation/LanguageState.h"
#include "localisation/ShowMsg.h"
#include "testsupport/TestSupport.h"

#include "pewriter/PeWriter.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

// What the window tests share: a fresh installation made from the demo's files and a
// clean program state whose message boxes are recorded instead of shown.
namespace GuiFixture {
inline void copyTree(const QString &from, const QString &to)
{
    QDirIterator it(from, QDir::Files | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString file = it.next();
        const QString target = to + u'/' + QDir(from).relativeFilePath(file);
        QDir().mkpath(QFileInfo(target).path());
        QFile::copy(file, target);
    }
}

// The demo installation in folder, with a program file 13.2.0.2209 unless withProgram is false.
inline bool makeInstallation(const QString &folder, bool withProgram = true)
{
    copyTree(TestSupport::sourceDir() + QStringLiteral("/demo/install"), folder);
    setProgramFolderForTesting(folder);
    if (!withProgram)
        return true;
    PeWriter::Options options;
    options.version = {13, 2, 0, 2209};
    return PeWriter::writeFile(QDir(folder).filePath(QStringLiteral("pawnsketch.exe")), options);
}

// Writes bytes to path, making its folder first.
inline bool writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile f(path);
    return f.open(QIODevice::WriteOnly | QIODevice::Truncate) && f.write(bytes) == bytes.size();
}

inline QByteArray readFile(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

inline void resetProgram(QList<ShownMessage> &messages)
{
    languageState() = LanguageState();
    programState() = ProgramState();
    messages.clear();
    setMessageAnswererForTesting([&messages](const ShownMessage &m) {
        messages.append(m);
        return int(IDOK);
    });
}
} // namespace GuiFixture
