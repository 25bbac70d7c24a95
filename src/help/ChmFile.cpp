#include "help/ChmFile.h"

#include "core/TextFile.h"

#include <QFile>

#include <chm_lib.h>

namespace {
int collect(chmFile *, chmUnitInfo *info, void *context)
{
    if (info->length > 0)
        static_cast<QStringList *>(context)->append(QString::fromUtf8(info->path));
    return CHM_ENUMERATOR_CONTINUE;
}

bool isPage(const QString &path)
{
    return path.endsWith(QLatin1String(".htm"), Qt::CaseInsensitive) ||
           path.endsWith(QLatin1String(".html"), Qt::CaseInsensitive);
}
} // namespace

namespace {
chmFile *openChm(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || !chmStructureUsable(file))
        return nullptr;
    return chm_open(QFile::encodeName(path).constData());
}
} // namespace

ChmFile::ChmFile(const QString &path) : m_file(openChm(path))
{
    if (!m_file)
        return;
    chm_enumerate(m_file, CHM_ENUMERATE_NORMAL | CHM_ENUMERATE_FILES, collect, &m_objects);
    m_map = parseContextMap(read(QStringLiteral("/#IVB")), read(QStringLiteral("/#STRINGS")));
    m_system = parseChmSystem(read(QStringLiteral("/#SYSTEM")));
}

ChmFile::~ChmFile()
{
    if (m_file)
        chm_close(m_file);
}

bool ChmFile::exists(const QString &objectPath) const
{
    chmUnitInfo info;
    return m_file &&
           chm_resolve_object(m_file, objectPath.toUtf8().constData(), &info) == CHM_RESOLVE_SUCCESS;
}

QByteArray ChmFile::read(const QString &objectPath) const
{
    chmUnitInfo info;
    if (!m_file || chm_resolve_object(m_file, objectPath.toUtf8().constData(), &info) != CHM_RESOLVE_SUCCESS)
        return {};
    // A garbled file may claim any size: nothing bigger than the help file itself is read.
    constexpr LONGUINT64 kLimit = 64 * 1024 * 1024;
    if (info.length == 0 || info.length > kLimit)
        return {};
    QByteArray data(qsizetype(info.length), '\0');
    const LONGINT64 got = chm_retrieve_object(m_file, &info, reinterpret_cast<unsigned char *>(data.data()),
                                              0, LONGINT64(info.length));
    data.truncate(got > 0 ? qsizetype(got) : 0);
    return data;
}

QString ChmFile::objectPath(const QString &name) const
{
    QString path = name.section(u'#', 0, 0);
    if (path.isEmpty())
        return {};
    return objectPathFor(path, [this](const QString &candidate) { return exists(candidate); });
}

QString ChmFile::topicOf(quint32 contextId) const
{
    const auto it = m_map.constFind(contextId);
    return it == m_map.cend() ? QString() : objectPath(*it);
}

QString ChmFile::defaultTopic() const
{
    const QString topic = objectPath(m_system.defaultTopic);
    if (!topic.isEmpty())
        return topic;
    for (const SitemapEntry &entry : contents()) {
        const QString first = objectPath(entry.local);
        if (!first.isEmpty())
            return first;
    }
    for (const QString &object : m_objects) {
        if (isPage(object))
            return object;
    }
    return {};
}

QList<SitemapEntry> ChmFile::sitemap(const QString &name, const QString &extension) const
{
    QString path = objectPath(name);
    for (qsizetype i = 0; path.isEmpty() && i < m_objects.size(); ++i) {
        if (m_objects[i].endsWith(extension, Qt::CaseInsensitive))
            path = m_objects[i];
    }
    return path.isEmpty() ? QList<SitemapEntry>() : parseSitemap(decodeInstallationText(read(path)));
}

QList<SitemapEntry> ChmFile::contents() const
{
    return sitemap(m_system.contents, QStringLiteral(".hhc"));
}

QList<SitemapEntry> ChmFile::index() const
{
    return sitemap(m_system.index, QStringLiteral(".hhk"));
}

QList<ChmFile::Hit> ChmFile::search(const QString &query) const
{
    QList<Hit> hits;
    const QString wanted = query.simplified();
    if (wanted.isEmpty())
        return hits;
    for (const QString &object : m_objects) {
        if (!isPage(object))
            continue;
        const QString html = decodeInstallationText(read(object));
        if (htmlText(html).contains(wanted, Qt::CaseInsensitive)) {
            const QString title = htmlTitle(html);
            hits.append({title.isEmpty() ? object.mid(1) : title, object});
        }
    }
    return hits;
}
