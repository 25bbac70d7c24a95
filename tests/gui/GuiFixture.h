#pragma once

#include "app/frmSupportKit.h"
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

using TestSupport::readFile;
using TestSupport::writeFile;

// A control of the window by name, its page built first if need be (as opening it would);
// a missing one ends the test with its name.
template <typename T> T *control(QObject &window, const char *name)
{
    T *c = window.findChild<T *>(QLatin1String(name));
    auto *main = qobject_cast<frmSupportKit *>(&window);
    for (int tab = 0; !c && main && tab < 12; ++tab) {
        if (main->page(tab))
            c = window.findChild<T *>(QLatin1String(name));
    }
    if (!c)
        qFatal("no control %s", name);
    return c;
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
