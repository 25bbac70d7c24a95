#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

#include <functional>

class QIODevice;

// Reading the parts of a compiled help file that the help window needs. The file's own
// tables are parsed here, apart from the container library, so that they can be tested
// on bytes.

// The context-id map: #IVB holds its size in bytes and then pairs of 32-bit little-endian
// numbers (context id, offset into #STRINGS); #STRINGS holds NUL-terminated topic names.
// Pairs that point outside #STRINGS are left out.
QHash<quint32, QString> parseContextMap(const QByteArray &ivb, const QByteArray &strings);

// From #SYSTEM (a version, then records of code, length and data): the contents and index
// files and the default topic.
struct ChmSystem
{
    QString contents, index, defaultTopic, title;
};
ChmSystem parseChmSystem(const QByteArray &system);

// One entry of a table of contents (.hhc) or an index (.hhk): its name, the topic it opens
// ("" for a heading without a page) and its nesting depth from 0.
struct SitemapEntry
{
    QString name, local;
    int depth = 0;
};
QList<SitemapEntry> parseSitemap(const QString &html);

// A topic's text without markup, for the search; and its <title>.
QString htmlText(const QString &html);
QString htmlTitle(const QString &html);

// Topic names in the map may carry the folder they were compiled from
// ("/home/x/help/de/start.html"). The object path ("/start.html") is the longest tail of
// the name that exists in the file; "" when none does.
QString objectPathFor(const QString &name, const std::function<bool(const QString &)> &exists);

// chmlib trusts a compiled help file's structure: directory pages that link in a loop keep
// it looping for ever, and the compressed section's sizes are used unchecked for divisions
// and copies. False when the file has such a fault (or pages too small to hold their own
// header); the file is then not handed to chmlib. Files that are no compiled help at all
// pass: chmlib refuses them itself.
bool chmStructureUsable(QIODevice &file);

// Whether a help viewer can read the file at all: a compiled help file, its structure
// usable, and not cut off (every listed object lies whole in the file).
bool chmFileReadable(QIODevice &file);
