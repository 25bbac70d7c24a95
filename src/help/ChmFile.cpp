#include "help/ChmFile.h"

#include "core/TextFile.h"

#include <QFile>
#include <QtEndian>

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
// The first bytes of an uncompressed object; "" when it is missing or shorter.
QByteArray head(chmFile *file, const char *path, qsizetype length)
{
    chmUnitInfo info;
    QByteArray data(length, '\0');
    if (chm_resolve_object(file, path, &info) != CHM_RESOLVE_SUCCESS || info.space != CHM_UNCOMPRESSED ||
        chm_retrieve_object(file, &info, reinterpret_cast<unsigned char *>(data.data()), 0, length) != length)
        return {};
    return data;
}

// chmlib trusts the compressed section's parameters: a block size beyond 32 bits makes it
// copy from far outside its buffers, a window size its decompressor refuses leaves it
// without one. A file with such values is not read.
bool compressionUsable(chmFile *file)
{
    const QByteArray control = head(file, "::DataSpace/Storage/MSCompressed/ControlData", 0x1c);
    const QByteArray reset = head(file,
                                  "::DataSpace/Storage/MSCompressed/Transform/"
                                  "{7FC28940-9D31-11D0-9B27-00A0C91E9C7C}/InstanceData/ResetTable",
                                  0x28);
    if (control.isEmpty() && reset.isEmpty())
        return true; // nothing compressed
    if (control.isEmpty() || reset.isEmpty() || !control.mid(4).startsWith("LZXC"))
        return false;
    const quint32 scale = qFromLittleEndian<quint32>(control.constData() + 8) == 2 ? 0x8000 : 1;
    const quint64 window = quint64(qFromLittleEndian<quint32>(control.constData() + 16)) * scale;
    const quint64 block = qFromLittleEndian<quint64>(reset.constData() + 0x20);
    const bool windowUsable = window >= (1u << 15) && window <= (1u << 21) && (window & (window - 1)) == 0;
    return windowUsable && block > 0 && block <= 1024 * 1024;
}

chmFile *openChm(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || !chmDirectoryEnds(file))
        return nullptr;
    chmFile *chm = chm_open(QFile::encodeName(path).constData());
    if (chm && !compressionUsable(chm)) {
        chm_close(chm);
        return nullptr;
    }
    return chm;
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
