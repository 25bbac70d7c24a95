#pragma once

#include "help/ChmData.h"

#include <QHash>
#include <QString>
#include <QStringList>

struct chmFile;

// A compiled help file opened for reading through chmlib; closed when the object goes.
// Object paths start with "/" ("/start.html").
class ChmFile
{
public:
    explicit ChmFile(const QString &path);
    ~ChmFile();
    ChmFile(const ChmFile &) = delete;
    ChmFile &operator=(const ChmFile &) = delete;

    bool isOpen() const { return m_file != nullptr; }
    bool exists(const QString &objectPath) const;
    // The object's bytes; empty when it is missing or cannot be read.
    QByteArray read(const QString &objectPath) const;
    // Every object that holds data, in the file's order.
    QStringList objects() const { return m_objects; }

    // The topic of a context id through the file's own map; "" when the id is unknown.
    QString topicOf(quint32 contextId) const;
    // The page to show without a topic, and the table of contents and index ("" when none).
    QString defaultTopic() const;
    QList<SitemapEntry> contents() const;
    QList<SitemapEntry> index() const;

    struct Hit
    {
        QString title, topic;
    };
    // Topics whose text holds query, without regard to case.
    QList<Hit> search(const QString &query) const;

    // A topic or page path from the file's tables as an object path ("" when missing).
    QString objectPath(const QString &name) const;

private:
    QList<SitemapEntry> sitemap(const QString &name, const QString &extension) const;

    chmFile *m_file = nullptr;
    QStringList m_objects;
    QHash<quint32, QString> m_map;
    ChmSystem m_system;
};
