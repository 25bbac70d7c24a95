#pragma once

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QString>

// What the benchmarks share: each works on a copy of the demo installation of its own.
inline void copyTree(const QString &from, const QString &to)
{
    QDirIterator it(from, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString file = it.next();
        const QString target = to + u'/' + QDir(from).relativeFilePath(file);
        QDir().mkpath(QFileInfo(target).path());
        QFile::copy(file, target);
    }
}

// Entries of about 97 bytes ahead of the file's own, so that its keys are the last a reader
// that scans from the top comes to; dated an hour back, as an installed file is.
inline void padLanguageFiles(const QString &folder, int entries)
{
    const QFileInfoList files = QDir(folder).entryInfoList(QDir::Files);
    for (const QFileInfo &info : files) {
        QFile f(info.filePath());
        if (!f.open(QIODevice::ReadOnly))
            qFatal("cannot read %s", qPrintable(info.filePath()));
        QByteArray bytes = f.readAll();
        f.close();
        const qsizetype header = bytes.indexOf('\n') + 1;
        QByteArray padding;
        for (int i = 0; i < entries; ++i)
            padding += "X" + QByteArray::number(100000 + i) +
                       "=Ein Text, wie ihn eine ganze Anwendung in ihren Sprachdateien hat, Nummer " +
                       QByteArray::number(i) + "\r\n";
        bytes.insert(header, padding);
        if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate) || f.write(bytes) != bytes.size())
            qFatal("cannot write %s", qPrintable(info.filePath()));
        f.setFileTime(QDateTime::currentDateTime().addSecs(-3600), QFileDevice::FileModificationTime);
    }
}
